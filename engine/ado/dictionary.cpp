#include "engine/ado/dictionary.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace ado {
namespace {

constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kFirstBlock = 512;
constexpr std::size_t kMaxBlockBytes = 16 * 1024;

/// A small table may have a dictionary of this size however few its rows are.
constexpr std::size_t kAlwaysAllowed = 8 * 1024;

/// After so many distinct texts it is clear whether texts repeat at all.
constexpr std::uint32_t kJudgedAt = 4096;

template <typename Word>
std::uint64_t load(const std::uint8_t* at) {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

/// Up to 8 bytes as one number, by two reads that overlap.
std::uint64_t loadShort(const std::uint8_t* at, std::size_t length) {
    if (length >= 4) return load<std::uint32_t>(at) << 32 | load<std::uint32_t>(at + length - 4);
    if (length >= 2) return load<std::uint16_t>(at) << 16 | load<std::uint16_t>(at + length - 2);
    return length == 1 ? at[0] : 0;
}

// Odd numbers without a pattern.
constexpr std::uint64_t kFirstFactor = 0x9E37'79B9'7F4A'7C15u;
constexpr std::uint64_t kSecondFactor = 0xC2B2'AE3D'27D4'EB4Fu;
constexpr std::uint64_t kThirdFactor = 0x1656'67B1'9E37'79F9u;

/// Three words that overlap cover a text of this length; most are no longer.
constexpr std::size_t kThreeWords = 24;

std::uint64_t firstWord(const std::uint8_t* at) { return load<std::uint64_t>(at); }
std::uint64_t middleWord(const std::uint8_t* at, std::size_t length) {
    return load<std::uint64_t>(at + (length - 8) / 2);
}
std::uint64_t lastWord(const std::uint8_t* at, std::size_t length) {
    return load<std::uint64_t>(at + length - 8);
}

std::uint64_t hashOf(jet::Bytes bytes) {
    const std::uint8_t* at = bytes.data();
    const std::size_t length = bytes.size();
    std::uint64_t hash = length * kThirdFactor;
    if (length < 8) {
        hash ^= loadShort(at, length) * kFirstFactor;
    } else {
        // Products that do not wait for each other.
        hash ^= firstWord(at) * kFirstFactor;
        hash += std::rotl(middleWord(at, length) * kThirdFactor, 42);
        hash ^= std::rotl(lastWord(at, length) * kSecondFactor, 21);
        for (std::size_t i = 8; length > kThreeWords && i + 8 < length; i += 8) {
            hash = (hash ^ load<std::uint64_t>(at + i)) * kFirstFactor;
            hash ^= hash >> 29;
        }
    }
    hash = (hash ^ (hash >> 32)) * kFirstFactor;
    return hash ^ (hash >> 32);
}

/// Texts are short: a call of memcmp would cost more than the comparison.
bool sameBytes(const std::uint8_t* left, const std::uint8_t* right, std::size_t length) {
    if (length < 8) return loadShort(left, length) == loadShort(right, length);
    if (length > kThreeWords) return std::memcmp(left, right, length) == 0;
    return firstWord(left) == firstWord(right) &&
           middleWord(left, length) == middleWord(right, length) &&
           lastWord(left, length) == lastWord(right, length);
}

/// Small dictionaries have room enough that hardly any text stands in another one's slot.
std::size_t slotsFor(std::uint32_t texts) { return std::size_t{texts} * (texts < 1024 ? 8 : 2); }

std::uint32_t tagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 48) << 16; }

}  // namespace

Dictionary::Dictionary() : slots_(kFirstSlots) {}

std::uint32_t Dictionary::code(jet::Bytes stored, std::uint64_t rows, std::uint64_t seen) {
    const std::uint64_t hash = hashOf(stored);
    std::uint32_t* slot = &slotFor(stored, hash);
    if (*slot != 0) return (*slot & 0xFFFF) - 1;
    if (!worthAdding(stored, rows, seen)) return kNoCode;
    const std::uint32_t code = size_.load(std::memory_order_relaxed);
    if (slotsFor(code + 1) > slots_.size()) {
        grow();
        slot = &slotFor(stored, hash);
    }
    entries_.reserve(code);
    entries_[code] = {keep(stored), static_cast<std::uint32_t>(stored.size())};
    *slot = tagOf(hash) | (code + 1);
    size_.store(code + 1, std::memory_order_release);
    return code;
}

/// The slot that holds `stored`, or the empty one that it belongs into.
std::uint32_t& Dictionary::slotFor(jet::Bytes bytes, std::uint64_t hash) {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t i = static_cast<std::size_t>(hash) & mask;; i = (i + 1) & mask) {
        std::uint32_t& slot = slots_[i];
        if (slot == 0) return slot;
        if ((slot & 0xFFFF'0000) != tagOf(hash)) continue;
        const Entry& entry = entries_[(slot & 0xFFFF) - 1];
        if (entry.length == bytes.size() && sameBytes(entry.bytes, bytes.data(), bytes.size())) {
            return slot;
        }
    }
}

bool Dictionary::worthAdding(jet::Bytes bytes, std::uint64_t rows, std::uint64_t seen) const {
    const std::uint32_t size = size_.load(std::memory_order_relaxed);
    if (size >= kMaxCodes) return false;
    if (size == kJudgedAt && seen < kJudgedAt + kJudgedAt / 2) return false;
    // Each text also takes its entry and two slots.
    const std::size_t cost = textBytes_ + bytes.size() + size * (sizeof(Entry) + 8);
    return cost <= std::max<std::uint64_t>(kAlwaysAllowed, std::max(rows, seen));
}

const std::uint8_t* Dictionary::keep(jet::Bytes bytes) {
    if (blocks_.empty() || blockUsed_ + bytes.size() > blockBytes_) {
        blockBytes_ = std::clamp(textBytes_, kFirstBlock, kMaxBlockBytes);
        blockBytes_ = std::max(blockBytes_, bytes.size());
        blocks_.push_back(std::make_unique<std::uint8_t[]>(blockBytes_));
        blockUsed_ = 0;
    }
    std::uint8_t* place = blocks_.back().get() + blockUsed_;
    std::copy(bytes.begin(), bytes.end(), place);
    blockUsed_ += bytes.size();
    textBytes_ += bytes.size();
    return place;
}

void Dictionary::grow() {
    const std::uint32_t size = size_.load(std::memory_order_relaxed);
    slots_.assign(std::bit_ceil(slotsFor(size + 1)), 0);
    for (std::uint32_t code = 0; code < size; ++code) {
        const std::uint64_t hash = hashOf(stored(code));
        slotFor(stored(code), hash) = tagOf(hash) | (code + 1);
    }
}

std::size_t Dictionary::byteCount() const {
    return sizeof *this + entries_.byteCount() + slots_.size() * sizeof(std::uint32_t) +
           textBytes_ + blocks_.size() * (sizeof(void*) + 16) + (blockBytes_ - blockUsed_);
}

}  // namespace ado
