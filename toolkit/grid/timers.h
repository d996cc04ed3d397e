// The timers of a grid's window.
//
//   ::KillTimer(hwnd(), kRegroupTimer);
//
// The user-interface thread.
#pragma once

#include <windows.h>

namespace grid {

inline constexpr UINT_PTR kBarTimer = 1;      ///< The scroll bars follow the row count.
inline constexpr UINT_PTR kRegroupTimer = 2;  ///< Rows that came are grouped.

}  // namespace grid
