#include "engine/ado/row_set.h"

#include "engine/ado/find_criterion.h"
#include "engine/ado/text_matches.h"

namespace ado {

RowSet::RowSet(std::shared_ptr<const sql::Query> query) : query_{std::move(query)} {
    if (query_->scannedTable()) {
        scanned_ = std::make_shared<ScannedRows>(query_);
        rows_ = scanned_;
        return;
    }
    const auto rows = std::make_shared<MaterialisedRows>(*query_);
    losses_ = rows->losses();
    rows_ = rows;
}

RowSet::~RowSet() = default;

std::uint32_t RowSet::expectedRows() const {
    return scanned_ ? scanned_->table().definition().rowCount : 0;
}

jet::Losses RowSet::losses() const {
    jet::Losses all = losses_;
    if (scanned_) all += scanned_->lostFields().losses();
    return all;
}

std::shared_ptr<TextMatches> RowSet::textMatches(const FindCriterion& criterion) {
    const std::u16string* const pattern = criterion.textPattern();
    if (pattern == nullptr || !scanned_) return nullptr;
    if (!textMatches_ || !textMatches_->isFor(criterion.column(), *pattern)) {
        textMatches_ = std::make_shared<TextMatches>(scanned_, criterion.column(), *pattern);
    }
    return textMatches_;
}

}  // namespace ado
