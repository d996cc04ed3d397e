#include "toolkit/forms/check_images.h"

#include <uxtheme.h>
#include <vsstyle.h>

namespace forms {
namespace {

constexpr int kBoxSize = 16;  // Pixels at 96 dpi.
constexpr int kImageCount = 3;

void drawBox(HTHEME theme, HDC dc, RECT rect, bool ticked) {
    if (theme) {
        ::DrawThemeBackground(theme, dc, BP_CHECKBOX,
                              ticked ? CBS_CHECKEDNORMAL : CBS_UNCHECKEDNORMAL, &rect, nullptr);
    } else {
        ::InflateRect(&rect, -1, -1);
        ::DrawFrameControl(dc, &rect, DFC_BUTTON,
                           UINT{DFCS_BUTTONCHECK | DFCS_FLAT} | (ticked ? UINT{DFCS_CHECKED} : 0));
    }
}

}  // namespace

HIMAGELIST makeCheckImages(HWND window, Dpi dpi) {
    const int size = scaled(kBoxSize, dpi).value;
    const HDC screen = ::GetDC(window);
    const HDC memory = ::CreateCompatibleDC(screen);
    const HBITMAP strip = ::CreateCompatibleBitmap(screen, size * kImageCount, size);
    const HGDIOBJ previous = ::SelectObject(memory, strip);
    RECT rect{0, 0, size * kImageCount, size};
    ::FillRect(memory, &rect, ::GetSysColorBrush(COLOR_WINDOW));
    const HTHEME theme = ::OpenThemeData(window, L"BUTTON");
    drawBox(theme, memory, {size, 0, 2 * size, size}, false);
    drawBox(theme, memory, {2 * size, 0, 3 * size, size}, true);
    if (theme) ::CloseThemeData(theme);
    ::SelectObject(memory, previous);
    ::DeleteDC(memory);
    ::ReleaseDC(window, screen);

    const HIMAGELIST images = ImageList_Create(size, size, ILC_COLOR32, kImageCount, 0);
    ImageList_Add(images, strip, nullptr);
    ::DeleteObject(strip);
    return images;
}

}  // namespace forms
