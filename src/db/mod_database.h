// The one connection to the open trace database and the recordsets read from it.
//
//   modDatabase::connectToDB(path);
//   modDatabase::openRecordsets();
//
// How the opening goes is told to the services in use (services/services.h); they also run what may
// take long, and read the macro traces. No procedure here throws: errors are reported as
// log/procedure.h says. The user-interface thread.
#pragma once

#include "src/db/loading_events.h"
#include "src/db/unique_trace.h"

#include <filesystem>
#include <string>

namespace modDatabase {

/// Points the shared connection at another file.
void connectToDB(const std::u16string& path);

/// The file that was opened last; empty before.
std::filesystem::path databasePath();

/// Opens everything for the current connection: unique traces, trace records, macro traces.
void openRecordsets();

/// Opens the unique traces; a file of the older format is upgraded first. For a file that cannot be
/// upgraded the connection is given key and unique traces as definitions; nothing is written, and
/// computeUniqueFilters() follows when the trace records are loaded.
void openUniqueFilters();

/// Computes the unique traces of a file that has none, once after each openUniqueFilters(). Reads
/// all of tblTraces while the window is painted.
void computeUniqueFilters();

/// Upgrades an older file. A statement whose column or index exists already is skipped; any other
/// failure is logged and the statement retried, up to a limit of errors.
void updateDatabaseFormat();

/// Opens the trace records. `whereClause` is appended to the query unchanged: "" for all rows, else
/// a clause that begins with WHERE. Returns when the first rows have arrived; the rest follow
/// later.
void openDiagRecordset(const std::u16string& whereClause);

void openMacroTraces();

/// Cancels the running search for a text, which then fails. Any thread.
void cancelSearch();

/// Rebuilt each time a database is opened; contains the filter's ticks.
UniqueTraces& uniqueTraces();

}  // namespace modDatabase
