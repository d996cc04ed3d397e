// Utilities: the version of the installed message server, and opening files and web addresses in
// the user's programs.
//
//   const VersionRecord server = Utilities::getVersion();
//   if (server.major > 0) ...
//
// The user-interface thread. Nothing here throws.
#pragma once

#include <cstdint>
#include <string>

/// The version of an installed server; zeros if nothing can be read.
struct VersionRecord {
    std::int16_t major = 0;
    std::int16_t minor = 0;
    std::int16_t release = 0;
    std::int16_t build = 0;
    std::u16string version = {};
};

namespace Utilities {

/// Whether the server of the current generation is installed.
bool isConnection();

/// The version of the installed server, of whatever generation.
VersionRecord getVersion();

/// Opens a file with the program associated with its type.
void LaunchApplication(const std::u16string& path);

/// Opens a web address in the user's browser.
void LaunchInternetExplorer(const std::u16string& address);

}  // namespace Utilities
