#include "engine/ado/radix_sort.h"

#include <algorithm>
#include <bit>

namespace ado {
namespace {

/// A key that fits 32 bits and its row, in one word.
struct Narrow {
    std::uint64_t word;

    Narrow() = default;
    Narrow(std::uint64_t key, std::uint32_t row) : word{(key << 32) | row} {}
    std::uint64_t key() const { return word >> 32; }
    std::uint32_t row() const { return static_cast<std::uint32_t>(word); }
};

struct Wide {
    std::uint64_t whole;
    std::uint32_t number;

    Wide() = default;
    Wide(std::uint64_t key, std::uint32_t row) : whole{key}, number{row} {}
    std::uint64_t key() const { return whole; }
    std::uint32_t row() const { return number; }
};

/// 4096 counters stay in the processor's first cache.
constexpr unsigned kMaxDigitBits = 12;

template <typename Item>
void sortDigit(const std::vector<Item>& from, std::vector<Item>& to, unsigned shift,
               unsigned bits) {
    const auto digit = [mask = (std::uint64_t{1} << bits) - 1, shift](const Item& item) {
        return static_cast<std::size_t>((item.key() >> shift) & mask);
    };
    std::vector<std::uint32_t> start(std::size_t{1} << bits);
    for (const Item& item : from) ++start[digit(item)];
    std::uint32_t sum = 0;
    for (std::uint32_t& place : start) {
        const std::uint32_t count = place;
        place = sum;
        sum += count;
    }
    for (const Item& item : from) to[start[digit(item)]++] = item;
}

/// Digit by digit, the lowest first.
template <typename Item>
void sortItems(const std::vector<std::uint64_t>& keys, std::uint64_t least, unsigned keyBits,
               std::vector<std::uint32_t>& rows) {
    std::vector<Item> items(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) items[i] = {keys[rows[i]] - least, rows[i]};
    std::vector<Item> other(rows.size());
    const unsigned passes = (keyBits + kMaxDigitBits - 1) / kMaxDigitBits;
    const unsigned digitBits = (keyBits + passes - 1) / passes;
    for (unsigned shift = 0; shift < keyBits; shift += digitBits) {
        sortDigit(items, other, shift, std::min(digitBits, keyBits - shift));
        items.swap(other);
    }
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = items[i].row();
}

}  // namespace

void sortByKey(const std::vector<std::uint64_t>& keys, std::vector<std::uint32_t>& rows) {
    const auto inOrder = [&](std::uint32_t left, std::uint32_t right) {
        return keys[left] < keys[right];
    };
    if (std::is_sorted(rows.begin(), rows.end(), inOrder)) return;
    const auto [least, most] = std::minmax_element(keys.begin(), keys.end());
    const auto keyBits = static_cast<unsigned>(std::bit_width(*most - *least));
    if (keyBits <= 32) {
        sortItems<Narrow>(keys, *least, keyBits, rows);
    } else {
        sortItems<Wide>(keys, *least, keyBits, rows);
    }
}

}  // namespace ado
