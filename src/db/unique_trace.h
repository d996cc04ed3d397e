// The distinct combinations of component, trace level, process and source in the open database.
//
//   UniqueTraces traces;
//   traces.push_back({.component = u"Notifier", .traceLevel = std::int32_t{3}});
//
// Plain values; any thread.
#pragma once

#include "engine/ado/recordset.h"

#include <vector>

/// One combination; Null stays Null.
struct UniqueTrace {
    bool selected = true;  ///< ticked: part of the filter
    jet::Value component;
    jet::Value traceLevel;
    jet::Value process;
    jet::Value source;
    jet::Value qrxIndex;  ///< the key that the combination's rows in tblTraces carry
};

/// All combinations, in the order Component, TraceLevel.
using UniqueTraces = std::vector<UniqueTrace>;
