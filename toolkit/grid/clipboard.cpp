#include "toolkit/grid/clipboard.h"

#include <algorithm>

namespace grid {
namespace {

// Programs that watch the clipboard open it for a moment after every change.
bool openClipboard(HWND owner) {
    constexpr int kTries = 10;
    constexpr DWORD kPause = 10;
    for (int attempt = 0; attempt < kTries; ++attempt) {
        if (::OpenClipboard(owner)) return true;
        ::Sleep(kPause);
    }
    return false;
}

HGLOBAL globalText(const std::wstring& text) {
    HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    auto* target = memory ? static_cast<wchar_t*>(::GlobalLock(memory)) : nullptr;
    if (target) {
        std::replace_copy(text.begin(), text.end(), target, L'\0', L' ');
        target[text.size()] = L'\0';
        ::GlobalUnlock(memory);
    }
    return memory;
}

}  // namespace

bool putOnClipboard(HWND owner, const std::wstring& text) {
    HGLOBAL memory = globalText(text);
    if (!memory) return false;
    bool put = false;
    if (openClipboard(owner)) {
        ::EmptyClipboard();
        put = ::SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        ::CloseClipboard();
    }
    if (!put) ::GlobalFree(memory);
    return put;
}

}  // namespace grid
