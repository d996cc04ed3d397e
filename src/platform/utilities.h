// Utilities: the version of the message server that is installed here, and opening things with the
// programs that the user has for them.
//
//   const VersionRecord server = Utilities::getVersion();
//   if (server.major > 0) ...
//
// The user-interface thread. Nothing here throws.
#pragma once

#include <cstdint>
#include <string>

/// The version of an installed server; zeros where nothing could be read.
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

/// Opens a file with the program that the user has for its kind.
void LaunchApplication(const std::u16string& path);

/// Opens an address of the web in the user's browser.
void LaunchInternetExplorer(const std::u16string& address);

}  // namespace Utilities
