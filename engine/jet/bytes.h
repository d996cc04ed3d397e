// Fields loaded from bytes and stored in them. Integers are little-endian.
//
//   const unsigned slots = jet::load(page, jet::format::data_page::kSlotCount);
//
//   jet::Reader reader{bytes, number};
//   reader.seek(jet::format::table_definition::kHeadSize);
//   const auto id = reader.next<std::uint16_t>();
//
// The functions trust the offset: check the length once at the border (a page, a record, a table
// definition) and read freely inside. `Reader` is the checked cursor for what has no fixed shape.
// Any thread may call the functions; a Reader belongs to one thread.
#pragma once

#include "engine/jet/error.h"
#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

#include <bit>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace jet {

static_assert(std::endian::native == std::endian::little, "stored integers are little-endian");

template <typename T>
T load(const std::uint8_t* at) {
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

/// Requires: offset + sizeof(T) <= bytes.size().
template <typename T>
T load(Bytes bytes, std::size_t offset) {
    return load<T>(bytes.data() + offset);
}

/// Requires: field.end() <= bytes.size().
template <typename T>
T load(Bytes bytes, format::Field<T> field) {
    return load<T>(bytes.data() + field.offset);
}

/// Requires: field.end() <= bytes.size().
template <typename T>
void store(std::span<std::uint8_t> bytes, format::Field<T> field, std::type_identity_t<T> value) {
    std::memcpy(bytes.data() + field.offset, &value, sizeof value);
}

/// The number in all of `bytes`, most significant first, as index entries have it.
/// Requires: at most four bytes.
inline std::uint32_t loadBigEndian(Bytes bytes) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes) value = value << 8 | byte;
    return value;
}

/// Appends the lowest `size` bytes of a number, most significant first.
inline void appendBigEndian(std::vector<std::uint8_t>& bytes, std::uint32_t value,
                            std::size_t size) {
    for (std::size_t i = size; i-- > 0;) {
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

/// Appends the stored form of a value.
template <typename T>
void append(std::vector<std::uint8_t>& bytes, T value) {
    const auto* const at = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), at, at + sizeof value);
}

/// Reads a buffer from front to back; reading past its end is reported as damage on `page`.
class Reader {
public:
    Reader(Bytes bytes, PageNumber page) : bytes_{bytes}, page_{page} {}

    std::size_t position() const { return position_; }
    std::size_t remaining() const { return bytes_.size() - position_; }
    PageNumber page() const { return page_; }

    void seek(std::size_t position) {
        if (position > bytes_.size()) fail();
        position_ = position;
    }

    Bytes take(std::size_t count) {
        if (count > remaining()) fail();
        const Bytes taken = bytes_.subspan(position_, count);
        position_ += count;
        return taken;
    }

    template <typename T>
    T next() {
        return load<T>(take(sizeof(T)).data());
    }

private:
    [[noreturn]] void fail() const { throwDamaged(page_, "a structure runs past its end"); }

    Bytes bytes_;
    PageNumber page_;
    std::size_t position_ = 0;
};

}  // namespace jet
