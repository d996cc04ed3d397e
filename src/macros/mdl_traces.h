// Macro traces: named groups of trace settings that the database brings along. Its rows are merged
// into one document.
//
//   modDatabase::setMacroTraceReader(mdlTraces::initMacroTraces);   // once, at start-up
//   const xml::Node trace = mdlTraces::findTrace(L"Calls", L"Incoming calls");
//
// Below the root HYBRIDTRACES stand the groups (GA with NAME and DESCRIPTION, and DONTSHOW if it is
// hidden), in them the macro traces (TRACE with NAME and DESCRIPTION), in them the components to
// switch on (DIAG with GROUP), and in them their levels (FLAG with ID).
//
// The user-interface thread.
#pragma once

#include "engine/ado/recordset.h"
#include "src/macros/xml_document.h"

#include <string>

namespace mdlTraces {

/// Rebuilds the document from a recordset over tblMacroTraces. A row that is no XML, has no named
/// group or cannot be merged is reported and left out. Nothing is thrown.
void initMacroTraces(ado::Recordset& recordset);

/// The document in use; without a root element until a database was opened. It lives as long as the
/// process. Throws RuntimeError if the system has no XML parser.
const xml::Document& xmlMacroTraces();

/// The first trace of that name in the first group of that name; one that does not exist if there is
/// none. Throws RuntimeError for a name with a single quote, which a path cannot hold.
xml::Node findTrace(const std::wstring& group, const std::wstring& trace);

}  // namespace mdlTraces
