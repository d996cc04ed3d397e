#include "toolkit/forms/menu.h"

#include "toolkit/forms/application.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace forms {
namespace {

// Above the identifiers that dialogs give their own buttons.
constexpr int kFirstMenuId = 1000;

struct KeyName {
    const wchar_t* name;
    WORD key;
};

constexpr KeyName kKeyNames[] = {{L"Del", VK_DELETE}, {L"Ins", VK_INSERT},   {L"Home", VK_HOME},
                                 {L"End", VK_END},    {L"PgUp", VK_PRIOR},   {L"PgDn", VK_NEXT},
                                 {L"Bksp", VK_BACK},  {L"Enter", VK_RETURN}, {L"Esc", VK_ESCAPE},
                                 {L"Tab", VK_TAB},    {L"Space", VK_SPACE}};

WORD functionKey(const std::wstring& name) {
    if (name.size() < 2 || name.size() > 3 || name[0] != L'F') return 0;
    int number = 0;
    for (const wchar_t c : name.substr(1)) {
        if (c < L'0' || c > L'9') return 0;
        number = number * 10 + (c - L'0');
    }
    return number >= 1 && number <= 24 ? static_cast<WORD>(VK_F1 + number - 1) : WORD{0};
}

WORD keyNamed(const std::wstring& name) {
    if (name.size() == 1 &&
        ((name[0] >= L'A' && name[0] <= L'Z') || (name[0] >= L'0' && name[0] <= L'9'))) {
        return static_cast<WORD>(name[0]);
    }
    for (const KeyName& known : kKeyNames) {
        if (name == known.name) return known.key;
    }
    return functionKey(name);
}

BYTE modifierNamed(const std::wstring& name) {
    if (name == L"Ctrl") return FCONTROL;
    if (name == L"Shift") return FSHIFT;
    return name == L"Alt" ? BYTE{FALT} : BYTE{0};
}

UINT entryState(const MenuItem& item) {
    return (item.enabled() ? MFS_ENABLED : MFS_GRAYED) |
           (item.checked() ? MFS_CHECKED : MFS_UNCHECKED);
}

std::wstring entryText(const MenuItem& item) {
    return item.shortcut().empty() ? item.caption() : item.caption() + L'\t' + item.shortcut();
}

}  // namespace

ACCEL parseShortcut(const std::wstring& shortcut) {
    ACCEL accelerator{};
    accelerator.fVirt = FVIRTKEY;
    std::size_t start = 0;
    for (std::size_t plus = shortcut.find(L'+'); plus != std::wstring::npos;
         plus = shortcut.find(L'+', start)) {
        const BYTE modifier = modifierNamed(shortcut.substr(start, plus - start));
        if (!modifier) throw std::invalid_argument("unknown modifier in a menu shortcut");
        accelerator.fVirt = static_cast<BYTE>(accelerator.fVirt | modifier);
        start = plus + 1;
    }
    accelerator.key = keyNamed(shortcut.substr(start));
    if (!accelerator.key) throw std::invalid_argument("unknown key in a menu shortcut");
    return accelerator;
}

void MenuItem::changed() {
    if (bar_) bar_->itemChanged(*this);
}

void MenuItem::setCaption(const std::wstring& caption) {
    caption_ = caption;
    changed();
}

void MenuItem::setEnabled(bool enabled) {
    enabled_ = enabled;
    changed();
}

void MenuItem::setChecked(bool checked) {
    checked_ = checked;
    changed();
}

void MenuItem::setVisible(bool visible) {
    visible_ = visible;
    if (bar_) bar_->rebuild();
}

MenuBar::~MenuBar() { release(); }

void MenuBar::release() {
    if (menu_) {
        if (window_ && ::GetMenu(window_) == menu_) ::SetMenu(window_, nullptr);
        ::DestroyMenu(menu_);
        menu_ = nullptr;
    }
    if (accelerators_) {
        ::DestroyAcceleratorTable(accelerators_);
        accelerators_ = nullptr;
    }
}

void MenuBar::build(const std::vector<MenuRow>& rows) {
    items_.clear();
    for (const MenuRow& row : rows) {
        add(row);
    }
    rebuild();
}

void MenuBar::append(const MenuRow& row) {
    add(row);
    rebuild();
}

