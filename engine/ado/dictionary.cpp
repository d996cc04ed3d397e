#include "engine/ado/dictionary.h"

#include <algorithm>
#include <cstring>

namespace ado {
namespace {

constexpr std::size_t kFirstSlots = 64;
constexpr std::size_t kFirstBlock = 512;
constexpr std::size_t kLargestBlock = 16 * 1024;

/// A small table may have a dictionary of this size however few its rows are.
constexpr std::size_t kAlwaysAllowed = 8 * 1024;

/// After so many distinct texts it is clear whether texts repeat at all.
constexpr std::uint32_t kJudgedAt = 4096;

std::uint64_t loadWord(const std::uint8_t* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

std::uint64_t loadUpTo8(const std::uint8_t* at, std::size_t length) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, length);
    return word;
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * 0x9E37'79B9'7F4A'7C15u;  // 2^64 / golden ratio
    return hash ^ (hash >> 32);
}

std::uint64_t hashOf(jet::Bytes bytes) {
    std::uint64_t hash = bytes.size();
    const std::uint8_t* at = bytes.data();
    std::size_t left = bytes.size();
    for (; left > 8; left -= 8, at += 8) hash = mix(hash, loadWord(at));
    return left == 0 ? mix(hash, 0) : mix(hash, loadUpTo8(at, left));
}

std::uint32_t tagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 48) << 16; }

}  // namespace

Dictionary::Dictionary() : slots_(kFirstSlots) {}

std::optional<std::uint32_t> Dictionary::code(jet::Bytes stored, std::uint64_t rows,
                                              std::uint64_t seen) {
    const std::uint64_t hash = hashOf(stored);
    std::uint32_t* slot = &slotFor(stored, hash);
    if (*slot != 0) return (*slot & 0xFFFF) - 1;
    if (!worthAdding(stored, rows, seen)) return std::nullopt;
    const std::uint32_t code = size_.load(std::memory_order_relaxed);
    if (2 * (code + 1) > slots_.size()) {
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
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        std::uint32_t& slot = slots_[i];
        if (slot == 0) return slot;
        if ((slot & 0xFFFF'0000) != tagOf(hash)) continue;
        const Entry& entry = entries_[(slot & 0xFFFF) - 1];
        if (entry.length == bytes.size() && std::equal(bytes.begin(), bytes.end(), entry.bytes)) {
            return slot;
        }
    }
}

bool Dictionary::worthAdding(jet::Bytes bytes, std::uint64_t rows, std::uint64_t seen) const {
    const std::uint32_t size = size_.load(std::memory_order_relaxed);
    if (size >= kMostCodes) return false;
    if (size == kJudgedAt && seen < kJudgedAt + kJudgedAt / 2) return false;
    // Each text also takes its entry and two slots.
    const std::size_t cost = textBytes_ + bytes.size() + size * (sizeof(Entry) + 8);
    return cost <= std::max<std::uint64_t>(kAlwaysAllowed, std::max(rows, seen));
}

const std::uint8_t* Dictionary::keep(jet::Bytes bytes) {
    if (blocks_.empty() || blockUsed_ + bytes.size() > blockBytes_) {
        blockBytes_ = std::clamp(textBytes_, kFirstBlock, kLargestBlock);
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
    slots_.assign(slots_.size() * 2, 0);
    const std::uint32_t size = size_.load(std::memory_order_relaxed);
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
