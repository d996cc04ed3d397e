// TabStrip: a tabbed dialog. Controls whose table row names it as container belong to one of its
// tabs and are visible while that tab is current.
//
//   forms::TabStrip sstabMain{{L"Trace Data", L"Filters"}};
//   sstabMain.onTabClick = [this](int previous) { sstabMain_Click(previous); };
//   sstabMain.setTab(0);
//
// Tabs are counted from 0. Ctrl+Tab, Ctrl+Shift+Tab, Ctrl+PageDown and Ctrl+PageUp switch from
// anywhere on the form, the arrow keys while the strip has the focus. The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

#include <string>
#include <vector>

namespace forms {

class TabStrip : public Control {
public:
    explicit TabStrip(const std::vector<std::wstring>& captions = {}) : captions_(captions) {}

    void setTabs(const std::vector<std::wstring>& captions);
    int tabCount() const { return static_cast<int>(captions_.size()); }
    const std::wstring& tabCaption(int tab) const { return captions_.at(index(tab)); }
    void setTabCaption(int tab, const std::wstring& caption);

    int currentTab() const { return current_; }
    /// Throws std::out_of_range. Raises onTabClick when the tab changes.
    void setTab(int tab);

    /// The height of the row of tabs.
    Twips tabHeight() const;

    /// Another tab became current; the argument is the previous one.
    std::function<void(int previousTab)> onTabClick;

    bool showsTab(int tab) const override { return tab == current_; }
    bool formKey(int key, unsigned shift) override;
    void paintBackground(HDC dc) override;

protected:
    Kind kind() const override;
    void created() override;
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;

private:
    static std::size_t index(int tab) { return static_cast<std::size_t>(tab); }
    void showTabs();
    void switchTo(int tab);
    void keepFocusSeen(const Control* focused);
    RECT page() const;

    std::vector<std::wstring> captions_;
    int current_ = 0;
};

}  // namespace forms
