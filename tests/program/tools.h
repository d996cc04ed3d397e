// The command line tools beside the viewer: maketraces fills databases, and jetsql, which shares the
// engine with the viewer but none of its windows and recordsets, answers queries. And how the
// viewer's export of an answer has to look. All throw std::runtime_error if a tool fails.
#pragma once

#include "tests/support/expected.h"

#include <filesystem>
#include <string>

/// A database of the newer format with macro traces.
void makeTraces(const std::filesystem::path& database, int rows);

fixture::PlainTable jetsqlAnswer(const std::filesystem::path& database, const std::wstring& query);

/// The bytes of an exported file with these rows, whose first column is a date: tabs between the
/// cells, an empty line behind each hundred rows, dates as the system writes them, the system's
/// code page.
std::string asExported(const fixture::PlainTable& table);
