// Turns wheel messages into scroll distances.
//
//   RowIndex pixels = wheel.turn(delta, linesPerNotch * rowHeight);
//
// One thread. Fine wheels and touch pads send less than a notch at a time: what does not make a
// whole pixel is kept for the next message.
#pragma once

#include <cstdint>

namespace grid {

class Wheel {
public:
    /// What a wheel message reports for one notch.
    static constexpr int kNotch = 120;

    /// Adds a movement and returns the pixels to scroll, with the sign of the movement.
    /// A turn in the other direction drops what was kept.
    std::int64_t turn(int delta, std::int64_t pixelsPerNotch);

    void reset() { kept_ = 0; }

private:
    std::int64_t kept_ = 0;  // In pixels times kNotch.
};

}  // namespace grid
