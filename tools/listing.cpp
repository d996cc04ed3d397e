#include "tools/listing.h"

#include "engine/jet/text.h"
#include "tools/table_dump.h"

#include <algorithm>
#include <string>

namespace plain {

namespace {

/// Calls `list(table)` for each user table. For a table that cannot be read, writes `prefix`, its
/// name and why.
template <typename List>
jet::Losses forUserTables(jet::Database& database, std::FILE* out, std::string_view prefix,
                          std::string_view separator, List list) {
    jet::Losses losses;
    for (const jet::CatalogEntry& entry : database.catalog()) {
        if (!entry.isUserTable()) continue;
        try {
            losses += list(*database.table(entry.name));
        } catch (const jet::Error& error) {
            if (!jet::isDamage(error)) throw;
            jet::Loss loss{jet::Loss::Kind::Tables, entry.definition(), jet::Loss::kNoSlot,
                           error.what()};
            database.noteLoss(loss);
            std::string line{prefix};
            line.append(jet::toUtf8(entry.name)).append(separator).append("cannot be read: ");
            writeAll(line + loss.why + "\n", out);
            losses.add(std::move(loss));
        }
    }
    return losses;
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
    std::string line = "  column " + jet::toUtf8(column.name) + " ";
    if (!column.unreadable.empty()) return line + "cannot be read: " + column.unreadable + "\n";
    line += typeName(column);
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
    return forUserTables(database, out, "", "\t", [&](const jet::Table& table) {
        jet::TableScan scan{table};
        while (scan.next()) {
        }
        writeAll(
            jet::toUtf8(table.definition().name) + "\t" + std::to_string(scan.rowCount()) + "\n",
            out);
        return scan.losses();
    });
}

jet::Losses listSchema(jet::Database& database, std::FILE* out) {
    return forUserTables(database, out, "table ", "\n  ", [&](const jet::Table& table) {
        const jet::TableDefinition& definition = table.definition();
        std::string text = "table " + jet::toUtf8(definition.name) + "\n";
        for (const jet::Column& column : definition.columns) text += columnLine(column);
        for (const jet::LogicalIndex& index : definition.logicalIndexes) {
            text += indexLine(definition, index);
        }
        writeAll(text, out);
        return definition.losses;
    });
}

}  // namespace plain
