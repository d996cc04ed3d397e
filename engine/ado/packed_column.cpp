#include "engine/ado/packed_column.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace ado {
namespace {

constexpr double kSecondsPerDay = 86'400;
constexpr double kMillisecondsPerDay = 86'400'000;

/// Far outside of the calendar on both sides, and far from overflow in milliseconds.
constexpr double kMaxDays = 10'000'000;

double unitsPerDay(Unit unit) {
    return unit == Unit::Seconds ? kSecondsPerDay : kMillisecondsPerDay;
}

std::optional<std::int64_t> toTicks(std::int64_t bits, Unit unit) {
    const double days = std::bit_cast<double>(bits);
    if (!(std::abs(days) < kMaxDays)) return std::nullopt;
    const double scaled = days * unitsPerDay(unit);
    const auto number = static_cast<std::int64_t>(scaled + (scaled < 0 ? -0.5 : 0.5));
    const double canonical = static_cast<double>(number) / unitsPerDay(unit);
    // As unsigned numbers, since the bits of -0.0 and 0.0 are as far apart as numbers can be.
    const std::uint64_t off =
        static_cast<std::uint64_t>(bits) - std::bit_cast<std::uint64_t>(canonical) + 1;
    if (off > 2) return std::nullopt;
    return number * 4 + static_cast<std::int64_t>(off);
}

std::optional<std::int64_t> toWhole(std::int64_t bits) {
    constexpr double kExact = 9'007'199'254'740'992;  // 2^53
    const double real = std::bit_cast<double>(bits);
    if (!(std::abs(real) < kExact)) return std::nullopt;
    const auto whole = static_cast<std::int64_t>(real);
    if (std::bit_cast<std::int64_t>(static_cast<double>(whole)) != bits) return std::nullopt;
    return whole;
}

/// Replaces all values by what `convert` makes of them, or none.
template <typename Convert>
bool convertAll(std::span<std::int64_t> values, std::span<const std::uint8_t> nulls,
                Convert convert) {
    std::vector<std::int64_t> converted(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (nulls[i] != 0) continue;
        const auto number = convert(values[i]);
        if (!number) return false;
        converted[i] = *number;
    }
    std::copy(converted.begin(), converted.end(), values.begin());
    return true;
}

Unit bringIntoUnit(Scale scale, std::span<std::int64_t> values,
                   std::span<const std::uint8_t> nulls) {
    if (scale == Scale::Whole) return Unit::Whole;
    if (scale == Scale::Real) return convertAll(values, nulls, toWhole) ? Unit::Whole : Unit::Bits;
    for (const Unit unit : {Unit::Seconds, Unit::Milliseconds}) {
        const auto convert = [unit](std::int64_t bits) { return toTicks(bits, unit); };
        if (convertAll(values, nulls, convert)) return unit;
    }
    return Unit::Bits;
}

std::uint8_t widthFor(std::uint64_t highestCode) {
    if (highestCode == 0) return 0;
    if (highestCode <= 0xFF) return 1;
    if (highestCode <= 0xFFFF) return 2;
    return highestCode <= 0xFFFF'FFFF ? 4 : 8;
}

}  // namespace

double fromTicks(std::int64_t ticks, Unit unit) {
    const std::int64_t number = ticks >> 2;
    const std::uint64_t off = static_cast<std::uint64_t>(ticks & 3) - 1;
    const double canonical = static_cast<double>(number) / unitsPerDay(unit);
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(canonical) + off);
}

Packing Packing::of(Scale scale, std::span<std::int64_t> values,
                    std::span<const std::uint8_t> nulls) {
    Packing packing;
    packing.rows = values.size();
    packing.unit = bringIntoUnit(scale, values, nulls);
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    std::int64_t most = std::numeric_limits<std::int64_t>::min();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (nulls[i] != 0) {
            packing.hasNull = true;
            continue;
        }
        least = std::min(least, values[i]);
        most = std::max(most, values[i]);
    }
    if (least > most) return packing;  // Null throughout: code 0 in no bytes
    const std::uint64_t range =
        static_cast<std::uint64_t>(most) - static_cast<std::uint64_t>(least);
    const bool wide = range >= 0xFFFF'FFFF;
    packing.width = wide ? 8 : widthFor(range + (packing.hasNull ? 1 : 0));
    packing.base = wide ? 0 : least;
    return packing;
}

std::size_t Packing::byteCount() const {
    return rows * width + (width == 8 && hasNull ? (rows + 7) / 8 : 0);
}

void Packing::write(std::span<const std::int64_t> values, std::span<const std::uint8_t> nulls,
                    std::uint8_t* out) const {
    if (width == 0) return;
    if (width == 8) {
        std::memcpy(out, values.data(), rows * sizeof(std::int64_t));
        if (!hasNull) return;
        std::uint8_t* bitmap = out + rows * sizeof(std::int64_t);
        std::fill_n(bitmap, (rows + 7) / 8, std::uint8_t{0});
        for (std::size_t i = 0; i < rows; ++i) {
            if (nulls[i] != 0) bitmap[i / 8] |= static_cast<std::uint8_t>(1u << (i % 8));
        }
        return;
    }
    const auto store = [&]<typename Code>(Code) {
        for (std::size_t i = 0; i < rows; ++i) {
            const std::int64_t code = nulls[i] != 0 ? 0 : values[i] - base + (hasNull ? 1 : 0);
            const auto narrow = static_cast<Code>(code);
            std::memcpy(out + i * sizeof(Code), &narrow, sizeof(Code));
        }
    };
    if (width == 1) store(std::uint8_t{});
    if (width == 2) store(std::uint16_t{});
    if (width == 4) store(std::uint32_t{});
}

}  // namespace ado
