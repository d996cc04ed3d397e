// mdlPriority: the priority of the viewer's own process.
//
//   mdlPriority::ChangePriority(mdlPriority::kBelowNormal);
//
// The user-interface thread.
#pragma once

#include <cstdint>

namespace mdlPriority {

/// As the system numbers them: below normal.
inline constexpr std::uint32_t kBelowNormal = 16384;

/// False if the system refused; the reason is logged.
bool ChangePriority(std::uint32_t priorityClass);

}  // namespace mdlPriority
