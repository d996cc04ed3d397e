#include "engine/jet/database.h"
#include "engine/jet/text.h"
#include "engine/jet/write/table_writer.h"
#include "engine/sql/bind/binder.h"
#include "engine/sql/run/assignment.h"
#include "engine/sql/run/change.h"
#include "engine/sql/run/cursors.h"
#include "engine/sql/values/error.h"

#include <algorithm>
#include <numeric>

namespace sql {

namespace {

/// Adds rows to a table whose values are given for some of its columns.
class Inserter {
public:
    Inserter(jet::WriteContext& context, const jet::Table& table, std::vector<std::size_t> places)
        : columns_{table.definition().columns},
          places_{std::move(places)},
          row_(columns_.size()),
          writer_{context, table.definition()} {}

    void add(const std::vector<jet::Value>& values) {
        for (std::size_t i = 0; i < places_.size(); ++i) {
            row_[places_[i]] = toColumnValue(values[i], columns_[places_[i]]);
        }
        writer_.insert(row_);
        ++count_;
    }

    std::uint64_t finish() {
        writer_.finish();
        return count_;
    }

private:
    const std::vector<jet::Column>& columns_;
    std::vector<std::size_t> places_;
    std::vector<jet::Value> row_;  ///< Null where no value is given
    jet::TableWriter writer_;
    std::uint64_t count_ = 0;
};

class Insert {
public:
    Insert(jet::WriteContext& context, const InsertStatement& statement)
        : context_{context},
          statement_{statement},
          table_{openToChange(context, statement.table)} {}

    std::uint64_t run() { return statement_.rows ? insertQuery() : insertValues(); }

private:
    std::uint64_t insertValues() {
        std::vector<std::size_t> places = namedPlaces(statement_.columns);
        if (places.empty()) {
            places.resize(table_->definition().columns.size());
            std::iota(places.begin(), places.end(), std::size_t{0});
        }
        requireCount(statement_.values.size(), places.size());
        // Values stand for themselves: no column can be named in them.
        const Relation nothing{};
        Binder binder{nothing, u""};
        std::vector<jet::Value> values;
        Row row;
        for (const NodePtr& value : statement_.values) {
            values.push_back(binder.bind(*value)->evaluate(row));
        }
        Inserter inserter{context_, *table_, std::move(places)};
        inserter.add(values);
        return inserter.finish();
    }

    std::uint64_t insertQuery() {
        const auto plan = std::make_shared<const Plan>(bind(*statement_.rows, context_.database));
        std::vector<std::size_t> places = namedPlaces(statement_.columns);
        if (places.empty()) places = namedPlaces(outputNames(*plan));
        requireCount(plan->columns.size(), places.size());
        const auto cursor = openCursor(plan);
        const bool ownRows = plan->table->definition().page == table_->definition().page;
        Inserter inserter{context_, *table_, std::move(places)};
        if (!ownRows) {
            while (cursor->next()) inserter.add(cursor->row());
            return inserter.finish();
        }
        std::vector<std::vector<jet::Value>> rows;
        while (cursor->next()) rows.push_back(cursor->row());
        for (const auto& row : rows) inserter.add(row);
        return inserter.finish();
    }

    static std::vector<std::u16string> outputNames(const Plan& plan) {
        std::vector<std::u16string> names;
        for (const OutputColumn& column : plan.columns) names.push_back(column.name);
        return names;
    }

    std::vector<std::size_t> namedPlaces(const std::vector<std::u16string>& names) const {
        std::vector<std::size_t> places;
        for (const std::u16string& name : names) {
            const std::size_t place = placeOfColumn(*table_, name);
            if (std::find(places.begin(), places.end(), place) != places.end()) {
                throw Error{Fault::Syntax,
                            "Duplicate output destination '" + jet::toUtf8(name) + "'."};
            }
            places.push_back(place);
        }
        return places;
    }

    static void requireCount(std::size_t given, std::size_t wanted) {
        if (given == wanted) return;
        throw Error{Fault::Syntax,
                    "Number of query values and destination fields are not the same: " +
                        std::to_string(given) + " for " + std::to_string(wanted) + "."};
    }

    jet::WriteContext& context_;
    const InsertStatement& statement_;
    std::shared_ptr<const jet::Table> table_;
};

}  // namespace

std::uint64_t insertRows(jet::WriteContext& context, const InsertStatement& insert) {
    return Insert{context, insert}.run();
}

}  // namespace sql
