// The largest piece of memory that this test program asked for at once.
//
//   jet::largestAllocation = 0;
//   ...
//   EXPECT_LE(jet::largestAllocation, limit);
#pragma once

#include <atomic>
#include <cstddef>

namespace jet {

/// Always 0 under the sanitizers, which bring their own operator new.
extern std::atomic<std::size_t> largestAllocation;

}  // namespace jet
