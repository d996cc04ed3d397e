#include "engine/sql/bind/relation.h"

#include "engine/jet/collation.h"
#include "engine/jet/text.h"
#include "engine/sql/bind/binder.h"
#include "engine/sql/bind/plan.h"
#include "engine/sql/values/error.h"

#include <algorithm>

namespace sql {

namespace {

/// Every formula is bound to what is stored, so that none depends on another.
void addComputed(Relation& relation, const Definitions& definitions) {
    const Relation stored = relation;
    Binder binder{stored, u""};
    for (const ComputedColumn& column : definitions.columns()) {
        if (jet::compareText(column.table, relation.name) != 0) continue;
        RelationColumn computed{column.name, 0, binder.bind(*column.formula)};
        const auto same = std::find_if(relation.columns.begin(), relation.columns.end(),
                                       [&](const RelationColumn& other) {
                                           return jet::compareText(other.name, computed.name) == 0;
                                       });
        if (same == relation.columns.end()) {
            relation.columns.push_back(std::move(computed));
        } else {
            *same = std::move(computed);
        }
    }
}

/// The columns of a stored query stand in the rows of its result.
Relation relationOf(const StoredQuery& query, jet::Database& database,
                    const Definitions& definitions) {
    auto plan = std::make_shared<const Plan>(bind(*query.select, database, definitions));
    Relation relation{query.name, nullptr, plan};
    for (std::size_t slot = 0; slot < plan->columns.size(); ++slot) {
        const OutputColumn& column = plan->columns[slot];
        relation.columns.push_back(
            {column.name, column.size, makeGroupValue(slot, plan->outputs[slot]->type(), nullptr)});
    }
    return relation;
}

/// What a stored query sees: computed columns, but no stored queries, so that none reads itself.
Definitions withoutQueries(const Definitions& definitions) {
    Definitions columns;
    for (const ComputedColumn& column : definitions.columns()) columns.addColumn(column);
    return columns;
}

}  // namespace

const RelationColumn* Relation::find(std::u16string_view columnName) const {
    const auto found =
        std::find_if(columns.begin(), columns.end(), [&](const RelationColumn& column) {
            return jet::compareText(column.name, columnName) == 0;
        });
    return found == columns.end() ? nullptr : &*found;
}

Relation relationOf(std::shared_ptr<const jet::Table> table) {
    Relation relation{table->definition().name, std::move(table), nullptr};
    for (const jet::Column& column : relation.table->definition().columns) {
        relation.columns.push_back({column.name, column.size, makeColumn(column)});
    }
    return relation;
}

Relation openRelation(jet::Database& database, const std::u16string& name,
                      const Definitions& definitions) {
    if (const StoredQuery* query = definitions.findQuery(name)) {
        return relationOf(*query, database, withoutQueries(definitions));
    }
    Relation relation = relationOf(openTable(database, name));
    addComputed(relation, definitions);
    return relation;
}

std::shared_ptr<const jet::Table> openTable(jet::Database& database, const std::u16string& name) {
    try {
        return database.table(name);
    } catch (const jet::Error& error) {
        if (error.fault() != jet::Fault::NoSuchTable) throw;
        throw Error{Fault::NoSuchTable, "The input table or query '" + jet::toUtf8(name) +
                                            "' cannot be found. Make sure that it exists and that "
                                            "its name is spelled correctly."};
    }
}

}  // namespace sql
