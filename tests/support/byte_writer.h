// Little-endian writes into buffers, for everything that lays out pages by hand.
//
//   fixture::ByteVector record;
//   fixture::append(record, std::uint16_t{9});
//   fixture::put(record, 0, std::uint16_t{10});
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace fixture {

using ByteVector = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Overwrites the bytes from `offset` on. Requires: the value fits behind `offset`.
template <typename T>
void put(std::span<std::uint8_t> bytes, std::size_t offset, T value) {
    std::memcpy(bytes.subspan(offset, sizeof value).data(), &value, sizeof value);
}

/// Requires: offset + sizeof(T) <= bytes.size().
template <typename T>
T get(ByteView bytes, std::size_t offset) {
    T value;
    std::memcpy(&value, bytes.subspan(offset, sizeof value).data(), sizeof value);
    return value;
}

template <typename T>
void append(ByteVector& bytes, T value) {
    const std::size_t offset = bytes.size();
    bytes.resize(offset + sizeof value);
    put(std::span{bytes}, offset, value);
}

inline void appendBytes(ByteVector& bytes, ByteView more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// The most significant byte first, as index entries have it.
inline void appendBigEndian(ByteVector& bytes, std::uint64_t value, unsigned size) {
    for (unsigned i = size; i-- > 0;) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

}  // namespace fixture
