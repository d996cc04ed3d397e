// Which folder may include what: the layers of the program as the sources show them.
//
//   for (const std::string& crossing : crossings("engine/jet/x.cpp", text)) report(crossing);
//
// Any thread may call.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace layers {

struct Rule {
    std::string_view folder;
    /// Folders with rules of their own, each without those inside it that have one, too; or folders
    /// that hold others, with everything in them.
    std::vector<std::string_view> mayInclude;
    bool portable;  ///< no <windows.h> outside files named *_windows.cpp
};

/// From the bottom up: a folder may include itself and folders above it in the list, so there is
/// no circle. The rule of the innermost folder that holds a file is the file's.
const std::vector<Rule>& rules();

/// One sentence for each #include of the file that its layer does not allow. `path` is relative to
/// the root of the sources, with slashes.
std::vector<std::string> crossings(std::string_view path, std::string_view text);

}  // namespace layers
