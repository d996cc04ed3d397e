#include "engine/sql/like/stored_like.h"

#include "engine/jet/text.h"

#include <utility>

namespace sql {

StoredLike::StoredLike(LikePattern pattern, CaseBlindSearch::Way way)
    : pattern_{std::move(pattern)} {
    if (!pattern_.literal().empty()) search_.emplace(pattern_.literal(), way);
}

bool StoredLike::matches(jet::Bytes stored) {
    if (search_) {
        if (!containsLiteral(stored)) return false;
        if (pattern_.isContainment()) return true;
    }
    text_.clear();
    jet::appendUtf16(stored, text_);
    return pattern_.matches(text_);
}

bool StoredLike::containsLiteral(jet::Bytes stored) {
    if (!jet::isCompressedText(stored)) return search_->inWide(stored);
    const auto found = search_->inNarrow(stored.subspan(2));
    if (found != CaseBlindSearch::Found::Mixed) return found == CaseBlindSearch::Found::Yes;
    // Both forms in one text: what is wanted may begin in one and end in the other.
    text_.clear();
    jet::appendUtf16(stored, text_);
    return search_->inWide(
        {reinterpret_cast<const std::uint8_t*>(text_.data()), text_.size() * sizeof(char16_t)});
}

}  // namespace sql
