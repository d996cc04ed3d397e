#include "engine/jet/write/catalog_writer.h"

#include "engine/jet/collation.h"
#include "engine/jet/database.h"
#include "engine/jet/text.h"
#include "engine/jet/write/table_writer.h"

#include <algorithm>
#include <optional>

namespace jet {
namespace {

namespace layout = format::catalog;

std::shared_ptr<const Table> systemTable(Database& database, std::u16string_view name) {
    auto table = database.table(name);
    if (!table->definition().system)
        throwDamaged(table->definition().page, "a system table is none");
    return table;
}

std::size_t placeOf(const TableDefinition& table, std::u16string_view name) {
    const Column* const column = table.findColumn(name);
    if (column == nullptr) throwDamaged(table.page, "a system table lacks a column");
    return static_cast<std::size_t>(column - table.columns.data());
}

/// One row with its values by column.
class SystemRow {
public:
    explicit SystemRow(const TableDefinition& table)
        : table_{table}, values(table.columns.size()) {}
    Value& operator[](std::u16string_view column) { return values[placeOf(table_, column)]; }

private:
    const TableDefinition& table_;

public:
    std::vector<Value> values;
};

/// Calls `use(row id, field)` for each row, where `field(column)` is its value.
template <typename Use>
void forEachRow(const Table& table, Use use) {
    TableScan scan{table};
    while (scan.next()) {
        use(scan.rowId(), [&](std::u16string_view column) {
            const Column& stored = table.definition().columns[placeOf(table.definition(), column)];
            return decodeField(scan.pages(), stored, scan.record().field(stored),
                               scan.record().page());
        });
    }
}

std::uint32_t idOf(const Value& value) {
    const auto* const id = std::get_if<std::int32_t>(&value);
    return id == nullptr ? 0 : static_cast<std::uint32_t>(*id);
}

struct Found {
    RowId row;
    std::uint32_t flags = 0;
    Value owner;
};

std::optional<Found> findObject(const Table& objects, std::uint32_t id) {
    std::optional<Found> found;
    forEachRow(objects, [&](RowId row, const auto& field) {
        if (idOf(field(u"Id")) != id || found) return;
        found = {row, idOf(field(u"Flags")), field(u"Owner")};
    });
    return found;
}

}  // namespace

void CatalogWriter::requireFree(std::u16string_view name) {
    for (const CatalogEntry& entry : context_.database.catalog()) {
        if (entry.parentId != layout::kTablesContainer ||
            compareText(entry.name, name) != std::strong_ordering::equal) {
            continue;
        }
        throw Error{Fault::TableExists, "There is a table '" + toUtf8(entry.name) + "' already."};
    }
}

void CatalogWriter::addTable(PageNumber definition, std::u16string_view name) {
    const auto objects = systemTable(context_.database, u"MSysObjects");
    const auto admin = findObject(*objects, layout::kDatabaseObject);
    if (!admin) throwDamaged(objects->definition().page, "the catalog lacks the database itself");
    SystemRow row{objects->definition()};
    row[u"Id"] = static_cast<std::int32_t>(raw(definition));
    row[u"ParentId"] = static_cast<std::int32_t>(layout::kTablesContainer);
    row[u"Name"] = std::u16string{name};
    row[u"Type"] = layout::kTable;
    row[u"DateCreate"] = context_.now;
    row[u"DateUpdate"] = context_.now;
    row[u"Owner"] = admin->owner;
    row[u"Flags"] = std::int32_t{0};
    TableWriter writer{context_, objects->definition()};
    writer.insert(row.values);
    writer.finish();
    context_.database.forgetCatalog();
    grantRights(definition);
}

/// All rights for the owner, and for everyone to whom the container of tables hands them on. The
/// creator's own entry there represents the creator of a table.
void CatalogWriter::grantRights(PageNumber definition) {
    const auto objects = systemTable(context_.database, u"MSysObjects");
    const auto rights = systemTable(context_.database, u"MSysACEs");
    const Value owner = findObject(*objects, layout::kDatabaseObject)->owner;
    std::vector<Value> holders{owner};
    forEachRow(*rights, [&](RowId, const auto& field) {
        const Value inherited = field(u"FInheritable");
        const Value granted = field(u"ACM");
        if (idOf(field(u"ObjectId")) != layout::kTablesContainer || inherited != Value{true})
            return;
        const Value holder = field(u"SID");
        if (granted == Value{layout::kCreatorRights}) return;
        if (std::ranges::find(holders, holder) == holders.end()) holders.push_back(holder);
    });
    TableWriter writer{context_, rights->definition()};
    for (const Value& holder : holders) {
        SystemRow row{rights->definition()};
        row[u"ObjectId"] = static_cast<std::int32_t>(raw(definition));
        row[u"SID"] = holder;
        row[u"ACM"] = layout::kAllRights;
        row[u"FInheritable"] = false;
        writer.insert(row.values);
    }
    writer.finish();
}

void CatalogWriter::touch(PageNumber definition) {
    const auto objects = systemTable(context_.database, u"MSysObjects");
    std::optional<RowId> found;
    forEachRow(*objects, [&](RowId row, const auto& field) {
        const bool isTable = field(u"Type") == Value{layout::kTable};
        if (isTable && (idOf(field(u"Id")) & layout::kPageMask) == raw(definition)) found = row;
    });
    if (!found) throwDamaged(objects->definition().page, "the catalog lacks a table");
    TableWriter writer{context_, objects->definition()};
    const Assignments changes{{placeOf(objects->definition(), u"DateUpdate"), context_.now}};
    writer.update(*found, changes);
    writer.finish();
}

void CatalogWriter::removeTable(PageNumber definition) {
    const auto objects = systemTable(context_.database, u"MSysObjects");
    const auto found = findObject(*objects, raw(definition));
    if (!found) throwDamaged(objects->definition().page, "the catalog lacks a table");
    if ((found->flags & layout::kSystemFlags) != 0) {
        throw Error{Fault::ReadOnly, "A system table cannot be dropped."};
    }
    TableWriter objectWriter{context_, objects->definition()};
    objectWriter.remove(found->row);
    objectWriter.finish();
    context_.database.forgetCatalog();

    const auto rights = systemTable(context_.database, u"MSysACEs");
    std::vector<RowId> rows;
    forEachRow(*rights, [&](RowId row, const auto& field) {
        if (idOf(field(u"ObjectId")) == raw(definition)) rows.push_back(row);
    });
    TableWriter rightsWriter{context_, rights->definition()};
    for (const RowId row : rows) rightsWriter.remove(row);
    rightsWriter.finish();
}

}  // namespace jet
