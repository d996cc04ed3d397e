// Macro traces for made-up databases: a dozen groups over the components that the lines have.
//
//   for (const std::u16string& row : traces::macroDefinitions(origins)) use(row);
//
// A pure function; any thread may call it.
#pragma once

#include "tools/traces/trace_generator.h"

#include <string>
#include <vector>

namespace traces {

/// One XML fragment a row. Groups of several traces take several rows; one group is hidden, and one
/// trace comes twice.
std::vector<std::u16string> macroDefinitions(const std::vector<TraceOrigin>& origins);

}  // namespace traces
