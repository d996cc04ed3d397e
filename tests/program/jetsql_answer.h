// What jetsql, which shares the engine with the viewer but none of its windows and recordsets,
// answers to a query, and how the viewer's export of the same rows has to look.
#pragma once

#include "tests/support/expected.h"

#include <filesystem>
#include <string>

/// Runs jetsql.exe of the folder that the test program stands in. Throws std::runtime_error if it
/// fails.
fixture::PlainTable jetsqlAnswer(const std::filesystem::path& database, const std::wstring& query);

/// The bytes of an exported file with these rows, whose first column is a date: tabs between the
/// cells, an empty line behind each hundred rows, dates as the system writes them, the system's
/// code page.
std::string asExported(const fixture::PlainTable& table);
