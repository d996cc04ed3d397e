// Little-endian reads out of byte views.
//
//   const auto length = jet::load<std::uint16_t>(page, 12);
//
//   jet::Reader reader{bytes, number};
//   reader.seek(63);
//   const auto id = reader.next<std::uint16_t>();
//
// The load functions trust their offset: check the length once at the border (a page, a record,
// a table definition) and read freely inside. `Reader` is the checked cursor for what has no
// fixed shape. Any thread may call the functions; a Reader belongs to one thread.
#pragma once

#include "engine/jet/error.h"
#include "engine/jet/format/types.h"

#include <bit>
#include <cstring>
#include <string>

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

/// Walks a buffer from front to back; running past its end is damage on `page`.
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
