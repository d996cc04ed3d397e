#include "engine/sql/run/byte_map.h"

#include "engine/jet/bytes.h"

#include <algorithm>

namespace sql {

namespace {

constexpr std::size_t kFirstSlots = 256;
constexpr std::size_t kMaxEntries = 65536;
constexpr std::size_t kMaxBytes = std::size_t{4} << 20;

/// Eight bytes at a time, mixed by a multiplication whose high half flows back into the low one.
std::uint64_t hashOf(jet::Bytes bytes) {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15u;
    std::uint64_t hash = bytes.size() * kFactor;
    const auto mix = [&hash](std::uint64_t word) {
        hash = (hash ^ word) * kFactor;
        hash ^= hash >> 32;
    };
    std::size_t at = 0;
    for (; at + 8 <= bytes.size(); at += 8) mix(jet::load<std::uint64_t>(bytes, at));
    std::uint64_t rest = 0;
    for (; at < bytes.size(); ++at) rest = rest << 8 | bytes[at];
    mix(rest);
    return hash;
}

}  // namespace

ByteMap::ByteMap() : slots_(kFirstSlots) {}

std::size_t ByteMap::place(jet::Bytes bytes, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = static_cast<std::size_t>(hash) & mask;; at = (at + 1) & mask) {
        const Slot& slot = slots_[at];
        if (!slot.used) return at;
        if (slot.hash == hash && slot.length == bytes.size() &&
            std::equal(bytes.begin(), bytes.end(), bytes_.data() + slot.offset)) {
            return at;
        }
    }
}

const std::uint32_t* ByteMap::find(jet::Bytes bytes) const {
    const Slot& slot = slots_[place(bytes, hashOf(bytes))];
    return slot.used ? &slot.value : nullptr;
}

void ByteMap::insert(jet::Bytes bytes, std::uint32_t value) {
    full_ = size_ == kMaxEntries || bytes_.size() + bytes.size() > kMaxBytes;
    if (full_) return;
    if (2 * (size_ + 1) > slots_.size()) grow();
    const std::uint64_t hash = hashOf(bytes);
    slots_[place(bytes, hash)] = {hash, static_cast<std::uint32_t>(bytes_.size()),
                                  static_cast<std::uint32_t>(bytes.size()), value, true};
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    ++size_;
}

void ByteMap::grow() {
    std::vector<Slot> larger(2 * slots_.size());
    for (const Slot& slot : slots_) {
        if (!slot.used) continue;
        std::size_t at = static_cast<std::size_t>(slot.hash) & (larger.size() - 1);
        while (larger[at].used) at = (at + 1) & (larger.size() - 1);
        larger[at] = slot;
    }
    slots_ = std::move(larger);
}

}  // namespace sql
