#include "tools/listing.h"

#include "engine/jet/text.h"
#include "tools/table_dump.h"

#include <algorithm>
#include <string>

namespace plain {

namespace {

std::vector<std::shared_ptr<const jet::Table>> userTables(jet::Database& database) {
    std::vector<std::shared_ptr<const jet::Table>> tables;
    for (const jet::CatalogEntry& entry : database.catalog()) {
        if (entry.isUserTable()) tables.push_back(database.table(entry.name));
    }
    return tables;
}

const char* typeName(const jet::Column& column) {
    switch (column.type) {
        case jet::ColumnType::Boolean:
            return "YesNo";
        case jet::ColumnType::Byte:
            return "Byte";
        case jet::ColumnType::Integer:
            return "Integer";
        case jet::ColumnType::Long:
            return "Long";
        case jet::ColumnType::Currency:
            return "Currency";
        case jet::ColumnType::Single:
            return "Single";
        case jet::ColumnType::Double:
            return "Double";
        case jet::ColumnType::Date:
            return "DateTime";
        case jet::ColumnType::Text:
            return "Text";
        case jet::ColumnType::Ole:
            return "LongBinary";
        case jet::ColumnType::Memo:
            return "Memo";
        case jet::ColumnType::Guid:
            return "Guid";
        case jet::ColumnType::Numeric:
            return "Decimal";
        default:
            return "Binary";
    }
}

/// The declared size where the type leaves it open: characters, bytes or digits.
std::string typeSize(const jet::Column& column) {
    switch (column.type) {
        case jet::ColumnType::Text:
            return "(" + std::to_string(column.size / 2) + ")";
        case jet::ColumnType::Binary:
            return "(" + std::to_string(column.size) + ")";
        case jet::ColumnType::Numeric:
            return "(" + std::to_string(column.precision) + ", " + std::to_string(column.scale) +
                   ")";
        default:
            return "";
    }
}

std::string columnLine(const jet::Column& column) {
    std::string line = "  column " + jet::toUtf8(column.name) + " " + typeName(column);
    line += typeSize(column);
    if (column.autonumber) line += " autonumber";
    if (column.isText() && column.compressed) line += " compressed";
    if (column.isText() && column.fixed) line += " fixed";
    return line + "\n";
}

std::string indexLine(const jet::TableDefinition& table, const jet::LogicalIndex& index) {
    std::string line = "  index " + jet::toUtf8(index.name) + " (";
    const char* separator = "";
    const jet::PhysicalIndex& tree = table.physicalIndexes.at(index.physical);
    for (const jet::IndexColumn& part : tree.columns) {
        const jet::Column* column = table.findColumn(part.columnId);
        line += separator + (column ? jet::toUtf8(column->name) : std::string{"?"});
        if (!part.ascending) line += " descending";
        separator = ", ";
    }
    line += ")";
    if (index.kind == jet::IndexKind::PrimaryKey) line += " primary";
    if (tree.unique) line += " unique";
    if (tree.ignoreNulls) line += " ignore-nulls";
    if (tree.required) line += " required";
    if (index.kind == jet::IndexKind::ForeignKey) line += " foreign";
    return line + "\n";
}

}  // namespace

jet::Losses listTables(jet::Database& database, std::FILE* out) {
    jet::Losses losses;
    for (const auto& table : userTables(database)) {
        std::uint64_t rows = 0;
        jet::TableScan scan{*table};
        while (scan.next()) ++rows;
        losses += scan.losses();
        writeAll(jet::toUtf8(table->definition().name) + "\t" + std::to_string(rows) + "\n", out);
    }
    return losses;
}

void listSchema(jet::Database& database, std::FILE* out) {
    for (const auto& table : userTables(database)) {
        const jet::TableDefinition& definition = table->definition();
        std::string text = "table " + jet::toUtf8(definition.name) + "\n";
        for (const jet::Column& column : definition.columns) text += columnLine(column);
        for (const jet::LogicalIndex& index : definition.logicalIndexes) {
            text += indexLine(definition, index);
        }
        writeAll(text, out);
    }
}

}  // namespace plain
