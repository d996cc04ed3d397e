#include "engine/sql/like/case_blind_search.h"

#include "engine/jet/bytes.h"
#include "engine/sql/like/case_fold.h"

#include <algorithm>
#include <bit>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace sql {
namespace {

/// Folded, the most frequent in logs first; what is not listed is rarer.
constexpr std::u16string_view kFrequent = u" ETAOINRSLDCUPMFGHBYW0123456789.,:;_-KVX()/=\"'";

constexpr auto kNowhere = static_cast<std::size_t>(-1);
constexpr auto kMixed = static_cast<std::size_t>(-2);

std::size_t rarity(char16_t folded) {
    const std::size_t place = kFrequent.find(folded);
    return place == std::u16string_view::npos ? kFrequent.size() : place;
}

#ifdef __SSE2__

__m128i load16(const std::uint8_t* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

bool hasZero(__m128i bytes) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())) != 0;
}

/// Sixteen bytes as units of one or two bytes.
template <typename Unit>
struct Lanes;

template <>
struct Lanes<std::uint8_t> {
    static constexpr unsigned kEach = 0xFFFF;
    static __m128i repeat(char16_t unit) { return _mm_set1_epi8(static_cast<char>(unit)); }
    static __m128i equal(__m128i left, __m128i right) { return _mm_cmpeq_epi8(left, right); }
};

template <>
struct Lanes<char16_t> {
    static constexpr unsigned kEach = 0x5555;  ///< one bit a unit
    static __m128i repeat(char16_t unit) { return _mm_set1_epi16(static_cast<short>(unit)); }
    static __m128i equal(__m128i left, __m128i right) { return _mm_cmpeq_epi16(left, right); }
};

/// Finds one variant, or two that differ in one bit.
template <typename Unit>
class OneBitAnchor {
public:
    OneBitAnchor(const std::array<char16_t, 8>& variants, char16_t bit)
        : bit_{Lanes<Unit>::repeat(bit)},
          value_{Lanes<Unit>::repeat(static_cast<char16_t>(variants[0] | bit))} {}

    __m128i in(__m128i units) const {
        return Lanes<Unit>::equal(_mm_or_si128(units, bit_), value_);
    }

private:
    __m128i bit_;
    __m128i value_;
};

template <typename Unit>
class VariantsAnchor {
public:
    VariantsAnchor(const std::array<char16_t, 8>& variants, char16_t /*bit*/) {
        for (std::size_t i = 0; i < variants.size(); ++i) {
            variants_[i] = Lanes<Unit>::repeat(variants[i]);
        }
    }

    __m128i in(__m128i units) const {
        __m128i found = _mm_setzero_si128();
        for (const __m128i variant : variants_) {
            found = _mm_or_si128(found, Lanes<Unit>::equal(units, variant));
        }
        return found;
    }

private:
    __m128i variants_[8];
};

#endif

}  // namespace

bool containsZero(jet::Bytes bytes) {
    const std::uint8_t* at = bytes.data();
    const std::uint8_t* const end = at + bytes.size();
#ifdef __SSE2__
    if (bytes.size() >= 16) {
        __m128i least = load16(end - 16);
        for (; end - at >= 16; at += 16) least = _mm_min_epu8(least, load16(at));
        return hasZero(least);
    }
#endif
    return std::find(at, end, std::uint8_t{0}) != end;
}

CaseBlindSearch::CaseBlindSearch(std::u16string_view wanted, Way way) : wanted_{wanted}, way_{way} {
    for (std::size_t unit = 0; unit < narrowFold_.size(); ++unit) {
        narrowFold_[unit] = foldCase(static_cast<char16_t>(unit));
    }
    fitsNarrow_ = std::all_of(wanted_.begin(), wanted_.end(), [this](char16_t unit) {
        return std::find(narrowFold_.begin(), narrowFold_.end(), unit) != narrowFold_.end();
    });
    if (fitsNarrow_) narrow_ = makeAnchors(0x100);
    wide_ = makeAnchors(0x10000);
}

CaseBlindSearch::Anchors CaseBlindSearch::makeAnchors(std::size_t units) const {
    std::vector<std::size_t> places(wanted_.size());
    for (std::size_t i = 0; i < places.size(); ++i) places[i] = i;
    std::stable_sort(places.begin(), places.end(), [this](std::size_t left, std::size_t right) {
        return rarity(wanted_[left]) > rarity(wanted_[right]);
    });
    Anchors anchors;
    anchors.oneBit = anchors.eight = true;
    const auto fill = [&](Anchor& anchor, std::size_t place) {
        const auto variants = variantsOf(wanted_[place], units);
        anchor.place = place;
        anchor.variants.fill(variants.front());
        std::copy_n(variants.begin(), std::min(variants.size(), anchor.variants.size()),
                    anchor.variants.begin());
        const unsigned difference = unsigned{anchor.variants[0]} ^ unsigned { anchor.variants[1] };
        anchor.bit = static_cast<char16_t>(difference);
        if (variants.size() > 2 || std::popcount(difference) > 1) anchors.oneBit = false;
        if (variants.size() > anchor.variants.size()) anchors.eight = false;
    };
    fill(anchors.first, places.front());
    fill(anchors.second, places[std::min(places.size() - 1, std::size_t{1})]);
    return anchors;
}

