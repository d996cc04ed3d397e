// A new, empty database: 16 pages with the four system tables, as the original engine makes them.
//
//   jet::createDatabase("traces.mdb", now);
//   auto database = jet::Database::open("traces.mdb");
//
// Any thread may call.
#pragma once

#include "engine/jet/value.h"

#include <filesystem>
#include <vector>

namespace jet {

/// The file's bytes. `now` is the creation date of the objects in the catalog.
std::vector<std::uint8_t> emptyDatabase(Date now);

/// Creates the file. Throws Error: AccessDenied if it exists or cannot be created; WriteFailed,
/// DiskFull.
void createDatabase(const std::filesystem::path& path, Date now);

}  // namespace jet
