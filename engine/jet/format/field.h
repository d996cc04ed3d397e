// A field of a stored structure: where it stands and, by its type, how long it is.
//
//   constexpr jet::format::Field<std::uint16_t> kSlotCount{12};
//   static_assert(kSlotCount.end() == 14);
//
// engine/jet/bytes.h loads and stores fields. A plain value; any thread.
#pragma once

#include <cstddef>

namespace jet::format {

/// Integers are stored little-endian, whatever stands before them: fields are not aligned.
template <typename T>
struct Field {
    std::size_t offset = 0;  ///< from the first byte of the structure

    /// The first byte behind the field.
    constexpr std::size_t end() const { return offset + sizeof(T); }
};

}  // namespace jet::format
