// mdlHTMLHelp: finds and shows the compiled help file in the user's language.
//
//   mdlHTMLHelp::showCHMHelp(hwnd(), mdlHTMLHelp::getHelpFileName(u"DEU"));
//
// The user-interface thread. Nothing here throws.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mdlHTMLHelp {

/// The help file of a folder in a language, if there is one; else the name of the English one.
std::u16string helpFileIn(const std::u16string& folder, std::u16string_view language);

/// The help file beside the program in a language, given by its code; the English one if there is
/// none.
std::u16string getHelpFileName(std::u16string_view language);

/// Opens the file in the system's help viewer, at its first page or at the page of a context.
void showCHMHelp(HWND owner, const std::u16string& file,
                 std::optional<std::uint32_t> contextId = std::nullopt);

/// Asks the help window that was opened to close, if it still exists.
void closeHelp();

/// Null if none was opened.
HWND hwndHelp();

}  // namespace mdlHTMLHelp
