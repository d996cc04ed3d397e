// The one connection to the open trace database and the recordsets read from it.
//
//   modDatabase::connectToDB(path);
//   modDatabase::openRecordsets();
//
// The user-interface thread. No procedure here throws: errors are reported as log/procedure.h says.
#pragma once

#include "src/db/loading_events.h"
#include "src/db/unique_trace.h"

#include <filesystem>
#include <functional>
#include <string>

namespace modDatabase {

/// Who is told how the opening goes. Set once at start-up, before anything is opened.
void setEvents(LoadingEvents& events);

/// Who runs what may take long, with the window painted meanwhile. An empty one: whoever asks for it.
void setRunner(ado::Connection::Runner runner);

/// Who reads the macro traces. Set once at start-up; without one they are not read.
void setMacroTraceReader(std::function<void(ado::Recordset&)> reader);

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
