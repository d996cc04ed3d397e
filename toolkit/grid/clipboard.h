// Text for the clipboard.
//
//   if (!putOnClipboard(hwnd(), text)) ::MessageBeep(MB_ICONWARNING);
//
// The user-interface thread.
#pragma once

#include <windows.h>

#include <string>

namespace grid {

/// Replaces the contents of the clipboard. A zero character, which would end the text for readers,
/// becomes a blank. False if another program keeps the clipboard open, or memory is short.
bool putOnClipboard(HWND owner, const std::wstring& text);

}  // namespace grid
