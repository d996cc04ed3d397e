// What mdb-export reads in a file, held against what is read here.
//
//   if (!fixture::hasProgram("mdb-export")) GTEST_SKIP() << jet::kNotInstalled;
//   jet::compareFile(path);
//
// Where the other reader is known to be weaker, our values are brought into the form that it shows:
//  - it shows an empty text as Null;
//  - each half of a character beyond U+FFFF comes out as a question mark;
//  - it has no dates before 1899-12-30 nor on the last day of the year 9999;
//  - binary values have no prefix, and a GUID is shown as the hex digits of its text, in which one
//    hyphen is missing;
//  - it cuts what stands in a binary column (not a long binary) at the first zero byte;
//  - it meets a row that moved where its record stands now, so rows are compared in any order;
//  - it takes records that moved and were moved again or deleted later for rows (old-orphans only).
#pragma once

#include "tests/engine/jet/plain_value.h"
#include "tests/support/external_program.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace jet {

using fixture::PlainRow;
using fixture::PlainTable;

inline constexpr const char* kNotInstalled = "mdb-export is not installed";

inline PlainTable exported(const std::filesystem::path& file, std::u16string_view table) {
    constexpr const char* kDate = "%Y-%m-%d %H:%M:%S";
    const auto result = fixture::runProgram(
        {"mdb-export", "--no-quote", "--escape-invisible", "--delimiter=\t", "--row-delimiter=\n",
         "--null=\\N", "--bin=hex", std::string{"--date-format="} + kDate,
         std::string{"--datetime-format="} + kDate, file.string(), toUtf8(table)});
    EXPECT_EQ(result.exitCode, 0) << toUtf8(table) << ": " << result.errors;
    return fixture::parsePlainTable(result.output);
}

/// Numbers with as many digits as both readers print.
inline std::string shortNumber(const std::string& number, const char* format) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, std::strtod(number.c_str(), nullptr));
    return text.data();
}

/// What both readers show of a field, if theirs is `field`.
inline std::optional<std::string> comparable(const Column& column,
                                             const std::optional<std::string>& field) {
    if (!field || field->empty()) return std::nullopt;
    switch (column.type) {
        case ColumnType::Single:
            return shortNumber(*field, "%.7g");
        case ColumnType::Double:
            return shortNumber(*field, "%.12g");
        case ColumnType::Currency:
        case ColumnType::Numeric:
            return withoutTrailingZeros(*field);
        default:
            return field;
    }
}

inline std::string upperHex(std::string_view text) {
    return hex({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

/// Our value as the other reader shows it.
inline std::optional<std::string> asExported(const Column& column, const Value& value) {
    if (const auto* date = std::get_if<Date>(&value); date != nullptr) {
        const bool known = date->days >= 0 && date->days < 2958465;
        return known ? plainDate(*date) : "1900-01-00 00:00:00";
    }
    if (const auto* text = std::get_if<std::u16string>(&value); text != nullptr) {
        std::u16string narrow = *text;
        std::replace_if(
            narrow.begin(), narrow.end(), [](char16_t c) { return (c & 0xF800) == 0xD800; }, u'?');
        return toUtf8(narrow);
    }
    if (const auto* bytes = std::get_if<Binary>(&value); bytes != nullptr) {
        const bool whole = column.type != ColumnType::Binary;
        const auto end = whole ? bytes->end() : std::find(bytes->begin(), bytes->end(), 0);
        return hex({bytes->begin(), end});
    }
    if (const auto* guid = std::get_if<Guid>(&value); guid != nullptr) {
        std::string text = toText(*guid);
        text.erase(text.rfind('-'), 1);
        return upperHex(text);
    }
    return plain(value);
}

inline std::string shown(const PlainRow& row) {
    std::string text;
    for (const auto& field : row) text += fixture::toPlainField(field) + " | ";
    return text;
}

/// Rows in both readers' common form, sorted.
inline std::vector<PlainRow> ourRows(const Table& table) {
    std::vector<PlainRow> rows;
    TableScan scan{table};
    while (scan.next()) {
        PlainRow row;
        const std::vector<Value> values = valuesOf(scan, table.definition());
        for (std::size_t i = 0; i < values.size(); ++i) {
            const Column& column = table.definition().columns[i];
            row.push_back(comparable(column, asExported(column, values[i])));
        }
        rows.push_back(std::move(row));
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

inline std::vector<PlainRow> theirRows(const Table& table, PlainTable exportedTable) {
    for (PlainRow& row : exportedTable.rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = comparable(table.definition().columns.at(i), row[i]);
        }
    }
    std::sort(exportedTable.rows.begin(), exportedTable.rows.end());
    return std::move(exportedTable.rows);
}

inline void expectSameRows(const std::vector<PlainRow>& ours, const std::vector<PlainRow>& theirs) {
    EXPECT_EQ(ours.size(), theirs.size());
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        ASSERT_TRUE(ours[i] == theirs[i])
            << "ours   " << shown(ours[i]) << "\ntheirs " << shown(theirs[i]);
    }
}

/// Compares every user table of a file. Returns how many rows there were.
inline std::size_t compareFile(const std::filesystem::path& file) {
    std::size_t rows = 0;
    const auto database = Database::open(file);
    for (const auto& name : userTables(*database)) {
        SCOPED_TRACE(toUtf8(name));
        const auto table = database->table(name);
        const PlainTable theirs = exported(file, name);
        EXPECT_THAT(columnNames(*table), testing::ElementsAreArray(theirs.columns));
        expectSameRows(ourRows(*table), theirRows(*table, theirs));
        rows += theirs.rows.size();
    }
    return rows;
}

}  // namespace jet
