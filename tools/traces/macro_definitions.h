// Macro traces for generated databases: a dozen groups of the components in the lines.
//
//   for (const std::u16string& row : traces::macroDefinitions(origins)) use(row);
//
// A pure function; any thread may call it.
#pragma once

#include "tools/traces/trace_generator.h"

#include <string>
#include <vector>

namespace traces {

/// One XML fragment for each row. Groups of several traces have several rows; one group is hidden,
/// and one trace is defined twice.
std::vector<std::u16string> macroDefinitions(const std::vector<TraceOrigin>& origins);

}  // namespace traces
