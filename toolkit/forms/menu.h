// MenuBar: a form's menus, built from one table; MenuItem: one entry, a member of the form.
//
//   menu.build({
//       {0, mnuFile, L"mnuFile", L"&File"},
//       {1, mnuOpen, L"mnuOpen", L"&Open...", [this] { mnuOpen_Click(); }, L"Ctrl+O"},
//       {1, mnuLine, L"mnuLine", L"-"},
//       {1, mnuExit, L"mnuExit", L"E&xit", [this] { mnuExit_Click(); }},
//   });
//   mnuOpen.setCaption(L"&Oeffnen...");
//
// The first column is the depth: an entry belongs to the last one above it with a smaller depth,
// and an entry with others below it is a submenu. The shortcuts in the table are the form's
// accelerators and are shown after the captions. An invisible entry is not in the menu and its
// shortcut is disabled; an invisible submenu can still be used as a popup menu.
//
// The user-interface thread.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace forms {

class MenuBar;

class MenuItem {
public:
    MenuItem() = default;
    MenuItem(const MenuItem&) = delete;
    MenuItem& operator=(const MenuItem&) = delete;

    const std::wstring& name() const { return name_; }
    const std::wstring& caption() const { return caption_; }
    void setCaption(const std::wstring& caption);
    bool enabled() const { return enabled_; }
    void setEnabled(bool enabled);
    bool checked() const { return checked_; }
    void setChecked(bool checked);
    bool visible() const { return visible_; }
    void setVisible(bool visible);
    const std::wstring& shortcut() const { return shortcut_; }
    /// Free for the form's use.
    const std::wstring& tag() const { return tag_; }
    void setTag(const std::wstring& tag) { tag_ = tag; }

    /// The entry's identifier in WM_COMMAND; 0 before it is in a menu.
    int id() const { return id_; }

    std::function<void()> onClick;

private:
    friend class MenuBar;
    void changed();

    MenuBar* bar_ = nullptr;
    std::wstring name_;
    std::wstring caption_;
    std::wstring shortcut_;
    std::wstring tag_;
    int id_ = 0;
    int depth_ = 0;
    bool enabled_ = true;
    bool checked_ = false;
    bool visible_ = true;
};

struct MenuRow {
    int depth = 0;
    MenuItem& item;
    const wchar_t* name = L"";
    const wchar_t* caption = L"";
    std::function<void()> onClick = nullptr;
    /// "Ctrl+O", "F3", "Ctrl+Shift+Del"; empty for none.
    const wchar_t* shortcut = L"";
    bool visible = true;
    bool enabled = true;
};

class MenuBar {
public:
    MenuBar() = default;
    ~MenuBar();
    MenuBar(const MenuBar&) = delete;
    MenuBar& operator=(const MenuBar&) = delete;

    /// Throws std::invalid_argument for an invalid shortcut.
    void build(const std::vector<MenuRow>& rows);
    /// Appends a row, for entries known only at run time. The item must outlive the bar or its next
    /// build.
    void append(const MenuRow& row);

    bool empty() const { return items_.empty(); }
    const std::vector<MenuItem*>& items() const { return items_; }
    MenuItem* find(const std::wstring& name) const;

    /// Puts the menu on a window, or takes it off when there is nothing visible in it.
    void attach(HWND window);
    /// Before the window is destroyed, which would destroy the menu with it.
    void detach();
    HMENU handle() const { return menu_; }
    HACCEL accelerators() const { return accelerators_; }

    /// Runs the entry with this WM_COMMAND identifier. False if it is unknown or disabled.
    bool command(int id);

    /// Shows the entries below `item` as a popup menu, waits for the choice and runs it.
    void popUp(const MenuItem& item, HWND owner, POINT at);

private:
    friend class MenuItem;

    void add(const MenuRow& row);
    void rebuild();
    void release();
    std::size_t fill(HMENU menu, std::size_t first, int depth) const;
    void appendEntry(HMENU menu, std::size_t index) const;
    bool hasEntriesBelow(std::size_t index) const;
    void makeAccelerators();
    void itemChanged(const MenuItem& item);

    std::vector<MenuItem*> items_;
    HWND window_ = nullptr;
    HMENU menu_ = nullptr;
    HACCEL accelerators_ = nullptr;
};

/// "Ctrl+Shift+F3" as an accelerator without a command. Throws std::invalid_argument.
ACCEL parseShortcut(const std::wstring& shortcut);

}  // namespace forms
