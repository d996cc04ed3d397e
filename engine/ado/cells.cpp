#include "engine/ado/cells.h"

namespace ado {

bool Cells::contains(std::uint32_t position, std::size_t field) const {
    return position < set_.rows().count() && field < set_.columns().size();
}

jet::Value Cells::value(std::uint32_t position, std::size_t field) const {
    if (!contains(position, field)) return {};
    try {
        return set_.rows().value(order_.rowAt(position), field);
    } catch (const jet::Error&) {
        return {};
    }
}

bool Cells::text(std::uint32_t position, std::size_t field, const ValueFormatter& formatter,
                 std::u16string& out) const {
    out.clear();
    if (!contains(position, field)) return false;
    try {
        return set_.rows().appendText(order_.rowAt(position), field, formatter, out);
    } catch (const jet::Error&) {
        out.clear();
        return false;
    }
}

std::vector<std::uint32_t> Cells::ranks(std::size_t field) const {
    const std::uint32_t count = set_.rows().count();
    const std::vector<std::uint32_t> ranks = denseRanks(set_.rows(), field, count);
    std::vector<std::uint32_t> byPosition(count);
    for (std::uint32_t position = 0; position < count; ++position) {
        byPosition[position] = ranks[order_.rowAt(position)];
    }
    return byPosition;
}

void Cells::appendLine(std::uint32_t position, const ValueFormatter& formatter,
                       std::u16string_view delimiter, std::u16string_view nullText,
                       std::u16string& out) const {
    Rows& rows = set_.rows();
    const std::uint32_t row = order_.rowAt(position);
    for (std::size_t field = 0; field < set_.columns().size(); ++field) {
        if (field > 0) out.append(delimiter);
        const std::size_t before = out.size();
        rows.appendText(row, field, formatter, out);
        const bool maybeNull = out.size() == before && !nullText.empty();
        if (maybeNull && jet::isNull(rows.value(row, field))) out.append(nullText);
    }
}

}  // namespace ado
