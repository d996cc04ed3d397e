// The made-up lines of the tools, for tests.
#pragma once

#include "tools/traces/trace_generator.h"

namespace fixture {

using traces::Trace;
using traces::TraceGenerator;
using traces::TraceOptions;
using traces::TraceOrigin;

}  // namespace fixture
