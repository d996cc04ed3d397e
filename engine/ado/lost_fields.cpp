#include "engine/ado/lost_fields.h"

#include "engine/jet/database.h"

namespace ado {

void LostFields::add(jet::RowId row, const jet::Column& column, const std::string& why) {
    if (!column.unreadable.empty()) return;
    const std::uint64_t field = std::uint64_t{row.packed()} << 16 | column.id;
    jet::Loss loss{jet::Loss::Kind::Values, row.page(), static_cast<int>(row.slot()), why};
    const std::lock_guard lock{mutex_};
    if (seen_.size() == kMaxFields || !seen_.insert(field).second) return;
    table_->database().noteLoss(loss);
    losses_.add(std::move(loss));
}

jet::Losses LostFields::losses() const {
    const std::lock_guard lock{mutex_};
    return losses_;
}

}  // namespace ado
