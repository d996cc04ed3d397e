// Control: the base class of everything on a form.
//
// A control is a member of its form. The form creates the windows of all its controls from one
// table (see form.h); a control by itself is created with create. Events are members that the form
// sets to its own procedures:
//
//   cmdApply.onClick = [this] { cmdApply_Click(); };
//   cmdApply.move({180_tw, 60_tw, 1215_tw, 375_tw});
//   cmdApply.setEnabled(false);
//
// Place and size are twips relative to the container: the form, or the control that the table
// names as container (a frame, a tabbed dialog). A contained control moves, hides and shows with
// its container, but its window is always a child of the form's, so that the keyboard reaches all
// of them alike.
//
// A new kind of control derives from Control, returns the kind of window it needs from kind(), and
// handles its messages like any Window. The user-interface thread.
#pragma once

#include "toolkit/forms/font.h"
#include "toolkit/forms/placed_window.h"
#include "toolkit/forms/units.h"
#include "toolkit/forms/window.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace forms {

class AccessibleObject;
class Control;

enum ControlFlag : unsigned {
    kHidden = 1,
    kDisabled = 2,
    kNoTabStop = 4,
    /// The button that the Enter key presses, and the one that Escape presses.
    kDefaultButton = 8,
    kCancelButton = 16,
};

/// Position and initial state of a control: the columns of a form's table after the control.
struct ControlPlace {
    const wchar_t* name = L"";
    const wchar_t* caption = L"";
    Twips left = {};
    Twips top = {};
    Twips width = {};
    Twips height = {};
    unsigned flags = 0;
    Control* container = nullptr;
    /// The tab to belong to when the container is a tabbed dialog.
    int tab = 0;
};

enum class MouseButton { none, left, right, middle };

/// Shift state as a set of bits.
inline constexpr unsigned kShift = 1;
inline constexpr unsigned kCtrl = 2;
inline constexpr unsigned kAlt = 4;
unsigned shiftState();

/// Twips from the control's upper left corner.
struct MouseEvent {
    MouseButton button = MouseButton::none;
    unsigned shift = 0;
    Twips x = {};
    Twips y = {};
};

class Control : public PlacedWindow {
public:
    Control() = default;
    ~Control() override;

    /// Creates the window as a child of `parent`, after its other controls in the tab order. The
    /// font is inherited unless setFont has set another one.
    void create(Window& parent, const ControlPlace& place, const Font& inherited = messageFont());

    const std::wstring& name() const { return name_; }
    unsigned flags() const { return flags_; }
    Control* container() const { return container_; }
    int tab() const { return tab_; }
    /// The controls that name this one as their container, in tab order.
    std::vector<Control*> contained() const;

    /// The text of the window: a button's caption, a text box's text.
    std::wstring text() const;
    virtual void setText(const std::wstring& text);
    std::wstring caption() const { return text(); }
    void setCaption(const std::wstring& caption) { setText(caption); }

    /// The accessible name of a control whose text is not its name: a text box, a tree. Without one
    /// the control has the name that the system finds: its caption, or that of the preceding label.
    const std::wstring& accessibleName() const { return accessibleName_; }
    void setAccessibleName(const std::wstring& name) { accessibleName_ = name; }

    /// Whether the control is to be visible; it is if its container is, too.
    bool visible() const { return visible_; }
    void setVisible(bool visible);
    bool isShown() const;

    bool enabled() const;
    void setEnabled(bool enabled);

    /// Whether the Tab key stops here.
    bool tabStop() const;
    void setTabStop(bool stop);

    /// The font that the control is drawn with: the one it was given, in the face that was set.
    const Font& font() const { return font_; }
    const Font& designedFont() const { return designedFont_; }
    void setFont(const Font& font);
    /// Draws the control in another typeface, as its language may need; without one, as designed.
    void setFace(const std::optional<FontFace>& face);
    HFONT fontHandle() const { return gdiFont_.handle(); }
    const GdiFont& gdiFont() const { return gdiFont_; }

    void setFocus();
    bool hasFocus() const;

    /// Repaints at once, without waiting for the message pump.
    void refresh();

    /// The dots per inch of the form.
    Dpi dpi() const override;

    /// Recomputes font and position; the form calls it when its dots per inch have changed.
    void applyDpi();
    /// Shows or hides the window according to visible() and the container; containers call it.
    void applyVisibility();
    /// Moves the contained controls, too.
    void applyBounds() override;

    /// Whether the arrow keys move from this control to its neighbours of the same kind: option
    /// buttons.
    virtual bool joinsGroup() const { return false; }
    /// Whether a contained control of that tab is to be visible now.
    virtual bool showsTab(int tab) const;
    /// A key pressed anywhere on the form while this control is shown. True if it was handled.
    virtual bool formKey(int key, unsigned shift);
    /// The form's client area has a new size; for controls that dock to its edge.
    virtual void parentResized() {}
    /// Paints what is seen between the contained controls into the form's device context. The
    /// origin is the form's.
    virtual void paintBackground(HDC dc);

    std::function<void()> onClick;
    std::function<void()> onDoubleClick;
    std::function<void()> onGotFocus;
    std::function<void()> onLostFocus;
    /// The key as a VK_ value.
    std::function<void(int key, unsigned shift)> onKeyDown;
    std::function<void(const MouseEvent&)> onMouseDown;
    std::function<void(const MouseEvent&)> onMouseMove;
    std::function<void(const MouseEvent&)> onMouseUp;

protected:
    /// The kind of window that the control needs. For a window class of ours `own` is true; the
    /// class is registered when first used.
    struct Kind {
        const wchar_t* className = L"";
        DWORD style = 0;
        DWORD exStyle = 0;
        bool own = false;
        UINT classStyle = CS_DBLCLKS;
    };
    virtual Kind kind() const = 0;

    /// A standard control with a transparent background asks for its parent's; the base class
    /// paints it. An override calls the base class for what it does not handle.
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;

    /// The accessible object of the client area, with one reference for the caller; null for the
    /// system's own.
    virtual AccessibleObject* makeAccessible();

    /// Runs an event procedure if there is one.
    static void fire(const std::function<void()>& event);

    /// The window exists, has its font and its place, and is not yet shown.
    virtual void created() {}
    /// fontHandle() has changed: another font was set or the dots per inch changed. The window has
    /// received WM_SETFONT.
    virtual void fontChanged() {}
    /// Font and place are those of the new dots per inch.
    virtual void dpiChanged() {}

    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

    /// The container's upper left corner.
    POINT origin() const override;

private:
    void fireMouse(const std::function<void(const MouseEvent&)>& event, UINT message, WPARAM wParam,
                   LPARAM lParam) const;
    void placeBehindContained();
    void useFont();
    void setWindowFont();
    bool startsGroup(const Window& parent) const;

    std::wstring name_;
    unsigned flags_ = 0;
    Control* container_ = nullptr;
    int tab_ = 0;
    bool visible_ = true;
    std::wstring accessibleName_;
    Font designedFont_;
    std::optional<FontFace> face_;
    Font font_;  // The designed one in the face.
    bool fontSet_ = false;
    GdiFont gdiFont_;
};

/// The controls whose windows are children of `parent`, in tab order: that of their making.
std::vector<Control*> childControls(const Window& parent);

}  // namespace forms