CaseBlindSearch::Found CaseBlindSearch::inNarrow(jet::Bytes text) const {
    if (!fitsNarrow_) return containsZero(text) ? Found::Mixed : Found::No;
    const std::size_t place = find<std::uint8_t>(text, narrow_);
    if (place == kNowhere) return Found::No;
    if (place == kMixed) return Found::Mixed;
    return containsZero(text.first(place + wanted_.size())) ? Found::Mixed : Found::Yes;
}

bool CaseBlindSearch::inWide(jet::Bytes text) const {
    return find<char16_t>(text, wide_) != kNowhere;
}

template <typename Unit>
char16_t CaseBlindSearch::foldedAt(const std::uint8_t* text) const {
    if constexpr (sizeof(Unit) == 1) return narrowFold_[*text];
    return foldCase(jet::load<char16_t>(text));
}

template <typename Unit>
bool CaseBlindSearch::isAt(const std::uint8_t* text) const {
    for (const char16_t unit : wanted_) {
        if (foldedAt<Unit>(text) != unit) return false;
        text += sizeof(Unit);
    }
    return true;
}

template <typename Unit>
std::size_t CaseBlindSearch::find(jet::Bytes text, const Anchors& anchors) const {
    const std::size_t count = text.size() / sizeof(Unit);
    if (count < wanted_.size()) return kNowhere;
    const std::size_t starts = count - wanted_.size() + 1;
#ifdef __SSE2__
    if (way_ == Way::Fastest && starts >= 16 / sizeof(Unit) && anchors.eight) {
        return anchors.oneBit ? findByLanes<Unit, OneBitAnchor<Unit>>(text, starts, anchors)
                              : findByLanes<Unit, VariantsAnchor<Unit>>(text, starts, anchors);
    }
#endif
    const std::size_t place = anchors.first.place;
    for (std::size_t start = 0; start < starts; ++start) {
        const std::uint8_t* const at = text.data() + start * sizeof(Unit);
        if (foldedAt<Unit>(at + place * sizeof(Unit)) == wanted_[place] && isAt<Unit>(at)) {
            return start;
        }
    }
    return sizeof(Unit) == 1 && containsZero(text) ? kMixed : kNowhere;
}

#ifdef __SSE2__

/// The last step goes back as far as is needed to be a whole one.
template <typename Unit, typename LaneAnchor>
std::size_t CaseBlindSearch::findByLanes(jet::Bytes text, std::size_t starts,
                                         const Anchors& anchors) const {
    constexpr std::size_t kStep = 16 / sizeof(Unit);
    const LaneAnchor first{anchors.first.variants, anchors.first.bit};
    const LaneAnchor second{anchors.second.variants, anchors.second.bit};
    const std::uint8_t* const begin = text.data();
    const std::uint8_t* const ofFirst = begin + anchors.first.place * sizeof(Unit);
    const std::uint8_t* const ofSecond = begin + anchors.second.place * sizeof(Unit);
    const std::size_t last = (starts - kStep) * sizeof(Unit);
    __m128i least = load16(begin);
    // The text at the first place of these sixteen bytes where it stands; kNowhere otherwise.
    const auto placeIn = [&](std::size_t at) {
        __m128i both = first.in(load16(ofFirst + at));
        // Many variants are many comparisons, and mostly the first anchor is not there.
        if (sizeof(Unit) == 1 || _mm_movemask_epi8(both) != 0) {
            both = _mm_and_si128(both, second.in(load16(ofSecond + at)));
        }
        auto hits = static_cast<unsigned>(_mm_movemask_epi8(both)) & Lanes<Unit>::kEach;
        for (; hits != 0; hits &= hits - 1) {
            const std::size_t found = at + static_cast<std::size_t>(std::countr_zero(hits));
            if (isAt<Unit>(begin + found)) return found / sizeof(Unit);
        }
        if constexpr (sizeof(Unit) == 1) least = _mm_min_epu8(least, load16(begin + at));
        return kNowhere;
    };
    for (std::size_t at = 0; at < last; at += 16) {
        if (const std::size_t place = placeIn(at); place != kNowhere) return place;
    }
    if (const std::size_t place = placeIn(last); place != kNowhere) return place;
    if constexpr (sizeof(Unit) == 1) {
        // What stands behind the last place at which the text could begin.
        least = _mm_min_epu8(least, load16(begin + text.size() - 16));
        const bool zero =
            hasZero(least) || (wanted_.size() > 17 && containsZero(text.subspan(starts)));
        if (zero) return kMixed;
    }
    return kNowhere;
}

#endif

}  // namespace sql
