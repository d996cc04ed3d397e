// Random numbers that are the same on every machine and with every standard library.
//
//   traces::Random random{42};
//   const std::uint32_t dice = random.between(1, 6);
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <span>

namespace traces {

class Random {
public:
    explicit Random(std::uint64_t seed) : state_{seed} {}

    /// SplitMix64.
    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }

    /// 0 to bound - 1. Requires: bound > 0.
    std::uint32_t below(std::uint32_t bound) {
        return static_cast<std::uint32_t>(((next() >> 32) * bound) >> 32);
    }

    std::uint32_t between(std::uint32_t least, std::uint32_t most) {
        return least + below(most - least + 1);
    }

    /// True once in `times`.
    bool oneIn(std::uint32_t times) { return below(times) == 0; }

    template <typename T>
    const T& pick(std::span<const T> choices) {
        return choices[below(static_cast<std::uint32_t>(choices.size()))];
    }

private:
    std::uint64_t state_;
};

}  // namespace traces
