#include "engine/jet/collation.h"

#include "engine/jet/collation_weights.h"
#include "engine/jet/format/index_key.h"

#include <algorithm>
#include <array>
#include <memory_resource>
#include <span>

namespace jet {
namespace {

namespace layout = format::index_key;

std::u16string_view withoutTrailingBlanks(std::u16string_view text) {
    const std::size_t last = text.find_last_not_of(u' ');
    return text.substr(0, last == std::u16string_view::npos ? 0 : last + 1);
}

/// Whether a unit leaves a trace behind the weights.
bool hasTail(const CharacterWeights& weights, const CharacterWeight& unit) {
    if (unit.kind == WeightKind::Plain) return false;
    return unit.kind != WeightKind::Expanding || weights.expansion(unit).accentCount > 0;
}

/// Whether a unit is one weight and nothing more.
bool isOneWeight(const CharacterWeight& unit) {
    return unit.kind == WeightKind::Plain && unit.weight != 0;
}

/// The part of a key behind the weights: accents, variants of kana, hidden characters.
/// Every place in it is counted in weights.
class Tail {
public:
    Tail() = default;
    Tail(const Tail&) = delete;
    Tail& operator=(const Tail&) = delete;

    /// Takes in the units of a text from front to back.
    void add(const CharacterWeights& weights, const CharacterWeight& unit) {
        switch (unit.kind) {
            case WeightKind::Plain:
                break;
            case WeightKind::Kana2:
                addKana(layout::kKanaRare, unit.detail);
                break;
            case WeightKind::Kana3:
                addKana(layout::kKanaUsual, unit.detail);
                break;
            case WeightKind::Accented:
                addAccents({&unit.detail, 1});
                break;
            case WeightKind::Mark:
                addMark(unit.detail);
                return;
            case WeightKind::Hidden:
                addHidden(unit.detail);
                return;
            case WeightKind::Expanding: {
                const Expansion& expansion = weights.expansion(unit);
                addAccents({expansion.accents.data(), expansion.accentCount});
                position_ += expansion.weightCount;
                return;
            }
        }
        if (unit.weight != 0) ++position_;
    }

    template <typename Key>
    void appendTo(Key& key) const {
        const auto accentsEnd =
            std::find_if(accents_.rbegin(), accents_.rend(), [](unsigned accent) {
                return accent > layout::kNoAccent;
            }).base();
        key.insert(key.end(), accents_.begin(), accentsEnd);
        if (hidden_.empty() && kana_.empty()) return;
        key.insert(key.end(), 2, static_cast<typename Key::value_type>(layout::kSeparator));
        if (!kana_.empty()) appendKana(key);
        if (hidden_.empty()) return;
        key.push_back(layout::kSeparator);
        key.insert(key.end(), hidden_.begin(), hidden_.end());
    }

private:
    void padAccents() {
        touched_ = true;
        if (accentsUpTo_ >= position_) return;
        accents_.insert(accents_.end(), position_ - accentsUpTo_, layout::kNoAccent);
        accentsUpTo_ = position_;
    }

    void addAccents(std::span<const std::uint8_t> bytes) {
        if (bytes.empty()) return;
        padAccents();
        accents_.insert(accents_.end(), bytes.begin(), bytes.end());
        accentsUpTo_ += bytes.size();
    }

    void addMark(std::uint8_t value) {
        padAccents();
        if (accents_.empty()) {
            accents_.push_back(value);
            beforeFirst_ = 1;
        } else {
            accents_.back() = static_cast<std::uint8_t>(accents_.back() + value);
        }
    }

    void addKana(std::uint8_t flag, std::uint8_t accent) {
        kana_.push_back(flag);
        if (accent != 0) addAccents({&accent, 1});
    }

    void addHidden(std::uint8_t code) {
        const std::size_t place =
            touched_ ? accents_.size() + position_ - accentsUpTo_ - beforeFirst_ : position_;
        const auto stored = layout::hiddenPlace(place);
        const std::array<std::uint8_t, 4> bytes{static_cast<std::uint8_t>(stored >> 8),
                                                static_cast<std::uint8_t>(stored),
                                                layout::kHiddenMark, code};
        hidden_.insert(hidden_.end(), bytes.begin(), bytes.end());
    }

