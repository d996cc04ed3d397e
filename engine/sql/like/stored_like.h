// LIKE on texts as stored in the file: most are decided without decoding them.
//
//   sql::StoredLike like{sql::LikePattern{u"*timeout*"}};
//   if (like.matches(field.bytes)) use(field);
//
// Belongs to one thread.
#pragma once

#include "engine/jet/format/types.h"
#include "engine/sql/like/case_blind_search.h"
#include "engine/sql/like/like.h"

#include <optional>
#include <string>

namespace sql {

class StoredLike {
public:
    explicit StoredLike(LikePattern pattern,
                        CaseBlindSearch::Way way = CaseBlindSearch::Way::Fastest);

    /// The same result as for the text decoded by jet::appendUtf16.
    bool matches(jet::Bytes stored);

private:
    bool containsLiteral(jet::Bytes stored);

    LikePattern pattern_;
    std::optional<CaseBlindSearch> search_;  ///< for the pattern's literal, if it has one
    std::u16string text_;
};

}  // namespace sql
