#include "toolkit/grid/heading_theme.h"

#include "toolkit/grid/drawing.h"

#include <utility>

namespace grid {
namespace {

// Part and states of the class HEADER, as the theme files number them (vssym32.h).
constexpr int kHeaderItem = 1;
constexpr int kStateNormal = 1;
constexpr int kStateHot = 2;
constexpr int kStatePressed = 3;

// Enough for the headings of a wide grid; a column that is being dragged has another width at
// every step.
constexpr std::size_t kMaxDrawn = 48;

int themeState(HeadingState state) {
    switch (state) {
        case HeadingState::hot:
            return kStateHot;
        case HeadingState::pressed:
            return kStatePressed;
        default:
            return kStateNormal;
    }
}

void drawPlain(HDC dc, const Rect& rect, HeadingState state, COLORREF back) {
    fill(dc, rect, back);
    RECT edge = toRect(rect);
    ::DrawEdge(dc, &edge, state == HeadingState::pressed ? BDR_SUNKENOUTER : BDR_RAISEDINNER,
               BF_RECT);
}

}  // namespace

void HeadingTheme::open(HWND window) {
    close();
    theme_ = ::OpenThemeData(window, L"HEADER");
}

void HeadingTheme::close() {
    drawn_.clear();
    if (theme_) {
        ::CloseThemeData(theme_);
        theme_ = nullptr;
    }
}

void HeadingTheme::draw(HDC dc, const Rect& rect, HeadingState state, COLORREF plainBack) const {
    if (rect.empty()) return;
    if (!theme_) {
        drawPlain(dc, rect, state, plainBack);
        return;
    }
    if (const BackBuffer* drawn = picture(dc, rect.width(), rect.height(), state)) {
        drawn->copyTo(dc, {0, 0, rect.width(), rect.height()}, {rect.left, rect.top});
    } else {
        drawThemed(dc, rect, state);
    }
}

const BackBuffer* HeadingTheme::picture(HDC dc, int width, int height, HeadingState state) const {
    for (const Drawn& drawn : drawn_) {
        if (drawn.state == state && drawn.width == width && drawn.height == height) {
            return drawn.picture.get();
        }
    }
    if (drawn_.size() == kMaxDrawn) drawn_.erase(drawn_.begin());
    auto made = std::make_unique<BackBuffer>();
    HDC canvas = made->open(dc, width, height);
    if (!canvas) return nullptr;
    drawThemed(canvas, {0, 0, width, height}, state);
    drawn_.push_back({state, width, height, std::move(made)});
    return drawn_.back().picture.get();
}

void HeadingTheme::drawThemed(HDC dc, const Rect& rect, HeadingState state) const {
    RECT area = toRect(rect);
    if (::IsThemeBackgroundPartiallyTransparent(theme_, kHeaderItem, themeState(state))) {
        fill(dc, rect, ::GetSysColor(COLOR_WINDOW));
    }
    ::DrawThemeBackground(theme_, dc, kHeaderItem, themeState(state), &area, nullptr);
}

}  // namespace grid