void MenuBar::add(const MenuRow& row) {
    MenuItem& item = row.item;
    if (row.shortcut[0]) parseShortcut(row.shortcut);
    item.bar_ = this;
    item.name_ = row.name;
    item.caption_ = row.caption;
    item.shortcut_ = row.shortcut;
    item.onClick = row.onClick;
    item.depth_ = row.depth;
    item.id_ = kFirstMenuId + static_cast<int>(items_.size());
    item.visible_ = row.visible;
    item.enabled_ = row.enabled;
    item.checked_ = false;
    items_.push_back(&item);
}

MenuItem* MenuBar::find(const std::wstring& name) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [&](const MenuItem* item) { return item->name() == name; });
    return found == items_.end() ? nullptr : *found;
}

void MenuBar::attach(HWND window) {
    window_ = window;
    ::SetMenu(window, menu_ && ::GetMenuItemCount(menu_) > 0 ? menu_ : nullptr);
}

void MenuBar::detach() {
    if (window_) {
        ::SetMenu(window_, nullptr);
        window_ = nullptr;
    }
}

void MenuBar::rebuild() {
    const HWND window = window_;
    release();
    menu_ = ::CreateMenu();
    fill(menu_, 0, 0);
    makeAccelerators();
    if (window) {
        attach(window);
        ::DrawMenuBar(window);
    }
}

bool MenuBar::hasEntriesBelow(std::size_t index) const {
    return index + 1 < items_.size() && items_[index + 1]->depth_ > items_[index]->depth_;
}

// Puts the visible entries of one depth into `menu`, from the one at `first` to the end of its
// submenu, and returns the index behind it.
std::size_t MenuBar::fill(HMENU menu, std::size_t first, int depth) const {
    std::size_t index = first;
    while (index < items_.size() && items_[index]->depth_ >= depth) {
        if (items_[index]->depth_ == depth && items_[index]->visible_) appendEntry(menu, index);
        ++index;
    }
    return index;
}

void MenuBar::appendEntry(HMENU menu, std::size_t index) const {
    const MenuItem& item = *items_[index];
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = MIIM_ID | MIIM_FTYPE | MIIM_STATE | MIIM_STRING;
    info.wID = static_cast<UINT>(item.id());
    info.fState = entryState(item);
    std::wstring text = entryText(item);
    info.dwTypeData = text.data();
    if (item.caption() == L"-") {
        info.fMask = MIIM_ID | MIIM_FTYPE;
        info.fType = MFT_SEPARATOR;
    } else if (hasEntriesBelow(index)) {
        info.fMask |= MIIM_SUBMENU;
        info.hSubMenu = ::CreatePopupMenu();
        fill(info.hSubMenu, index + 1, item.depth_ + 1);
    }
    ::InsertMenuItemW(menu, static_cast<UINT>(::GetMenuItemCount(menu)), TRUE, &info);
}

void MenuBar::makeAccelerators() {
    std::vector<ACCEL> table;
    for (const MenuItem* item : items_) {
        if (item->visible_ && !item->shortcut_.empty()) {
            table.push_back(parseShortcut(item->shortcut_));
            table.back().cmd = static_cast<WORD>(item->id());
        }
    }
    if (!table.empty()) {
        accelerators_ = ::CreateAcceleratorTableW(table.data(), static_cast<int>(table.size()));
    }
}

void MenuBar::itemChanged(const MenuItem& item) {
    if (!menu_ || !item.visible_) return;
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = MIIM_STATE | MIIM_STRING;
    info.fState = entryState(item);
    std::wstring text = entryText(item);
    info.dwTypeData = text.data();
    // By command, so that the entry is found at any depth. Nothing happens for an entry inside a
    // submenu that is not visible: popUp makes that one when it is needed.
    ::SetMenuItemInfoW(menu_, static_cast<UINT>(item.id()), FALSE, &info);
    if (window_ && item.depth_ == 0) ::DrawMenuBar(window_);
}

bool MenuBar::command(int id) {
    for (const MenuItem* item : items_) {
        if (item->id() == id && item->enabled()) {
            if (const auto procedure = item->onClick) procedure();
            return true;
        }
    }
    return false;
}

void MenuBar::popUp(const MenuItem& item, HWND owner, POINT at) {
    const auto found = std::find(items_.begin(), items_.end(), &item);
    if (found == items_.end()) return;
    const HMENU menu = ::CreatePopupMenu();
    fill(menu, static_cast<std::size_t>(std::distance(items_.begin(), found)) + 1, item.depth_ + 1);
    wakePosted();
    const int chosen =
        ::TrackPopupMenu(menu, TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0, owner, nullptr);
    ::DestroyMenu(menu);
    if (chosen) command(chosen);
}

}  // namespace forms
