// HeadingTheme: draws the background of column headings in the user's visual style, or plainly if
// there is none.
//
//   theme.open(hwnd());
//   theme.draw(dc, rect, HeadingState::hot, style.back.resolve(false));
//
// The user-interface thread.
#pragma once

#include "toolkit/grid/back_buffer.h"
#include "toolkit/grid/model/shapes.h"

#include <windows.h>
#include <uxtheme.h>

#include <memory>
#include <vector>

namespace grid {

enum class HeadingState { normal, hot, pressed };

class HeadingTheme {
public:
    HeadingTheme() = default;
    ~HeadingTheme() { close(); }

    HeadingTheme(const HeadingTheme&) = delete;
    HeadingTheme& operator=(const HeadingTheme&) = delete;

    /// To be called again when the visual style has changed (WM_THEMECHANGED).
    void open(HWND window);
    void close();

    bool themed() const { return theme_ != nullptr; }
    void draw(HDC dc, const Rect& rect, HeadingState state, COLORREF plainBack) const;

private:
    // Drawing with the theme is slow, and headings are few and rarely change: each is drawn once
    // and then copied.
    struct Drawn {
        HeadingState state;
        int width;
        int height;
        std::unique_ptr<BackBuffer> picture;
    };

    const BackBuffer* picture(HDC dc, int width, int height, HeadingState state) const;
    void drawThemed(HDC dc, const Rect& rect, HeadingState state) const;

    HTHEME theme_ = nullptr;
    mutable std::vector<Drawn> drawn_;  // The latest last.
};

}  // namespace grid
