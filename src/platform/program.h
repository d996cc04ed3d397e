// The running program: where it lies and which version it is.
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

/// Its folder, without a separator at the end but for the root of a drive.
std::u16string folder();

/// Zeros for an executable without a version.
Version version();

}  // namespace program
