// Messages that a grid's window answers, for tests and tools that look at it from another process.
// They carry no pointers.
//
//   const LRESULT rows = ::SendMessageW(gridWindow, grid::GM_GETPAINTEDROWS, 0, 0);
//
// Any thread may send them, of any process.
#pragma once

#include <windows.h>

namespace grid {

/// The name of the window class.
inline constexpr wchar_t kWindowClass[] = L"DataGrid";

/// Returns how many rows of the data source were visible when the grid last painted; 0 before the
/// first paint. It tells when the first page of a file is on the screen.
inline constexpr UINT GM_GETPAINTEDROWS = WM_USER + 100;

}  // namespace grid
