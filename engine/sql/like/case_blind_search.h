// Case-insensitive substring search, by the rules of LIKE. Works on the bytes as stored in the
// file, sixteen at a time if the processor supports it.
//
//   const sql::CaseBlindSearch search{u"timeout"};
//   if (search.inWide(bytes)) use(bytes);
//
// Immutable; any thread may call it.
#pragma once

#include "engine/jet/format/types.h"

#include <array>
#include <string>
#include <string_view>

namespace sql {

/// Whether one of the bytes is zero.
bool containsZero(jet::Bytes bytes);

class CaseBlindSearch {
public:
    /// Portable is for processors without such instructions; the results are the same.
    enum class Way { Fastest, Portable };

    /// Requires: `wanted` is folded (foldCase) and not empty.
    explicit CaseBlindSearch(std::u16string_view wanted, Way way = Way::Fastest);

    enum class Found { No, Yes, Mixed };

    /// In text of one byte a character (all below U+0100). Mixed if a zero byte comes before the
    /// end of the match: what follows it is encoded differently.
    Found inNarrow(jet::Bytes text) const;

    /// In UTF-16LE; an odd last byte is ignored.
    bool inWide(jet::Bytes text) const;

private:
    /// A character of `wanted` and all that fold to it, in one of the two encodings.
    struct Anchor {
        std::size_t place = 0;
        std::array<char16_t, 8> variants{};  ///< padded with the first
        char16_t bit = 0;                    ///< what two variants differ in, if that is one bit
    };

    /// Two characters that are searched for before the others are compared.
    struct Anchors {
        Anchor first;
        Anchor second;
        bool oneBit = false;  ///< each has one variant, or two that differ in one bit
        bool eight = false;   ///< neither has more than eight variants
    };

    /// The first match; kNowhere if there is none, kMixed if there is none and a narrow text
    /// contains a zero byte.
    template <typename Unit>
    std::size_t find(jet::Bytes text, const Anchors& anchors) const;
    template <typename Unit, typename LaneAnchor>
    std::size_t findByLanes(jet::Bytes text, std::size_t starts, const Anchors& anchors) const;
    template <typename Unit>
    bool isAt(const std::uint8_t* text) const;
    template <typename Unit>
    char16_t foldedAt(const std::uint8_t* text) const;
    Anchors makeAnchors(std::size_t units) const;

    std::u16string wanted_;
    std::array<char16_t, 256> narrowFold_;
    bool fitsNarrow_;  ///< whether all characters have a variant below U+0100
    Way way_;
    Anchors narrow_;
    Anchors wide_;
};

}  // namespace sql
