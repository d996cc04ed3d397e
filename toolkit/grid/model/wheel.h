// Turns wheel messages into scroll distances.
//
//   RowIndex pixels = wheel.turn(delta, linesPerNotch * rowHeight);
//
// One thread at a time. High-resolution wheels and touch pads send less than a notch at a time: the
// fraction of a pixel is carried over to the next message.
#pragma once

#include <cstdint>

namespace grid {

class Wheel {
public:
    /// The delta of a wheel message for one notch.
    static constexpr int kNotch = 120;

    /// Adds a movement and returns the pixels to scroll, with the sign of the movement.
    /// Reversing the direction discards the fraction.
    std::int64_t turn(int delta, std::int64_t pixelsPerNotch);

    void reset() { kept_ = 0; }

private:
    std::int64_t kept_ = 0;  // In pixels times kNotch.
};

}  // namespace grid
