#include "tests/toolkit/grid/snapshot.h"

#include <algorithm>
#include <set>

namespace grid {
namespace {

BITMAPINFOHEADER headerOf(int width, int height) {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = -height;
    header.biPlanes = 1;
    header.biBitCount = 32;
    header.biCompression = BI_RGB;
    return header;
}

}  // namespace

Snapshot::Snapshot(HDC source, int width, int height)
    : width_(width), height_(height), pixels_(static_cast<std::size_t>(width * height)) {
    BITMAPINFO info{};
    info.bmiHeader = headerOf(width, height);
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HDC dc = CreateCompatibleDC(source);
    HGDIOBJ original = SelectObject(dc, bitmap);
    BitBlt(dc, 0, 0, width, height, source, 0, 0, SRCCOPY);
    GdiFlush();
    const auto* from = static_cast<const std::uint32_t*>(bits);
    std::transform(from, from + pixels_.size(), pixels_.begin(),
                   [](std::uint32_t pixel) { return pixel & 0xFFFFFFu; });
    SelectObject(dc, original);
    DeleteDC(dc);
    DeleteObject(bitmap);
}

Snapshot Snapshot::of(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    HDC dc = GetWindowDC(window);
    Snapshot snapshot(dc, static_cast<int>(rect.right - rect.left),
                      static_cast<int>(rect.bottom - rect.top));
    ReleaseDC(window, dc);
    return snapshot;
}

Snapshot Snapshot::ofClient(HWND window) {
    RECT rect{};
    GetClientRect(window, &rect);
    HDC dc = GetDC(window);
    Snapshot snapshot(dc, static_cast<int>(rect.right), static_cast<int>(rect.bottom));
    ReleaseDC(window, dc);
    return snapshot;
}

COLORREF Snapshot::at(int x, int y) const {
    std::uint32_t pixel = pixels_[static_cast<std::size_t>(y * width_ + x)];
    return RGB((pixel >> 16) & 0xFF, (pixel >> 8) & 0xFF, pixel & 0xFF);
}

int Snapshot::differences(const Snapshot& other) const {
    return differences(other, {0, 0, width_, height_});
}

int Snapshot::differences(const Snapshot& other, const Rect& part) const {
    if (other.width_ != width_ || other.height_ != height_) return width_ * height_;
    int count = 0;
    for (int y = part.top; y < part.bottom; ++y) {
        const auto first = static_cast<std::size_t>(y * width_ + part.left);
        for (std::size_t i = first; i < first + static_cast<std::size_t>(part.width()); ++i) {
            count += pixels_[i] != other.pixels_[i] ? 1 : 0;
        }
    }
    return count;
}

int Snapshot::count(const Rect& part, COLORREF color) const {
    int count = 0;
    for (int y = part.top; y < part.bottom; ++y) {
        for (int x = part.left; x < part.right; ++x) {
            count += at(x, y) == color ? 1 : 0;
        }
    }
    return count;
}

int Snapshot::colors(const Rect& part) const {
    std::set<COLORREF> colors;
    for (int y = part.top; y < part.bottom; ++y) {
        for (int x = part.left; x < part.right; ++x) {
            colors.insert(at(x, y));
        }
    }
    return static_cast<int>(colors.size());
}

bool Snapshot::save(const std::wstring& path) const {
    BITMAPFILEHEADER file{};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof file + sizeof(BITMAPINFOHEADER);
    file.bfSize = file.bfOffBits + static_cast<DWORD>(pixels_.size() * sizeof pixels_[0]);
    BITMAPINFOHEADER header = headerOf(width_, height_);
    HANDLE out = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (out == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    bool ok = WriteFile(out, &file, sizeof file, &written, nullptr) &&
              WriteFile(out, &header, sizeof header, &written, nullptr) &&
              WriteFile(out, pixels_.data(), static_cast<DWORD>(pixels_.size() * sizeof pixels_[0]),
                        &written, nullptr);
    CloseHandle(out);
    return ok;
}

}  // namespace grid
