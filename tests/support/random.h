// The random numbers of the tools, for tests.
#pragma once

#include "tools/traces/random.h"

namespace fixture {

using traces::Random;

}  // namespace fixture
