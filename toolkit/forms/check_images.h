// The images of check boxes in a tree or list, drawn for a given number of dots per inch.
//
//   const HIMAGELIST images = forms::makeCheckImages(window.hwnd(), window.dpi());
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/units.h"

#include <windows.h>
#include <commctrl.h>

namespace forms {

/// An image list of three: nothing, an empty box, a ticked box. In the window's visual style or, if
/// it has none, in the classic look. The caller destroys it.
HIMAGELIST makeCheckImages(HWND window, Dpi dpi);

}  // namespace forms
