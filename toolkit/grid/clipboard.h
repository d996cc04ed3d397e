// Text for the clipboard.
//
//   if (!putOnClipboard(hwnd(), text)) ::MessageBeep(MB_ICONWARNING);
//
// The user-interface thread.
#pragma once

#include <windows.h>

#include <string>

namespace grid {

/// Replaces what is on the clipboard. A zero character, at which a text would end for everybody who
/// reads it, becomes a blank. False if another program keeps the clipboard open, or memory is
/// short.
bool putOnClipboard(HWND owner, const std::wstring& text);

}  // namespace grid
