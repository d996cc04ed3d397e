#include "engine/ado/record_search.h"

namespace ado {

std::optional<std::int64_t> RecordSearch::find(FindCriterion& wanted, std::int64_t position,
                                               int direction) {
    const auto matches = set_->textMatches(wanted);
    if (matches) return findText(*matches, position, direction);
    return findRow(wanted, position, direction);
}

std::optional<std::int64_t> RecordSearch::findText(TextMatches& matches, std::int64_t position,
                                                   int direction) {
    const std::uint32_t count = set_->rows().count();
    const bool finished = connection_.runSearch([&](const std::atomic<bool>& stop) {
        position = matches.find(order_, position, count, direction, stop);
    });
    return finished ? std::optional{position} : std::nullopt;
}

std::int64_t RecordSearch::findRow(FindCriterion& wanted, std::int64_t position, int direction) {
    Rows& rows = set_->rows();
    const std::int64_t count = rows.count();
    const Pass pass{rows};
    while (position >= 0 && position < count &&
           !wanted.matches(rows, order_.rowAt(static_cast<std::uint32_t>(position)))) {
        position += direction;
    }
    return position;
}

}  // namespace ado
