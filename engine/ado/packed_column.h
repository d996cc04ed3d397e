// A range of one column in as few bytes as its values need: the difference from the smallest value
// in 0, 1, 2 or 4 bytes, or the whole value in 8.
//
//   const auto packing = ado::Packing::of(ado::Scale::Date, values, nulls);
//   packing.write(values, nulls, buffer);             // packing.byteCount() bytes
//   const ado::PackedColumn column{packing, buffer};
//   if (!column.isNull(7)) use(column.whole(7));
//
// A packed column is immutable; any thread may read it.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

namespace ado {

/// What the 64 bits of a value to be packed mean.
enum class Scale : std::uint8_t {
    Whole,  ///< a whole number
    Real,   ///< the bits of a double
    Date,   ///< the bits of a double that is a number of days
};

/// What the packed numbers mean.
enum class Unit : std::uint8_t {
    None,          ///< nothing is packed: the values stay in the file
    Whole,         ///< the number itself
    Seconds,       ///< ticks of a second since day 0
    Milliseconds,  ///< ticks of a millisecond since day 0
    Bits,          ///< the bits of a double
};

/// A date is n / units of a day, give or take the last bit, since programs compute it in different
/// ways: a tick is 4 n + 1, and one less or more for the neighbouring doubles.
double fromTicks(std::int64_t ticks, Unit unit);

/// How a range of values is packed.
struct Packing {
    Unit unit = Unit::None;
    std::uint8_t width = 0;
    bool hasNull = false;
    std::int64_t base = 0;
    std::size_t rows = 0;

    /// Chooses the narrowest lossless form and converts `values` to its unit. `nulls` is 1 for a
    /// row without a value.
    static Packing of(Scale scale, std::span<std::int64_t> values,
                      std::span<const std::uint8_t> nulls);

    std::size_t byteCount() const;

    /// Requires: `values` as of() left them; byteCount() bytes at `out`.
    void write(std::span<const std::int64_t> values, std::span<const std::uint8_t> nulls,
               std::uint8_t* out) const;
};

class PackedColumn {
public:
    PackedColumn() = default;
    PackedColumn(const Packing& packing, const std::uint8_t* data)
        : data_{data},
          base_{packing.base},
          rows_{static_cast<std::uint32_t>(packing.rows)},
          unit_{packing.unit},
          width_{packing.width},
          hasNull_{packing.hasNull} {}

    Unit unit() const { return unit_; }

    bool isNull(std::size_t row) const {
        if (!hasNull_) return false;
        if (width_ != 8) return code(row) == 0;
        const std::uint8_t* bitmap = data_ + std::size_t{8} * rows_;
        return (bitmap[row / 8] >> (row % 8)) & 1u;
    }

    /// The packed number. Requires: unit() is not None, !isNull(row).
    std::int64_t whole(std::size_t row) const {
        if (width_ == 8) return load<std::int64_t>(row);
        return base_ + code(row) - (hasNull_ ? 1 : 0);
    }

    /// The value of a Real or Date column. Requires: as whole().
    double real(std::size_t row) const {
        const std::int64_t number = whole(row);
        if (unit_ == Unit::Bits) return std::bit_cast<double>(number);
        return unit_ == Unit::Whole ? static_cast<double>(number) : fromTicks(number, unit_);
    }

private:
    template <typename T>
    T load(std::size_t row) const {
        T value;
        std::memcpy(&value, data_ + row * sizeof(T), sizeof(T));
        return value;
    }

    std::int64_t code(std::size_t row) const {
        switch (width_) {
            case 0:
                return 0;
            case 1:
                return load<std::uint8_t>(row);
            case 2:
                return load<std::uint16_t>(row);
            default:
                return load<std::uint32_t>(row);
        }
    }

    const std::uint8_t* data_ = nullptr;
    std::int64_t base_ = 0;
    std::uint32_t rows_ = 0;
    Unit unit_ = Unit::None;
    std::uint8_t width_ = 0;
    bool hasNull_ = false;
};

}  // namespace ado
