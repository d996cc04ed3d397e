// Patterns of LIKE: * any characters, ? one character, # one digit, [a-z] one of these,
// [!a-z] none of these; the case of letters is ignored.
//
//   sql::LikePattern pattern{u"[a-c]*#"};
//   if (pattern.matches(u"Beta 7")) use(text);
//
// A pattern is immutable; any thread may use it.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sql {

class LikePattern {
public:
    /// Throws Error{Syntax} for an unclosed list or a descending range.
    explicit LikePattern(std::u16string_view pattern);

    bool matches(std::u16string_view text) const;

    /// The longest substring that every match contains, each character folded by itself (foldCase);
    /// empty if there is none.
    const std::u16string& literal() const { return literal_; }

    /// Whether a text matches exactly if it contains literal().
    bool isContainment() const { return containment_; }

private:
    enum class Kind { Character, Any, Digit, List, Run };

    struct Element {
        Kind kind = Kind::Character;
        char16_t character = 0;  ///< folded
        bool negated = false;
        std::vector<std::pair<char16_t, char16_t>> ranges;  ///< folded at both ends
    };

    static bool matchesOne(const Element& element, std::u16string_view text, std::size_t at);
    std::size_t readList(std::u16string_view pattern, std::size_t at);
    void findLiteral();

    std::vector<Element> elements_;
    std::u16string literal_;
    bool containment_ = false;
};

}  // namespace sql
