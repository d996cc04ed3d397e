// Whole trace databases: the table of lines, its unique combinations and the macro traces.
//
//   fixture::writeTraceDatabase("big.mdb", {.rows = 1'000'000}, fixture::TraceFormat::Older);
//
// What they hold is what a TraceGenerator with the same options gives. A file takes 2 GB, about
// eight and a half million lines of usual length.
#pragma once

#include "tests/support/fixture_builder.h"
#include "tests/support/trace_generator.h"

namespace fixture {

enum class TraceFormat {
    Oldest,  ///< without Port and CallId
    Older,
    Newer,  ///< with Highlight, qrxIndex, NotePresent, Notes, an index and tblUniqueFilters
};

/// The columns of tblTraces.
std::vector<ColumnSpec> traceColumns(TraceFormat format, bool compressed = true);

/// A row of tblTraces.
void fillTraceRow(const Trace& trace, const TraceOrigin& origin, TraceFormat format, Row& row);

/// Adds the tables with their rows. Returns tblTraces.
TableBuilder& addTraceTables(FixtureBuilder& builder, const TraceOptions& options,
                             TraceFormat format, bool compressed = true);

/// A database in memory.
ByteVector traceDatabase(const TraceOptions& options, TraceFormat format = TraceFormat::Older);

/// A database in a new file, written as it is made, in memory of 8 bytes a row at most.
/// Throws std::runtime_error; std::length_error beyond 2 GB, which leaves an unfinished file.
void writeTraceDatabase(const std::filesystem::path& path, const TraceOptions& options,
                        TraceFormat format = TraceFormat::Older);

/// The rows of tblMacroTraces.
std::vector<std::u16string> macroTraces();

}  // namespace fixture
