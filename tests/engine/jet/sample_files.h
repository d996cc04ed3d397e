// The sample databases, for tests that read real files.
#pragma once

#include "tests/support/expected.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace sample {

/// Every database in the folder of test databases and below; empty if there is no such folder.
inline std::vector<std::filesystem::path> databases() {
    std::vector<std::filesystem::path> found;
    const auto folder = fixture::testDataFolder();
    if (!folder) return found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator{*folder}) {
        if (entry.path().extension() == ".mdb") found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace sample
