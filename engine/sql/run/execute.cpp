#include "engine/sql/run/execute.h"

#include "engine/jet/text.h"
#include "engine/jet/write/schema.h"
#include "engine/jet/write/write_context.h"
#include "engine/sql/bind/relation.h"
#include "engine/sql/run/change.h"

#include <stdexcept>

namespace sql {

namespace {

/// Runs a statement of each kind; returns the number of rows.
struct Runner {
    jet::WriteContext& context;

    std::uint64_t operator()(const SelectStatement&) const {
        throw std::logic_error{"a query is not executed"};
    }

    std::uint64_t operator()(const UpdateStatement& update) const {
        return updateRows(context, update);
    }

    std::uint64_t operator()(const InsertStatement& insert) const {
        return insertRows(context, insert);
    }

    std::uint64_t operator()(const CreateTableStatement& create) const {
        jet::createTable(context, create.table, create.columns);
        return createIndexes(create.table, create.indexes);
    }

    std::uint64_t operator()(const AddColumnStatement& alter) const {
        openToChange(context, alter.table);
        jet::addColumn(context, alter.table, alter.column);
        return createIndexes(alter.table, alter.indexes);
    }

    std::uint64_t operator()(const CreateIndexStatement& create) const {
        openToChange(context, create.table);
        return createIndexes(create.table, {create.index});
    }

    std::uint64_t operator()(const DropTableStatement& drop) const {
        openToChange(context, drop.table);
        jet::dropTable(context, drop.table);
        return 0;
    }

private:
    std::uint64_t createIndexes(const std::u16string& table,
                                const std::vector<jet::NewIndex>& indexes) const {
        for (const jet::NewIndex& index : indexes) jet::createIndex(context, table, index);
        return 0;
    }
};

}  // namespace

std::shared_ptr<const jet::Table> openToChange(jet::WriteContext& context,
                                               const std::u16string& name) {
    auto table = openTable(context.database, name);
    if (table->definition().system) {
        throw jet::Error{
            jet::Fault::ReadOnly,
            "The table '" + jet::toUtf8(name) + "' belongs to the system; it cannot be changed."};
    }
    return table;
}

std::size_t placeOfColumn(const jet::Table& table, std::u16string_view name) {
    const jet::Column* const column = table.definition().findColumn(name);
    if (column == nullptr) {
        throw Error{Fault::UnknownColumn, "The table '" + jet::toUtf8(table.definition().name) +
                                              "' has no column '" + jet::toUtf8(name) + "'."};
    }
    return static_cast<std::size_t>(column - table.definition().columns.data());
}

bool isQuery(const Statement& statement) {
    return std::holds_alternative<SelectStatement>(statement);
}

std::uint64_t execute(jet::Database& database, const Statement& statement) {
    std::uint64_t rows = 0;
    database.write(
        [&](jet::WriteContext& context) { rows = std::visit(Runner{context}, statement); });
    return rows;
}

std::uint64_t execute(jet::Database& database, std::u16string_view text) {
    const Statement statement = parseStatement(text);
    if (isQuery(statement)) {
        throw Error{Fault::Syntax, "Syntax error: a SELECT cannot be executed as a change."};
    }
    return execute(database, statement);
}

}  // namespace sql