    template <typename Key>
    void appendKana(Key& key) const {
        std::size_t count = kana_.size();
        while (count > 0 && kana_[count - 1] == layout::kKanaUsual) --count;
        const auto flag = [&](std::size_t i) { return i < count ? unsigned{kana_[i]} : 0u; };
        for (std::size_t i = 0; i < count; i += layout::kKanaPerByte) {
            const unsigned packed = layout::kanaByte(flag(i), flag(i + 1), flag(i + 2));
            key.push_back(static_cast<typename Key::value_type>(packed));
        }
        key.insert(key.end(), layout::kAfterKana.begin(), layout::kAfterKana.end());
        if (!hidden_.empty()) {
            key.push_back(static_cast<typename Key::value_type>(layout::kBeforeHidden));
        }
    }

    // Room for the tail of an ordinary text, so that none is asked of the heap.
    std::array<std::byte, 2048> space_;
    std::pmr::monotonic_buffer_resource memory_{space_.data(), space_.size()};
    std::pmr::vector<std::uint8_t> accents_{&memory_};  ///< one byte a weight, up to accentsUpTo_
    std::pmr::vector<std::uint8_t> hidden_{&memory_};   ///< four bytes a hidden unit
    std::pmr::vector<std::uint8_t> kana_{&memory_};     ///< one flag a unit
    std::size_t position_ = 0;                          ///< weights so far
    std::size_t accentsUpTo_ = 0;                       ///< weights that accents_ speaks of
    std::size_t beforeFirst_ = 0;                       ///< 1 if a mark precedes the first weight
    bool touched_ = false;                              ///< an accent or mark was met
};

/// Units whose weights are made in one go, and the bytes of a unit at most.
constexpr std::size_t kBlockUnits = 128;
constexpr std::size_t kMaxUnitLength = 6;

/// The weights of some units as bytes.
class WeightBlock {
public:
    /// Requires: at most kBlockUnits units. Returns whether one of them has a tail.
    bool fill(const CharacterWeights& weights, std::u16string_view text) {
        end_ = bytes_.data();
        unsigned tail = 0;
        for (const char16_t unit : text) {
            const CharacterWeight& weight = weights[unit];
            if (weight.kind == WeightKind::Plain) {
                put(weight.weight);
                continue;
            }
            tail |= hasTail(weights, weight) ? 1u : 0u;
            if (weight.kind == WeightKind::Expanding) {
                for (const std::uint16_t each : weights.expansion(weight).weights) put(each);
            } else {
                put(weight.weight);
            }
        }
        return tail != 0;
    }

    const std::uint8_t* begin() const { return bytes_.data(); }
    const std::uint8_t* end() const { return end_; }

private:
    /// Writes both bytes and keeps those that count.
    void put(std::uint16_t weight) {
        end_[0] = static_cast<std::uint8_t>(weight >> 8);
        end_[1] = static_cast<std::uint8_t>(weight);
        end_ += weightLength(weight);
    }

    std::array<std::uint8_t, kBlockUnits * kMaxUnitLength + 2> bytes_;
    std::uint8_t* end_ = bytes_.data();
};

template <typename Key>
void appendTail(const CharacterWeights& weights, std::u16string_view text, Key& key) {
    Tail tail;
    for (const char16_t unit : text) tail.add(weights, weights[unit]);
    tail.appendTo(key);
}

/// The ascending form of a text without trailing blanks.
template <typename Key>
void appendAscending(std::u16string_view text, Key& key) {
    const CharacterWeights& weights = CharacterWeights::general();
    WeightBlock block;
    bool tail = false;
    for (std::size_t at = 0; at < text.size(); at += kBlockUnits) {
        tail |= block.fill(weights, text.substr(at, kBlockUnits));
        key.insert(key.end(), block.begin(), block.end());
    }
    key.push_back(layout::kSeparator);
    if (tail) appendTail(weights, text, key);
    key.push_back(layout::kEnd);
}

/// The weights of a text one after the other, then zeros.
class WeightWalk {
public:
    WeightWalk(const CharacterWeights& weights, std::u16string_view text)
        : weights_{weights}, text_{text} {}

