// Every table of the sample databases and of built ones, held against what mdb-export reads there.
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
// Under Windows no test starts other programs.
#ifndef _WIN32
#include "tests/engine/jet/plain_value.h"
#include "tests/engine/jet/sample_files.h"
#include "tests/support/external_program.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/random.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace jet {
namespace {

using fixture::PlainRow;
using fixture::PlainTable;
using fixture::TemporaryFolder;

constexpr const char* kNotInstalled = "mdb-export is not installed";

PlainTable exported(const std::filesystem::path& file, std::u16string_view table) {
    constexpr const char* kDate = "%Y-%m-%d %H:%M:%S";
    const auto result = fixture::runProgram(
        {"mdb-export", "--no-quote", "--escape-invisible", "--delimiter=\t", "--row-delimiter=\n",
         "--null=\\N", "--bin=hex", std::string{"--date-format="} + kDate,
         std::string{"--datetime-format="} + kDate, file.string(), toUtf8(table)});
    EXPECT_EQ(result.exitCode, 0) << toUtf8(table) << ": " << result.errors;
    return fixture::parsePlainTable(result.output);
}

/// Numbers with as many digits as both readers print.
std::string shortNumber(const std::string& number, const char* format) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, std::strtod(number.c_str(), nullptr));
    return text.data();
}

/// What both readers show of a field, if theirs is `field`.
std::optional<std::string> comparable(const Column& column,
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

std::string upperHex(std::string_view text) {
    return hex({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

/// Our value as the other reader shows it.
std::optional<std::string> asExported(const Column& column, const Value& value) {
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

std::string shown(const PlainRow& row) {
    std::string text;
    for (const auto& field : row) text += fixture::toPlainField(field) + " | ";
    return text;
}

/// Rows in both readers' common form, sorted.
std::vector<PlainRow> ourRows(const Table& table) {
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

std::vector<PlainRow> theirRows(const Table& table, PlainTable exportedTable) {
    for (PlainRow& row : exportedTable.rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = comparable(table.definition().columns.at(i), row[i]);
        }
    }
    std::sort(exportedTable.rows.begin(), exportedTable.rows.end());
    return std::move(exportedTable.rows);
}

void expectSameRows(const std::vector<PlainRow>& ours, const std::vector<PlainRow>& theirs) {
    EXPECT_EQ(ours.size(), theirs.size());
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        ASSERT_TRUE(ours[i] == theirs[i])
            << "ours   " << shown(ours[i]) << "\ntheirs " << shown(theirs[i]);
    }
}

/// Compares every user table of a file. Returns how many rows there were.
std::size_t compareFile(const std::filesystem::path& file) {
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

class SecondReader : public testing::TestWithParam<std::filesystem::path> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SecondReader);

TEST_P(SecondReader, AgreesOnEveryTable) {
    if (!fixture::hasProgram("mdb-export")) GTEST_SKIP() << kNotInstalled;
    compareFile(GetParam());
}

std::vector<std::filesystem::path> comparableSamples() {
    std::vector<std::filesystem::path> files = sample::databases();
    std::erase_if(files, [](const auto& path) { return path.stem() == "old-orphans"; });
    return files;
}

INSTANTIATE_TEST_SUITE_P(Samples, SecondReader, testing::ValuesIn(comparableSamples()),
                         [](const auto& sampleInfo) {
                             std::string name = sampleInfo.param.stem().string();
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

/// Rows that records left behind give there are extra; all others must be the same.
TEST(SecondReader, SeesMoreThanTheRowsWhereRecordsWereLeftBehind) {
    const auto folder = fixture::testDataFolder();
    if (!folder) GTEST_SKIP() << fixture::kNoTestData;
    if (!fixture::hasProgram("mdb-export")) GTEST_SKIP() << kNotInstalled;
    const auto file = *folder / "old-orphans.mdb";
    const auto table = Database::open(file)->table(u"tblTraces");
    const auto ours = ourRows(*table);
    const auto theirs = theirRows(*table, exported(file, u"tblTraces"));
    EXPECT_TRUE(std::includes(theirs.begin(), theirs.end(), ours.begin(), ours.end()));
    EXPECT_EQ(theirs.size(), ours.size() + 68);
}

TEST(SecondReader, AgreesOnBuiltTraceDatabases) {
    if (!fixture::hasProgram("mdb-export")) GTEST_SKIP() << kNotInstalled;
    const TemporaryFolder folder;
    for (const auto format :
         {fixture::TraceFormat::Oldest, fixture::TraceFormat::Older, fixture::TraceFormat::Newer}) {
        fixture::TraceOptions options;
        options.rows = 3000;
        const auto file = folder.write("built.mdb", fixture::traceDatabase(options, format));
        EXPECT_GE(compareFile(file), 3000u);
    }
}

/// Columns of every type, with random contents.
TEST(SecondReader, AgreesOnValuesOfEveryType) {
    if (!fixture::hasProgram("mdb-export")) GTEST_SKIP() << kNotInstalled;
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Types",
         .columns = {fixture::column(u"Truth", ColumnType::Boolean),
                     fixture::column(u"Byte", ColumnType::Byte),
                     fixture::column(u"Integer", ColumnType::Integer),
                     fixture::column(u"Long", ColumnType::Long),
                     fixture::column(u"Money", ColumnType::Currency),
                     fixture::column(u"Single", ColumnType::Single),
                     fixture::column(u"Double", ColumnType::Double),
                     fixture::column(u"Date", ColumnType::Date),
                     fixture::binaryColumn(u"Binary", 20), fixture::textColumn(u"Text", 50),
                     fixture::memoColumn(u"Memo"), fixture::column(u"Guid", ColumnType::Guid),
                     fixture::numericColumn(u"Decimal", 18, 4)}});
    fixture::Random random{17};
    const auto maybe = [&](fixture::Cell cell) { return random.oneIn(5) ? fixture::kNull : cell; };
    for (int i = 0; i < 300; ++i) {
        Guid guid;
        for (auto& byte : guid.bytes) byte = static_cast<std::uint8_t>(random.next());
        Binary bytes(random.between(1, 20));
        for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random.next());
        std::u16string text(random.between(1, 50), u' ');
        for (auto& unit : text)
            unit = static_cast<char16_t>(random.oneIn(9) ? random.between(0xA1, 0x3000)
                                                         : random.between(0x21, 0x7E));
        const auto number = static_cast<std::int32_t>(random.next());
        table.insert({random.oneIn(2), maybe(static_cast<std::uint8_t>(number)),
                      maybe(static_cast<std::int16_t>(number)), maybe(number),
                      maybe(Currency{static_cast<std::int64_t>(random.next()) / 1000}),
                      maybe(static_cast<float>(number % 8000) / 8.0f), maybe(number / 3.0),
                      maybe(Date{random.between(1, 80000) + random.between(0, 86399) / 86400.0}),
                      maybe(bytes), maybe(text),
                      maybe(std::u16string(random.between(1, 5000), text[0])), maybe(guid),
                      maybe(Numeric{.negative = random.oneIn(2),
                                    .scale = 4,
                                    .magnitude = {0, 0, random.between(0, 100000),
                                                  static_cast<std::uint32_t>(random.next())}})});
    }
    const TemporaryFolder folder;
    EXPECT_EQ(compareFile(folder.write("types.mdb", builder.bytes())), 300u);
}

}  // namespace
}  // namespace jet

#endif
