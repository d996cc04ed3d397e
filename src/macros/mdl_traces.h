// Macro traces: named groups of trace settings in the database. Its rows are merged into one
// document.
//
//   const ServicesInUse inUse{{.readMacroTraces = mdlTraces::initMacroTraces}};
//   const xml::Node trace = mdlTraces::findTrace(L"Calls", L"Incoming calls");
//
// The root HYBRIDTRACES contains the groups (GA with NAME and DESCRIPTION, and DONTSHOW if it is
// hidden), which contain macro traces (TRACE with NAME and DESCRIPTION), which contain the
// components to select (DIAG with GROUP), which contain their levels (FLAG with ID).
//
// The user-interface thread.
#pragma once

#include "engine/ado/recordset.h"
#include "src/macros/xml_document.h"

#include <string>

namespace mdlTraces {

/// Rebuilds the document from a recordset of tblMacroTraces. A row that is not XML, has no named
/// group or cannot be merged is reported and skipped. Does not throw.
void initMacroTraces(ado::Recordset& recordset);

/// The document in use; without a root element until a database has been opened. It lives as long
/// as the process. Throws RuntimeError if the system has no XML parser.
const xml::Document& xmlMacroTraces();

/// The first trace of that name in the first group of that name; a non-existent node if there is
/// none. Throws RuntimeError for a name with a single quote, which a path cannot contain.
xml::Node findTrace(const std::wstring& group, const std::wstring& trace);

}  // namespace mdlTraces
