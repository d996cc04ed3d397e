#include "toolkit/forms/status_bar.h"

#include <commctrl.h>

#include <algorithm>
#include <stdexcept>

namespace forms {
namespace {

constexpr UINT_PTR kClockTimer = 0x7101;
constexpr UINT kClockInterval = 1000;  // Milliseconds.

// Between the text of a panel and its edges, both sides together, in pixels at 96 dpi.
constexpr int kPanelPadding = 14;

std::wstring timeOfDay() {
    wchar_t text[80] = L"";
    GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, TIME_NOSECONDS, nullptr, nullptr, text,
                    static_cast<int>(std::size(text)));
    return text;
}

}  // namespace

StatusBar::StatusBar(const std::vector<PanelSpec>& panels) { setPanels(panels); }

void StatusBar::setPanels(const std::vector<PanelSpec>& panels) {
    panels_.clear();
    for (const PanelSpec& spec : panels) {
        panels_.push_back(Panel(*this, static_cast<int>(panels_.size()), spec));
    }
    if (isCreated()) {
        created();
    }
}

StatusBar::Panel& StatusBar::panel(int number) {
    return panels_.at(static_cast<std::size_t>(number) - 1);
}

StatusBar::Panel& StatusBar::panel(const std::wstring& key) {
    for (Panel& candidate : panels_) {
        if (candidate.key() == key) {
            return candidate;
        }
    }
    throw std::out_of_range("no status bar panel of that key");
}

void StatusBar::Panel::setText(const std::wstring& text) {
    if (text == text_) {
        return;
    }
    text_ = text;
    if (bar_.isCreated()) {
        if (spec_.width == PanelWidth::content) {
            bar_.layOut();
        }
        bar_.showText(*this);
    }
}

Twips StatusBar::Panel::width() const {
    RECT rect{};
    bar_.send(SB_GETRECT, static_cast<WPARAM>(index_), reinterpret_cast<LPARAM>(&rect));
    return toTwips(Pixels(static_cast<int>(rect.right - rect.left)), bar_.dpi());
}

Control::Kind StatusBar::kind() const {
    return {.className = STATUSCLASSNAMEW, .style = SBARS_SIZEGRIP};
}

void StatusBar::created() {
    if (hasClock()) {
        SetTimer(hwnd(), kClockTimer, kClockInterval, nullptr);
        showTime();
    } else {
        KillTimer(hwnd(), kClockTimer);
    }
    layOut();
    for (const Panel& panel : panels_) {
        showText(panel);
    }
}

bool StatusBar::hasClock() const {
    return std::any_of(panels_.begin(), panels_.end(),
                       [](const Panel& panel) { return panel.spec_.kind == PanelKind::clock; });
}

void StatusBar::showTime() {
    for (Panel& panel : panels_) {
        if (panel.spec_.kind == PanelKind::clock) {
            panel.setText(timeOfDay());
        }
    }
}

void StatusBar::showText(const Panel& panel) {
    // A tab would centre what follows it.
    std::wstring text = panel.text();
    std::replace_if(
        text.begin(), text.end(), [](wchar_t c) { return c < L' '; }, L' ');
    send(SB_SETTEXTW, static_cast<WPARAM>(panel.index_), reinterpret_cast<LPARAM>(text.c_str()));
}

int StatusBar::widthInPixels(const Panel& panel) const {
    const int least = toPixels(panel.spec_.twips, dpi()).value;
    if (panel.spec_.width != PanelWidth::content) {
        return least;
    }
    return std::max(least,
                    gdiFont().textWidth(panel.text()).value + scaled(kPanelPadding, dpi()).value);
}

// Windows wants the right edge of every panel.
void StatusBar::layOut() {
    if (panels_.empty()) {
        return;
    }
    RECT client{};
    GetClientRect(hwnd(), &client);
    int used = 0;
    int springs = 0;
    for (const Panel& panel : panels_) {
        used += widthInPixels(panel);
        springs += panel.spec_.width == PanelWidth::spring ? 1 : 0;
    }
    int spare = std::max(0, static_cast<int>(client.right) - used);
    std::vector<int> edges;
    int edge = 0;
    for (const Panel& panel : panels_) {
        edge += widthInPixels(panel);
        if (panel.spec_.width == PanelWidth::spring) {
            const int share = spare / springs--;
            edge += share;
            spare -= share;
        }
        edges.push_back(edge);
    }
    send(SB_SETPARTS, edges.size(), reinterpret_cast<LPARAM>(edges.data()));
}

// Windows' own bar puts itself at the lower edge whenever it hears of a new size.
void StatusBar::dock() {
    send(WM_SIZE);
    layOut();
}

void StatusBar::parentResized() { dock(); }

void StatusBar::fontChanged() { dock(); }

void StatusBar::dpiChanged() { dock(); }

RECT StatusBar::adjustedBounds(const RECT&) const { return pixelBounds(); }

LRESULT StatusBar::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_TIMER && wParam == kClockTimer) {
        showTime();
        return 0;
    }
    return Control::handleMessage(message, wParam, lParam);
}

}  // namespace forms
