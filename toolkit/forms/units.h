// Lengths on the screen, each unit as a type.
//
// Positions and sizes of forms and controls are in twips, 1440 to the inch and independent of the
// display. Windows uses pixels. Only the functions below convert between the two, and they always
// take the dots per inch of the window concerned.
//
//   Twips left = 180_tw + 0.5 * width;
//   Pixels x = toPixels(left, window.dpi());
//   Twips back = toTwips(x, window.dpi());
//
// Any thread.
#pragma once

#include <compare>

namespace forms {

/// A length in units of 1/1440 inch. Layouts are computed in fractional twips and rounded once,
/// when converted to pixels.
struct Twips {
    double value = 0;

    constexpr Twips() = default;
    constexpr explicit Twips(double twips) : value(twips) {}

    constexpr auto operator<=>(const Twips&) const = default;
    constexpr Twips operator-() const { return Twips(-value); }
    constexpr Twips& operator+=(Twips other);
    constexpr Twips& operator-=(Twips other);
};

constexpr Twips operator+(Twips a, Twips b) { return Twips(a.value + b.value); }
constexpr Twips operator-(Twips a, Twips b) { return Twips(a.value - b.value); }
constexpr Twips operator*(Twips a, double factor) { return Twips(a.value * factor); }
constexpr Twips operator*(double factor, Twips a) { return Twips(a.value * factor); }
constexpr Twips operator/(Twips a, double divisor) { return Twips(a.value / divisor); }
constexpr Twips& Twips::operator+=(Twips other) { return *this = *this + other; }
constexpr Twips& Twips::operator-=(Twips other) { return *this = *this - other; }

inline namespace literals {
constexpr Twips operator""_tw(unsigned long long twips) {
    return Twips(static_cast<double>(twips));
}
constexpr Twips operator""_tw(long double twips) { return Twips(static_cast<double>(twips)); }
}  // namespace literals

/// A whole number of device pixels.
struct Pixels {
    int value = 0;

    constexpr Pixels() = default;
    constexpr explicit Pixels(int pixels) : value(pixels) {}

    constexpr auto operator<=>(const Pixels&) const = default;
};

constexpr Pixels operator+(Pixels a, Pixels b) { return Pixels(a.value + b.value); }
constexpr Pixels operator-(Pixels a, Pixels b) { return Pixels(a.value - b.value); }

/// Dots per inch of a display: 96 is 100 %, 144 is 150 %, 192 is 200 %.
struct Dpi {
    unsigned value = 96;

    constexpr Dpi() = default;
    constexpr explicit Dpi(unsigned dotsPerInch) : value(dotsPerInch) {}

    constexpr auto operator<=>(const Dpi&) const = default;
};

inline constexpr double kTwipsPerInch = 1440.0;
inline constexpr double kPointsPerInch = 72.0;

/// Rounded to the nearest pixel, halves away from zero.
constexpr Pixels toPixels(Twips length, Dpi dpi) {
    const double exact = length.value * dpi.value / kTwipsPerInch;
    return Pixels(static_cast<int>(exact < 0 ? exact - 0.5 : exact + 0.5));
}

constexpr Twips toTwips(Pixels length, Dpi dpi) {
    return Twips(length.value * kTwipsPerInch / dpi.value);
}

/// A size given in pixels of a 96 dpi display, for the small things that are designed that way
/// (margins, the width of a splitter).
constexpr Pixels scaled(int pixelsAt96, Dpi dpi) {
    return toPixels(toTwips(Pixels(pixelsAt96), Dpi(96)), dpi);
}

}  // namespace forms
