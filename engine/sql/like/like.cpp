#include "engine/sql/like/like.h"

#include "engine/sql/like/case_fold.h"
#include "engine/sql/values/error.h"

#include <algorithm>
#include <string>

namespace sql {

namespace {

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

}  // namespace

LikePattern::LikePattern(std::u16string_view pattern) {
    for (std::size_t at = 0; at < pattern.size();) {
        const char16_t c = pattern[at];
        if (c == u'[') {
            at = readList(pattern, at + 1);
            continue;
        }
        ++at;
        if (c == u'*') {
            const bool again = !elements_.empty() && elements_.back().kind == Kind::Run;
            if (!again) elements_.push_back({Kind::Run, 0, false, {}});
        } else if (c == u'?') {
            elements_.push_back({Kind::Any, 0, false, {}});
        } else if (c == u'#') {
            elements_.push_back({Kind::Digit, 0, false, {}});
        } else {
            const char16_t before = at > 1 ? pattern[at - 2] : u'\0';
            elements_.push_back({Kind::Character, foldCase(before, c), false, {}});
        }
    }
    findLiteral();
}

void LikePattern::findLiteral() {
    std::u16string stretch;
    char16_t before = 0;
    for (const Element& element : elements_) {
        // What folds only together with the unit before it cannot be looked for by itself.
        const bool alone = !hasCases(before, element.character);
        before = element.character;
        if (element.kind != Kind::Character || !alone) {
            stretch.clear();
            continue;
        }
        stretch.push_back(element.character);
        if (stretch.size() > literal_.size()) literal_ = stretch;
    }
    containment_ = !literal_.empty() && elements_.size() == literal_.size() + 2 &&
                   elements_.front().kind == Kind::Run && elements_.back().kind == Kind::Run;
}

/// Reads the list whose first character is at `at`; gives the place behind its bracket. An empty
/// list is no element at all.
std::size_t LikePattern::readList(std::u16string_view pattern, std::size_t at) {
    const std::size_t end = pattern.find(u']', at);
    if (end == std::u16string_view::npos) {
        throw Error{Fault::Syntax, "Invalid pattern string: a list is not closed."};
    }
    Element list{Kind::List, 0, false, {}};
    list.negated = pattern[at] == u'!' && at + 1 < end;
    if (list.negated) ++at;
    while (at < end) {
        const char16_t first = pattern[at++];
        char16_t last = first;
        if (at + 1 < end && pattern[at] == u'-') {
            last = pattern[at + 1];
            at += 2;
        }
        if (first > last) throw Error{Fault::Syntax, "Invalid pattern string: a range is empty."};
        list.ranges.emplace_back(foldCase(first), foldCase(last));
    }
    if (!list.ranges.empty()) elements_.push_back(std::move(list));
    return end + 1;
}

bool LikePattern::matchesOne(const Element& element, std::u16string_view text, std::size_t at) {
    const char16_t c = text[at];
    switch (element.kind) {
        case Kind::Character:
            return foldCase(at > 0 ? text[at - 1] : u'\0', c) == element.character;
        case Kind::Digit:
            return isDigit(c);
        case Kind::List: {
            const char16_t folded = foldCase(c);
            const bool listed = std::any_of(
                element.ranges.begin(), element.ranges.end(),
                [folded](auto range) { return folded >= range.first && folded <= range.second; });
            return listed != element.negated;
        }
        default:
            return true;
    }
}

/// Goes back to the latest run only, which is enough: an earlier one could take no more than that.
bool LikePattern::matches(std::u16string_view text) const {
    constexpr auto kNone = static_cast<std::size_t>(-1);
    std::size_t at = 0;
    std::size_t element = 0;
    std::size_t afterRun = kNone;
    std::size_t runEnd = 0;
    while (at < text.size()) {
        if (element < elements_.size() && elements_[element].kind == Kind::Run) {
            afterRun = ++element;
            runEnd = at;
        } else if (element < elements_.size() && matchesOne(elements_[element], text, at)) {
            ++element;
            ++at;
        } else if (afterRun != kNone) {
            element = afterRun;
            at = ++runEnd;
        } else {
            return false;
        }
    }
    while (element < elements_.size() && elements_[element].kind == Kind::Run) ++element;
    return element == elements_.size();
}

}  // namespace sql
