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

/// Opens the unique traces; a file of the older format is upgraded first.
void openUniqueFilters();

/// Adds to an older file what it lacks. A statement that finds its column or index there already
/// is left out; any other failure is logged and the statement tried again, until there are too
/// many.
void updateDatabaseFormat();

/// Opens the trace records. `whereClause` follows the query as it stands: "" for all rows, else a
/// clause that begins with WHERE. Returns when the first rows are there; the rest arrive later.
void openDiagRecordset(const std::u16string& whereClause);

void openMacroTraces();

/// Ends the search for a text that is running; it fails then. Any thread.
void cancelSearch();

/// Rebuilt each time a database is opened; the filter's ticks live in it.
UniqueTraces& uniqueTraces();

}  // namespace modDatabase
