#include "toolkit/grid/model/wheel.h"

namespace grid {

std::int64_t Wheel::turn(int delta, std::int64_t pixelsPerNotch) {
    bool reversed = (delta < 0 && kept_ > 0) || (delta > 0 && kept_ < 0);
    std::int64_t total = (reversed ? 0 : kept_) + delta * pixelsPerNotch;
    kept_ = total % kNotch;
    return total / kNotch;
}

}  // namespace grid
