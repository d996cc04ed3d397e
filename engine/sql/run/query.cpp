#include "engine/sql/run/query.h"

#include "engine/sql/parse/ast.h"
#include "engine/sql/run/cursors.h"
#include "engine/sql/run/filter.h"
#include "engine/sql/values/error.h"

#include <algorithm>

namespace sql {

namespace {

class SelectQuery final : public Query {
public:
    explicit SelectQuery(Plan plan) : plan_{std::make_shared<const Plan>(std::move(plan))} {}

    const std::vector<OutputColumn>& columns() const override { return plan_->columns; }

    std::shared_ptr<const jet::Table> scannedTable() const override {
        const bool plain = !plan_->grouped && plan_->order.empty() && !plan_->distinct &&
                           !plan_->top &&
                           std::all_of(plan_->columns.begin(), plan_->columns.end(),
                                       [](const OutputColumn& column) { return column.stored; });
        return plain ? plan_->table : nullptr;
    }

    std::unique_ptr<RowFilter> rowFilter() const override {
        return plan_->condition ? makeRowFilter(plan_->condition, plan_->table) : nullptr;
    }

    bool alwaysEmpty() const override { return plan_->alwaysEmpty; }

    std::unique_ptr<Cursor> execute() const override { return openCursor(plan_); }

private:
    PlanPtr plan_;
};

}  // namespace

std::shared_ptr<const Query> Query::prepare(const std::shared_ptr<jet::Database>& database,
                                            std::u16string_view text,
                                            const Definitions& definitions) {
    const Statement statement = parseStatement(text);
    const auto* const select = std::get_if<SelectStatement>(&statement);
    if (select == nullptr) {
        throw Error{Fault::Syntax, "Syntax error: the statement has no rows, SELECT is expected."};
    }
    return prepare(database, *select, definitions);
}

std::shared_ptr<const Query> Query::prepare(const std::shared_ptr<jet::Database>& database,
                                            const SelectStatement& select,
                                            const Definitions& definitions) {
    return std::make_shared<SelectQuery>(bind(select, *database, definitions));
}

}  // namespace sql
