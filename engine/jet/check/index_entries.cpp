#include "engine/jet/check/index_entries.h"

#include "engine/jet/format/index_key.h"

#include <algorithm>
#include <utility>

namespace jet::checking {

EntryCheck::EntryCheck(Context& context, const TableDefinition& definition,
                       const PhysicalIndex& index, const LiveRows& rows, std::string name)
    : context_{context},
      definition_{definition},
      index_{index},
      rows_{rows},
      name_{std::move(name)},
      keys_{context, definition, index, rows, name_},
      seen_(rows.ids.size()) {
    for (const IndexColumn& part : index.columns) {
        nullKey_.push_back(format::index_key::flags(part.ascending).null);
    }
}

void EntryCheck::add(Bytes key, RowId row, PageNumber leaf) {
    ++context_.report.report().entries;
    checkRow(key, row, leaf);
    checkUnique(key, row);
}

void EntryCheck::checkRow(Bytes key, RowId row, PageNumber leaf) {
    const auto place = rows_.find(row);
    if (!place) {
        if (rows_.complete) {
            context_.report.error(
                Rule::IndexEntries, leaf,
                name_ + " has an entry for a row that does not exist: " + nameOf(row));
        }
        return;
    }
    if (seen_[*place]) {
        context_.report.error(Rule::IndexEntries, row, "the row has two entries in " + name_);
    } else if (!keys_.hasEntry(*place)) {
        context_.report.error(Rule::IndexEntries, row,
                              "the row has an entry in " + name_ + ", which leaves out nulls");
    } else if (!keys_.matches(*place, key)) {
        context_.report.error(
            Rule::IndexKey, row,
            "the row's key in " + name_ + ", on " + nameOf(leaf) + ", is not made of its values");
    }
    seen_[*place] = true;
}

void EntryCheck::checkUnique(Bytes key, RowId row) {
    const bool same = std::equal(key.begin(), key.end(), lastKey_.begin(), lastKey_.end());
    if (!same || distinct_ == 0) {
        ++distinct_;
        lastKey_.assign(key.begin(), key.end());
        return;
    }
    if (index_.unique && lastKey_ != nullKey_) {
        context_.report.error(Rule::UniqueKey, row,
                              "the row has the same key as another in " + name_);
    }
}

void EntryCheck::finish() {
    for (std::size_t place = 0; place < seen_.size(); ++place) {
        if (seen_[place] || !keys_.hasEntry(place)) continue;
        context_.report.error(Rule::IndexEntries, rows_.ids[place],
                              "the row has no entry in " + name_);
    }
    if (distinct_ > index_.distinctKeys) {
        context_.report.warning(Rule::IndexCounters, definition_.page,
                                name_ + " has " + std::to_string(distinct_) +
                                    " distinct keys, but the definition counts " +
                                    std::to_string(index_.distinctKeys));
    }
}

}  // namespace jet::checking
