#include "toolkit/forms/status_bar.h"

#include <commctrl.h>

#include <algorithm>
#include <initializer_list>
#include <numeric>
#include <stdexcept>

namespace forms {
namespace {

constexpr UINT_PTR kClockTimer = 0x7101;
constexpr UINT kClockInterval = 1000;  // Milliseconds.

// Between the text of a panel and its edges, both sides together, in pixels at 96 dpi.
constexpr int kPanelPadding = 14;

std::wstring timeOfDay() {
    wchar_t text[80] = L"";
    ::GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, TIME_NOSECONDS, nullptr, nullptr, text,
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
    if (isCreated()) created();
}

StatusBar::Panel& StatusBar::panel(int number) {
    return panels_.at(static_cast<std::size_t>(number) - 1);
}

StatusBar::Panel& StatusBar::panel(const std::wstring& key) {
    for (Panel& candidate : panels_) {
        if (candidate.key() == key) return candidate;
    }
    throw std::out_of_range("no status bar panel of that key");
}

void StatusBar::Panel::setText(const std::wstring& text) {
    if (text == text_) return;
    text_ = text;
    if (bar_.isCreated()) {
        if (spec_.width != PanelWidth::spring) bar_.layOut();
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
    edges_.clear();
    if (hasClock()) {
        ::SetTimer(hwnd(), kClockTimer, kClockInterval, nullptr);
        showTime();
    } else {
        ::KillTimer(hwnd(), kClockTimer);
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
        if (panel.spec_.kind == PanelKind::clock) panel.setText(timeOfDay());
    }
}

void StatusBar::showText(const Panel& panel) {
    // A tab would centre what follows it.
    std::wstring text = panel.text();
    std::replace_if(
        text.begin(), text.end(), [](wchar_t c) { return c < L' '; }, L' ');
    send(SB_SETTEXTW, static_cast<WPARAM>(panel.index_), reinterpret_cast<LPARAM>(text.c_str()));
}

// What a panel cannot do without.
int StatusBar::textInPixels(const Panel& panel) const {
    return panel.text().empty()
               ? 0
               : gdiFont().textWidth(panel.text()).value + scaled(kPanelPadding, dpi()).value;
}

int StatusBar::widthInPixels(const Panel& panel) const {
    const int least = toPixels(panel.spec_.twips, dpi()).value;
    return panel.spec_.width == PanelWidth::content ? std::max(least, textInPixels(panel)) : least;
}

// In a narrow window panels give up room that their texts do not need, the springs last of all.
void StatusBar::shrink(std::vector<int>& widths, int missing) const {
    for (const bool springs : {false, true}) {
        for (std::size_t i = 0; i < widths.size() && missing > 0; ++i) {
            if ((panels_[i].spec_.width == PanelWidth::spring) == springs) {
                const int spare = springs ? widths[i] : widths[i] - textInPixels(panels_[i]);
                const int given = std::clamp(spare, 0, missing);
                widths[i] -= given;
                missing -= given;
            }
        }
    }
}

void StatusBar::share(std::vector<int>& widths, int spare) const {
    auto springs =
        static_cast<int>(std::count_if(panels_.begin(), panels_.end(), [](const auto& p) {
            return p.spec_.width == PanelWidth::spring;
        }));
    for (std::size_t i = 0; i < widths.size(); ++i) {
        if (panels_[i].spec_.width == PanelWidth::spring) {
            const int part = spare / springs--;
            widths[i] += part;
            spare -= part;
        }
    }
}

// Windows wants the right edge of every panel, and paints the whole bar when it gets them.
void StatusBar::layOut() {
    if (panels_.empty()) return;
    RECT client{};
    ::GetClientRect(hwnd(), &client);
    std::vector<int> widths;
    for (const Panel& panel : panels_) {
        widths.push_back(widthInPixels(panel));
    }
    const int spare =
        static_cast<int>(client.right) - std::accumulate(widths.begin(), widths.end(), 0);
    spare < 0 ? shrink(widths, -spare) : share(widths, spare);
    std::vector<int> edges(widths.size());
    std::partial_sum(widths.begin(), widths.end(), edges.begin());
    if (edges != edges_) {
        edges_ = edges;
        send(SB_SETPARTS, edges.size(), reinterpret_cast<LPARAM>(edges.data()));
    }
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
