// What each UTF-16 unit contributes to a text key: weights, and what follows them in the key.
//
//   const jet::CharacterWeight& letter = jet::CharacterWeights::general()[u'a'];
//
// The table is made at its first use and never changes; any thread may read it.
#pragma once

#include "engine/jet/format/types.h"

#include <array>
#include <vector>

namespace jet {

/// Which parts of a key a unit takes part in.
enum class WeightKind : std::uint8_t {
    Plain,     ///< a weight and nothing more; weight 0: no part at all
    Accented,  ///< detail: accent byte; also units of surrogate pairs
    Kana2,     ///< variants of kana; detail: accent byte or 0
    Kana3,
    Expanding,  ///< several weights; weight: place among the expansions
    Mark,       ///< no weight; detail is added to the accent of the letter before
    Hidden,     ///< no weight; hyphens, apostrophes, controls; detail: code
};

/// A weight is one or two bytes, held left-aligned: 0x4A00 is the single byte 4A. No first byte
/// begins both kinds, so weights compare as their bytes in a key do.
struct CharacterWeight {
    std::uint16_t weight = 0;
    WeightKind kind = WeightKind::Plain;
    std::uint8_t detail = 0;
};

/// Bytes of one weight in a key. Single bytes end at 78; of the pairs, only a few that begin
/// higher up have the second byte 0.
constexpr unsigned weightLength(std::uint16_t weight) {
    const bool second = (weight & 0xFFu) != 0 || weight >= 0x8000;
    return (weight != 0 ? 1u : 0u) + (second ? 1u : 0u);
}

/// A letter that stands for several, like the sharp s.
struct Expansion {
    std::array<std::uint16_t, 3> weights{};
    std::uint8_t weightCount = 0;
    std::array<std::uint8_t, 3> accents{};
    std::uint8_t accentCount = 0;
};

class CharacterWeights {
public:
    /// The "General" order, LCID 0x0409 version 0.
    static const CharacterWeights& general();

    const CharacterWeight& operator[](char16_t unit) const { return units_[unit]; }

    /// Requires: letter.kind is Expanding.
    const Expansion& expansion(const CharacterWeight& letter) const {
        return expansions_[letter.weight];
    }

private:
    CharacterWeights();

    std::vector<CharacterWeight> units_;  ///< one for each of the 65,536 units
    std::vector<Expansion> expansions_;
};

}  // namespace jet
