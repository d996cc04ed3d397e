#include "engine/jet/database.h"
#include "engine/jet/text.h"
#include "engine/jet/write/table_writer.h"
#include "engine/sql/bind/binder.h"
#include "engine/sql/run/assignment.h"
#include "engine/sql/run/byte_map.h"
#include "engine/sql/run/change.h"
#include "engine/sql/run/filter.h"
#include "engine/sql/run/stored_key.h"
#include "engine/sql/values/error.h"

#include <algorithm>
#include <deque>

namespace sql {

namespace {

/// The new values of one column. A value that depends on what stands in the record is made once for
/// all rows that are alike in that, as long as there are few kinds.
class NewValue {
public:
    NewValue(const jet::Table& table, std::size_t place, ExpressionPtr expression)
        : place_{place},
          column_{table.definition().columns[place]},
          expression_{std::move(expression)},
          inputs_{columnsOf(*expression_)},
          remember_{haveStoredKeys(inputs_)} {}

    std::size_t place() const { return place_; }

    jet::Value of(Row& row) {
        if (!remember_) return make(row);
        makeStoredKey(*row.record, inputs_, key_);
        if (const std::uint32_t* known = known_.find(key_)) return values_[*known];
        jet::Value value = make(row);
        known_.insert(key_, static_cast<std::uint32_t>(values_.size()));
        if (known_.size() > values_.size()) values_.push_back(value);
        return value;
    }

private:
    jet::Value make(Row& row) const { return toColumnValue(expression_->evaluate(row), column_); }

    std::size_t place_;
    const jet::Column& column_;
    ExpressionPtr expression_;
    Columns inputs_;
    bool remember_;
    ByteMap known_;
    std::deque<jet::Value> values_;
    OrderKey key_;
};

/// A change is not based on what cannot be read.
void requireReadable(const std::vector<jet::LostField>& lost, const jet::Record& record) {
    if (!lost.empty()) throw jet::Error{jet::Fault::Damaged, lost.front().why, record.page()};
}

class Update {
public:
    Update(jet::WriteContext& context, const UpdateStatement& statement)
        : context_{context},
          table_{openToChange(context, statement.table)},
          relation_{relationOf(table_)},
          binder_{relation_, statement.tableAlias} {
        for (const ColumnChange& change : statement.changes) addChange(change);
        if (statement.where) setCondition(*statement.where);
    }

    std::uint64_t run() {
        if (noRow_) return 0;
        jet::TableWriter writer{context_, table_->definition()};
        Row row;
        const std::uint64_t changed = writer.updateRows(
            [&](const jet::Record& record, jet::PageReader& pages, jet::Assignments& changes) {
                const bool matches = !filter_ || filter_->matches(record, pages);
                if (filter_) requireReadable(filter_->lost(), record);
                if (!matches) return false;
                row.record = &record;
                row.pages = &pages;
                for (NewValue& value : values_) changes.push_back({value.place(), value.of(row)});
                requireReadable(row.lost, record);
                return true;
            });
        writer.finish();
        return changed;
    }

private:
    void addChange(const ColumnChange& change) {
        const std::size_t place = placeOfColumn(*table_, change.column);
        const bool twice = std::any_of(values_.begin(), values_.end(), [&](const NewValue& other) {
            return other.place() == place;
        });
        if (twice) {
            throw Error{Fault::Syntax,
                        "Duplicate output destination '" + jet::toUtf8(change.column) + "'."};
        }
        if (table_->definition().columns[place].autonumber) {
            throw Error{Fault::Syntax, "Cannot update '" + jet::toUtf8(change.column) +
                                           "'; it numbers its rows itself."};
        }
        values_.emplace_back(*table_, place, binder_.bind(*change.value));
    }

    void setCondition(const Node& where) {
        const ExpressionPtr condition = binder_.bind(where);
        requireCondition(*condition);
        if (const jet::Value* verdict = condition->constant()) {
            noRow_ = truth(*verdict) != true;
        } else {
            filter_ = makeRowFilter(condition, table_);
        }
    }

    jet::WriteContext& context_;
    std::shared_ptr<const jet::Table> table_;
    Relation relation_;
    Binder binder_;
    std::deque<NewValue> values_;
    std::unique_ptr<RowFilter> filter_;  ///< null: every row
    bool noRow_ = false;
};

}  // namespace

std::uint64_t updateRows(jet::WriteContext& context, const UpdateStatement& update) {
    return Update{context, update}.run();
}

}  // namespace sql
