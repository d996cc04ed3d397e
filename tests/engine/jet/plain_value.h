// Values as expected results spell them, and whole tables of them.
//
//   const std::vector<fixture::PlainRow> rows = jet::plainRows(*database->table(u"tblTraces"));
#pragma once

#include "engine/jet/database.h"
#include "engine/jet/text.h"
#include "tests/engine/jet/hex.h"
#include "tests/support/expected.h"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace jet {

/// yyyy-mm-dd hh:mm:ss, the time rounded to the nearest second; "no date" beyond 9999-12-31.
inline std::string plainDate(Date date) {
    if (!(date.days > -657435 && date.days < 2958466)) return "no date";
    const double day = std::trunc(date.days);
    auto seconds = std::llround(std::abs(date.days - day) * 86400);
    auto whole = static_cast<int>(day);
    if (seconds == 86400) {
        seconds = 0;
        ++whole;
    }
    const std::chrono::year_month_day civil{
        std::chrono::sys_days{std::chrono::year{1899} / 12 / 30} + std::chrono::days{whole}};
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02lld:%02lld:%02lld",
                  static_cast<int>(civil.year()), static_cast<unsigned>(civil.month()),
                  static_cast<unsigned>(civil.day()), seconds / 3600, seconds / 60 % 60,
                  seconds % 60);
    return text.data();
}

template <typename T>
std::string plainNumber(T number) {
    std::array<char, 512> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

/// A text that is a column of digits with a point, without what does not change its value.
inline std::string withoutTrailingZeros(std::string digits) {
    if (digits.find('.') == std::string::npos) return digits;
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.back() == '.') digits.pop_back();
    return digits;
}

struct PlainForm {
    using Field = std::optional<std::string>;

    Field operator()(std::monostate) const { return std::nullopt; }
    Field operator()(const Unreadable& damage) const { return "unreadable: " + damage.why; }
    Field operator()(bool truth) const { return truth ? "1" : "0"; }
    Field operator()(std::uint8_t number) const { return std::to_string(number); }
    Field operator()(std::int16_t number) const { return std::to_string(number); }
    Field operator()(std::int32_t number) const { return std::to_string(number); }
    Field operator()(Currency amount) const {
        const bool negative = amount.tenThousandths < 0;
        const auto bits = static_cast<std::uint64_t>(amount.tenThousandths);
        Numeric number{.negative = negative, .scale = 4, .magnitude = {}};
        const std::uint64_t magnitude = negative ? ~bits + 1 : bits;
        number.magnitude = {0, 0, static_cast<std::uint32_t>(magnitude >> 32),
                            static_cast<std::uint32_t>(magnitude)};
        return withoutTrailingZeros(toDecimalText(number));
    }
    Field operator()(float number) const { return plainNumber(number); }
    Field operator()(double number) const { return plainNumber(number); }
    Field operator()(Date date) const { return plainDate(date); }
    Field operator()(const Binary& bytes) const {
        std::string digits = hex(bytes);
        for (char& digit : digits)
            digit = digit >= 'A' ? static_cast<char>(digit - 'A' + 'a') : digit;
        return "0x" + digits;
    }
    Field operator()(const std::u16string& text) const { return toUtf8(text); }
    Field operator()(const Guid& guid) const { return toText(guid); }
    Field operator()(const Numeric& number) const {
        return withoutTrailingZeros(toDecimalText(number));
    }
};

inline std::optional<std::string> plain(const Value& value) {
    return std::visit(PlainForm{}, value);
}

/// The values of the row a scan stands on. Throws Error{Damaged}.
inline std::vector<Value> valuesOf(TableScan& scan, const TableDefinition& definition) {
    std::vector<Value> values;
    values.reserve(definition.columns.size());
    for (const Column& column : definition.columns) {
        values.push_back(
            decodeField(scan.pages(), column, scan.record().field(column), scan.record().page()));
    }
    return values;
}

/// All rows in storage order. Adds a failure if a row is damaged.
inline std::vector<fixture::PlainRow> plainRows(const Table& table) {
    std::vector<fixture::PlainRow> rows;
    TableScan scan{table};
    while (scan.next()) {
        fixture::PlainRow row;
        for (const Value& value : valuesOf(scan, table.definition())) row.push_back(plain(value));
        rows.push_back(std::move(row));
    }
    EXPECT_EQ(scan.losses().rows, 0u);
    EXPECT_EQ(scan.losses().pages, 0u);
    return rows;
}

inline std::vector<std::string> columnNames(const Table& table) {
    std::vector<std::string> names;
    for (const Column& column : table.definition().columns) names.push_back(toUtf8(column.name));
    return names;
}

/// Names of a program's own tables, in the catalog's order.
inline std::vector<std::u16string> userTables(Database& database) {
    std::vector<std::u16string> names;
    for (const CatalogEntry& entry : database.catalog()) {
        if (entry.isUserTable()) names.push_back(entry.name);
    }
    return names;
}

}  // namespace jet
