#include "engine/ado/view_order.h"

namespace ado {

void ViewOrder::sort(RowSet& set, std::u16string_view sort) {
    auto columns = parseSort(sort, set.columns());
    rows_ = set.orders().order(set.rows(), columns);
    sort_ = sort;
    columns_ = std::move(columns);
}

bool ViewOrder::sortAgain(RowSet& set) {
    const auto& permutation = rows_.permutation();
    if (!permutation || permutation->count() == set.rows().count()) return false;
    try {
        rows_ = set.orders().order(set.rows(), columns_);
        return true;
    } catch (const jet::Error&) {
        return false;
    }
}

std::size_t ViewOrder::byteCount() const {
    const auto& permutation = rows_.permutation();
    return permutation ? permutation->byteCount() : 0;
}

}  // namespace ado
