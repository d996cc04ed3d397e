// Macro traces: named groups of trace settings that the database brings along. Its rows are merged
// into one document:
//
//   HYBRIDTRACES
//     GA NAME [DONTSHOW]          a group, by its first row; DESCRIPTION if it has one
//       TRACE NAME                a macro trace; DESCRIPTION
//         DIAG GROUP              a component to switch on
//           FLAG ID               one of its levels
//
//   modDatabase::setMacroTraceReader(mdlTraces::initMacroTraces);   // once, at start-up
//   const xml::Node trace = mdlTraces::findTrace(L"Calls", L"Incoming calls");
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
