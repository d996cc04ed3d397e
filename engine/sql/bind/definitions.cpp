#include "engine/sql/bind/definitions.h"

#include "engine/jet/collation.h"
#include "engine/sql/bind/plan.h"
#include "engine/sql/bind/relation.h"
#include "engine/sql/values/error.h"

#include <algorithm>

namespace sql {

void Definitions::addColumn(std::u16string table, std::u16string name,
                            std::u16string_view formula) {
    columns_.push_back({std::move(table), std::move(name), parseExpression(formula)});
}

void Definitions::addQuery(std::u16string name, std::u16string_view text) {
    Statement statement = parseStatement(text);
    auto* const select = std::get_if<SelectStatement>(&statement);
    if (select == nullptr) throw Error{Fault::Syntax, "Syntax error: a stored query is a SELECT."};
    queries_.push_back(
        {std::move(name), std::make_shared<const SelectStatement>(std::move(*select))});
}

const StoredQuery* Definitions::findQuery(std::u16string_view name) const {
    const auto found = std::find_if(queries_.begin(), queries_.end(), [&](const auto& query) {
        return jet::compareText(query.name, name) == 0;
    });
    return found == queries_.end() ? nullptr : &*found;
}

void requireUsable(const Definitions& definitions, jet::Database& database) {
    for (const ComputedColumn& column : definitions.columns()) {
        openRelation(database, column.table, definitions);
    }
    for (const StoredQuery& query : definitions.queries()) {
        bind(*query.select, database, definitions);
    }
}

}  // namespace sql
