// Form: a top-level window with a menu, controls, and events as virtual members.
//
//   class frmNote : public forms::Form {
//   public:
//       frmNote() : Form({.className = L"Notes.frmNote", .caption = L"Note"}) {}
//   private:
//       void build() override {
//           createControls({{cmdOk, L"cmdOk", L"OK", 180_tw, 120_tw, 1215_tw, 375_tw,
//                            kDefaultButton}});
//           cmdOk.onClick = [this] { unload(); };
//       }
//       forms::Button cmdOk;
//   };
//
// A form is loaded (its window exists) or not. load, show and showModal load it: build creates menu
// and controls, then Form_Load runs. unload calls Form_Unload, which may refuse, and destroys the
// window; the object remains and can be loaded again. hide keeps the window. A form that may be
// destroyed while it is loaded calls destroy in its own destructor, so that no event reaches a
// partly destroyed object.
//
// Position and size are twips of the whole window on the screen, at the window's own dots per inch.
// When the window moves to a display of another density, position and font of all controls are
// recomputed.
//
// Keyboard: accelerators of the menu first, then Tab and Shift+Tab in the order of the table,
// Enter and Escape for the buttons marked as such, access keys of captions, arrows in option
// groups.
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"
#include "toolkit/forms/menu.h"
#include "toolkit/forms/placed_window.h"
#include "toolkit/forms/units.h"
#include "toolkit/forms/window.h"

#include <windows.h>

// After windows.h, which it needs.
#include <shellapi.h>

#include <optional>
#include <string>
#include <vector>

namespace forms {

/// The customary numbers of the shapes; others show the arrow.
enum class MousePointer {
    standard = 0,
    arrow = 1,
    cross = 2,
    iBeam = 3,
    sizeWestEast = 9,
    hourglass = 11,
    noDrop = 12,
    arrowHourglass = 13
};

enum class WindowState { normal, minimized, maximized };

enum class BorderStyle { sizable, fixedDialog, fixedWindow };

struct FormOptions {
    /// A distinct class name allows other programs to find the form's windows.
    const wchar_t* className = L"forms.Form";
    const wchar_t* caption = L"";
    BorderStyle border = BorderStyle::sizable;
    /// The inside of the window, without caption and menu.
    Twips clientWidth = Twips(7200);
    Twips clientHeight = Twips(4800);
    /// The number of an icon in the program's resources; 0 for none.
    int icon = 0;
    /// Whether files can be dropped on the form.
    bool takesFiles = false;
};

struct ControlSpec {
    Control& control;
    ControlPlace place;
};

class Form : public PlacedWindow {
public:
    explicit Form(const FormOptions& options);
    ~Form() override;

    /// The form whose window, or whose control's window, this is; null for foreign windows.
    static Form* of(HWND handle);

    void load();
    /// False if Form_Unload refused.
    bool unload();
    void show(const Form* owner = nullptr);
    /// Shows the form above its owner without taking the focus.
    void showInactive(const Form& owner);
    /// Returns when the form is hidden or unloaded. The other forms are disabled meanwhile.
    void showModal(const Form* owner = nullptr);
    void hide();
    bool isLoaded() const { return isCreated(); }
    bool visible() const;
    bool isModal() const { return modal_; }

    std::wstring caption() const;
    void setCaption(const std::wstring& caption);
    void setIcon(int resource);

    /// Resizes the window for a client area of this size.
    void setClientSize(Twips width, Twips height);
    Twips clientWidth() const;
    Twips clientHeight() const;
    /// Centres the form on its owner, or in the work area of the screen.
    void center(const Form* owner = nullptr);
    /// The bounds of the display that the form is on.
    Twips screenWidth() const;
    Twips screenHeight() const;

    WindowState windowState() const;
    void setWindowState(WindowState state);

    MousePointer mousePointer() const { return mousePointer_; }
    void setMousePointer(MousePointer pointer);

    const Font& font() const { return font_; }
    /// Applies to controls created later, and to those on the form that have the form's font.
    void setFont(const Font& font);
    /// Draws the form and all its controls in another typeface, whatever their own fonts, or
    /// without one, as designed. Also applies to controls created later.
    void setFace(const std::optional<FontFace>& face);
    /// The height of a line of this text in the form's font.
    Twips textHeight(const std::wstring& text) const;
    Twips textWidth(const std::wstring& text) const;

    /// All controls, in tab order; those of frames and tabs too.
    std::vector<Control*> controls() const;
    Control* control(const std::wstring& name) const;
    MenuBar& menu() { return menu_; }

    void refresh();
    Dpi dpi() const override { return dpi_; }

    /// Handles accelerators and dialog keys; true if the message was one. Called by the pump.
    bool translateMessage(MSG& message);

protected:
    /// Creates the menu and the controls; runs once each time the form is loaded.
    virtual void build() {}
    virtual void Form_Load() {}
    virtual void Form_Resize() {}
    virtual void Form_Unload(bool& /*cancel*/) {}
    virtual void Form_Activate() {}
    /// Files were dropped on the form. Not called while the form is disabled.
    virtual void Form_DropFiles(const std::vector<std::wstring>& /*paths*/) {}
    /// A right click, or the menu key, that no control handled. Screen position.
    virtual void Form_ContextMenu(POINT /*at*/) {}

    void createControls(const std::vector<ControlSpec>& specs);

    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void createFormWindow();
    void setOwner(const Form* owner);
    RECT frameFor(SIZE client) const;
    SIZE clientPixels() const;
    MONITORINFO monitor() const;
    void endModal();
    void runModalLoop();

    LRESULT handleFrameMessage(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT handleFocusMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void passToControls(UINT message, WPARAM wParam, LPARAM lParam);
    void handleSize(WPARAM kind);
    void handleDestroy();
    void handleDpiChanged(Dpi dpi, const RECT& suggested);
    void handleActivate(bool active);
    void restoreFocus();
    void paintBackground(HDC dc);
    void handleDrop(HDROP drop);
    bool handleSetCursor(LPARAM lParam) const;
    bool handleContextMenu(WPARAM wParam, LPARAM lParam);
    void showFocus();

    bool translateKey(const MSG& message);
    bool moveFocus(HWND focus, bool backwards);
    bool pressButton(unsigned flag, HWND focus);

    FormOptions options_;
    Dpi dpi_;
    Font designedFont_;
    std::optional<FontFace> face_;
    Font font_;  // The designed one in the face.
    MenuBar menu_;
    MousePointer mousePointer_ = MousePointer::standard;
    HWND lastFocus_ = nullptr;
    bool ready_ = false;
    bool modal_ = false;
    // The forms that this one disabled while it is modal.
    std::vector<HWND> disabled_;
};

/// Every form that is loaded, in the order of loading.
const std::vector<Form*>& loadedForms();

/// Shows a pointer, usually the hourglass, until the end of the block.
class WaitCursor {
public:
    explicit WaitCursor(Form& form, MousePointer pointer = MousePointer::hourglass)
        : form_(form), previous_(form.mousePointer()) {
        form_.setMousePointer(pointer);
    }
    ~WaitCursor() { form_.setMousePointer(previous_); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    Form& form_;
    MousePointer previous_;
};

}  // namespace forms
