// The running program: its path and version.
//
//   const std::u16string logs = program::folder() + u"\\LOGS";
//
// Any thread.
#pragma once

#include <string>

namespace program {

struct Version {
    int major = 0;
    int minor = 0;
    int revision = 0;
};

/// The executable's full path.
std::u16string path();

/// Its folder, without a trailing separator except for the root of a drive.
std::u16string folder();

/// Zeros for an executable without a version.
Version version();

}  // namespace program