    std::uint16_t next() {
        if (expanded_ != nullptr) {
            const std::uint16_t weight = expandedAt_ < expanded_->weightCount
                                             ? expanded_->weights[expandedAt_++]
                                             : std::uint16_t{0};
            if (weight != 0) return weight;
            expanded_ = nullptr;
        }
        while (at_ < text_.size()) {
            const CharacterWeight& unit = weights_[text_[at_++]];
            tail_ |= hasTail(weights_, unit);
            if (unit.kind == WeightKind::Expanding) {
                expanded_ = &weights_.expansion(unit);
                expandedAt_ = 1;
                return expanded_->weights[0];
            }
            if (unit.weight != 0) return unit.weight;
        }
        return 0;
    }

    /// Whether a unit passed so far leaves a trace behind the weights.
    bool tail() const { return tail_; }

private:
    const CharacterWeights& weights_;
    std::u16string_view text_;
    std::size_t at_ = 0;
    const Expansion* expanded_ = nullptr;
    std::size_t expandedAt_ = 0;
    bool tail_ = false;
};

std::strong_ordering compareTails(const CharacterWeights& weights, std::u16string_view left,
                                  std::u16string_view right) {
    std::array<std::byte, 2048> space;
    std::pmr::monotonic_buffer_resource memory{space.data(), space.size()};
    std::pmr::vector<std::uint8_t> leftTail{&memory};
    std::pmr::vector<std::uint8_t> rightTail{&memory};
    appendTail(weights, left, leftTail);
    appendTail(weights, right, rightTail);
    // The end of a key takes part.
    leftTail.push_back(layout::kEnd);
    rightTail.push_back(layout::kEnd);
    return std::lexicographical_compare_three_way(leftTail.begin(), leftTail.end(),
                                                  rightTail.begin(), rightTail.end());
}

}  // namespace

void appendTextKey(std::u16string_view text, bool ascending, std::vector<std::uint8_t>& key) {
    const auto start = static_cast<std::ptrdiff_t>(key.size());
    appendAscending(withoutTrailingBlanks(text), key);
    if (ascending) return;
    std::transform(key.begin() + start, key.end(), key.begin() + start,
                   [](unsigned byte) { return static_cast<std::uint8_t>(~byte); });
    key.push_back(layout::kEnd);
}

std::string textKey(std::u16string_view text) {
    std::string key;
    key.reserve(text.size() + text.size() / 4 + 2);  // most weights are one byte
    appendAscending(withoutTrailingBlanks(text), key);
    return key;
}

std::strong_ordering compareText(std::u16string_view left, std::u16string_view right) {
    left = withoutTrailingBlanks(left);
    right = withoutTrailingBlanks(right);
    const CharacterWeights& weights = CharacterWeights::general();

    // As long as units are single weights, no walk is needed.
    std::size_t common = 0;
    for (const std::size_t end = std::min(left.size(), right.size()); common < end; ++common) {
        if (left[common] == right[common]) continue;
        const CharacterWeight& ofLeft = weights[left[common]];
        const CharacterWeight& ofRight = weights[right[common]];
        if (!isOneWeight(ofLeft) || !isOneWeight(ofRight)) break;
        if (ofLeft.weight != ofRight.weight) return ofLeft.weight <=> ofRight.weight;
    }

    WeightWalk leftWalk{weights, left.substr(common)};
    WeightWalk rightWalk{weights, right.substr(common)};
    std::uint16_t leftWeight = 0;
    do {
        leftWeight = leftWalk.next();
        const std::uint16_t rightWeight = rightWalk.next();
        if (leftWeight != rightWeight) return leftWeight <=> rightWeight;
    } while (leftWeight != 0);

    // What the common beginning leaves behind the weights is the same on both sides.
    if (!leftWalk.tail() && !rightWalk.tail()) return std::strong_ordering::equal;
    return compareTails(weights, left, right);
}

}  // namespace jet
