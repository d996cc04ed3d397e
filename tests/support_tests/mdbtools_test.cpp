// What the builder makes, read by an independent program: mdbtools.
#include "engine/jet/text.h"
#include "tests/support/expected.h"
#include "tests/support/external_program.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/trace_database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace fixture {
namespace {

using jet::ColumnType;

class Mdbtools : public testing::Test {
protected:
    void SetUp() override {
        if (!hasProgram("mdb-export")) {
            GTEST_SKIP() << "mdbtools is not installed here";
        }
    }

    std::string write(const ByteVector& bytes) const {
        return folder_.write("fixture.mdb", bytes).string();
    }

    static std::string run(const std::vector<std::string>& arguments) {
        const ProgramResult result = runProgram(arguments);
        EXPECT_EQ(result.exitCode, 0) << arguments[0] << ": " << result.errors;
        EXPECT_EQ(result.errors, "") << arguments[0];
        return result.output;
    }

    /// A table in the plain form.
    static PlainTable exportTable(const std::string& file, const std::string& table) {
        const std::string format = "%Y-%m-%d %H:%M:%S";
        return parsePlainTable(run({"mdb-export", "-d", "\t", "-Q", "-e", "-0", "\\N", "-D", format,
                                    "-T", format, "-b", "hex", file, table}));
    }

    /// Names of the catalog, one a line, as the option chooses them.
    static std::vector<std::string> names(const std::string& file, const std::string& option = "") {
        std::vector<std::string> command{"mdb-tables", "-1", file};
        if (!option.empty()) command.insert(command.begin() + 1, option);
        std::string lines = run(command);
        std::vector<std::string> list;
        for (std::size_t end; (end = lines.find('\n')) != std::string::npos;
             lines.erase(0, end + 1)) {
            list.push_back(lines.substr(0, end));
        }
        return list;
    }

    static std::string schema(const std::string& file) { return run({"mdb-schema", file}); }

    /// The first column.
    static std::vector<std::string> column0(const PlainTable& table) {
        std::vector<std::string> values;
        for (const PlainRow& row : table.rows) values.push_back(toPlainField(row[0]));
        return values;
    }

    /// Text as mdbtools shows it: it does not know characters beyond 16 bits.
    static std::string shown(std::u16string text) {
        const auto isSurrogate = [](char16_t unit) { return (unit & 0xF800) == 0xD800; };
        std::replace_if(text.begin(), text.end(), isSurrogate, u'?');
        return jet::toUtf8(text);
    }

    /// Binary and GUID values are exported so; the last dash of a GUID is missing.
    static std::string inHex(std::string_view text) {
        std::string hex;
        for (const char c : text) {
            hex += "0123456789ABCDEF"[c / 16];
            hex += "0123456789ABCDEF"[c % 16];
        }
        return hex;
    }

    TemporaryFolder folder_;
};

using Strings = std::vector<std::string>;

TEST_F(Mdbtools, AcceptsTheEmptyDatabase) {
    FixtureBuilder builder;
    const std::string file = write(builder.bytes());
    EXPECT_EQ(names(file), Strings{});
    EXPECT_EQ(names(file, "--system"),
              (Strings{"MSysObjects", "MSysACEs", "MSysQueries", "MSysRelationships"}));
    EXPECT_EQ(exportTable(file, "MSysObjects").rows.size(), 8u);
    EXPECT_EQ(exportTable(file, "MSysACEs").rows.size(), 16u);
}

TEST_F(Mdbtools, ReadsEveryType) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(
        {.name = u"types",
         .columns = {column(u"yes", ColumnType::Boolean), column(u"byte", ColumnType::Byte),
                     column(u"short", ColumnType::Integer), column(u"long", ColumnType::Long),
                     column(u"money", ColumnType::Currency), column(u"single", ColumnType::Single),
                     column(u"double", ColumnType::Double), column(u"date", ColumnType::Date),
                     binaryColumn(u"bytes", 20), textColumn(u"text", 50),
                     fixedTextColumn(u"char", 4), column(u"ole", ColumnType::Ole),
                     memoColumn(u"memo"), column(u"guid", ColumnType::Guid),
                     numericColumn(u"decimal", 18, 3)}});
    jet::Guid guid;
    for (std::uint8_t i = 0; i < 16; ++i) guid.bytes[i] = i;
    table.insert({true, 200, -12345, -1234567890, jet::Currency{-12345678}, 1.5f, -0.25,
                  jet::Date{38839.75}, jet::Binary{1, 2, 255}, u"Zoë ☎", u"abcd", jet::Binary{9, 8},
                  u"a memo", guid,
                  jet::Numeric{.negative = true, .magnitude = {0, 0, 0, 12345678}}});
    table.insert({});
    const std::string file = write(builder.bytes());
    const PlainTable read = exportTable(file, "types");
    ASSERT_EQ(read.rows.size(), 2u);
    const PlainRow& first = read.rows[0];
    const Strings expected{"1",          "200",   "-12345", "-1234567890",
                           "-1234.5678", "1.5",   "-0.25",  "2006-05-02 18:00:00",
                           "0102FF",     "Zoë ☎", "abcd",   "0908",
                           "a memo"};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(toPlainField(first[i]), expected[i]) << i;
    EXPECT_EQ(first[13], inHex("{03020100-0504-0706-08090A0B0C0D0E0F}"));
    EXPECT_EQ(first[14], "-12345.678");
    EXPECT_EQ(read.rows[1][0], "0");
    for (std::size_t i = 1; i < 15; ++i) EXPECT_EQ(read.rows[1][i], std::nullopt) << i;
    EXPECT_NE(schema(file).find("types"), std::string::npos);
}

TEST_F(Mdbtools, ReadsRecordsOlderThanTheirColumns) {
    FixtureBuilder builder;
    TableBuilder& table =
        builder.addTable({.name = u"t", .columns = {column(u"n", ColumnType::Long)}});
    table.insert({1});
    table.addColumn(textColumn(u"name", 20));
    table.addColumn(column(u"flag", ColumnType::Boolean));
    table.insert({2, u"two", true});
    table.addColumn(column(u"when", ColumnType::Date));
    table.addColumn(memoColumn(u"note"));
    table.insert({3, u"three", true, jet::Date{1}, std::u16string(100, u'n')});
    const PlainTable read = exportTable(write(builder.bytes()), "t");
    const std::string note(100, 'n');
    EXPECT_EQ(read.rows,
              (std::vector<PlainRow>{{"1", std::nullopt, "0", std::nullopt, std::nullopt},
                                     {"2", "two", "1", std::nullopt, std::nullopt},
                                     {"3", "three", "1", "1899-12-31 00:00:00", note}}));
}

TEST_F(Mdbtools, ReadsTablesThatLostColumns) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable(
        {.name = u"t",
         .columns = {textColumn(u"a", 20), column(u"b", ColumnType::Long), textColumn(u"c", 20),
                     column(u"d", ColumnType::Long), memoColumn(u"e")}});
    table.insert({u"a1", 1, u"c1", 10, u"e1"});
    table.dropColumn(u"a");
    table.dropColumn(u"b");
    table.dropColumn(u"e");
    table.insert({u"c2", 20});
    const PlainTable read = exportTable(write(builder.bytes()), "t");
    EXPECT_EQ(read.columns, (Strings{"c", "d"}));
    EXPECT_EQ(read.rows, (std::vector<PlainRow>{{"c1", "10"}, {"c2", "20"}}));
}

TEST_F(Mdbtools, ReadsDeletedAndMovedRows) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable({.name = u"t",
                                            .columns = {textColumn(u"a", 200)},
                                            .indexes = {{.name = u"byA", .columns = {{u"a"}}}}});
    std::vector<jet::RowId> rows;
    rows.reserve(200);
    for (int i = 0; i < 200; ++i)
        rows.push_back(table.insert({u"row " + std::u16string(40, u'x')}));
    for (std::size_t i = 0; i < 200; i += 3) table.deleteRow(rows[i]);
    for (std::size_t i = 1; i < 200; i += 3) table.moveRow(rows[i], {std::u16string(150, u'm')});
    const std::string file = write(builder.bytes());
    const Strings read = column0(exportTable(file, "t"));
    EXPECT_EQ(read.size(), table.rowCount());
    EXPECT_EQ(std::count(read.begin(), read.end(), std::string(150, 'm')), 67);
    EXPECT_EQ(std::count(read.begin(), read.end(), "row " + std::string(40, 'x')), 66);
}

TEST_F(Mdbtools, ReadsLongValuesOfEveryForm) {
    FixtureBuilder builder;
    TableBuilder& table = builder.addTable({.name = u"t", .columns = {memoColumn(u"m", false)}});
    const std::u16string text = u"the same text in three places";
    for (const LongForm form : {LongForm::Inline, LongForm::Single, LongForm::Chain}) {
        table.insert({longValue(text, form)});
    }
    table.insert({std::u16string(70000, u'y')});
    const Strings read = column0(exportTable(write(builder.bytes()), "t"));
    const std::string same = jet::toUtf8(text);
    EXPECT_EQ(read, (Strings{same, same, same, std::string(70000, 'y')}));
}

TEST_F(Mdbtools, ReadsMixedCompression) {
    FixtureBuilder builder;
    TableBuilder& table =
        builder.addTable({.name = u"t", .columns = {textColumn(u"a", 50), memoColumn(u"m")}});
    const std::u16string mixed = u"abcdefg Фабрика and 日本 x";
    table.insert({mixed, mixed});
    table.insert({stored({0xFF, 0xFE, 'a', 0, 0x24, 0x04, 0, 'b'}), kNull});
    const PlainTable read = exportTable(write(builder.bytes()), "t");
    EXPECT_EQ(read.rows, (std::vector<PlainRow>{{jet::toUtf8(mixed), jet::toUtf8(mixed)},
                                                {"aФb", std::nullopt}}));
}

TEST_F(Mdbtools, ReadsDefinitionsOfManyPages) {
    FixtureBuilder builder;
    TableSpec spec{.name = u"wide"};
    Row row;
    for (int i = 0; i < 255; ++i) {
        const std::string name = "ColumnWithALongName" + std::to_string(i);
        spec.columns.push_back(textColumn({name.begin(), name.end()}, 10));
        row.push_back(u"v" + std::u16string(static_cast<std::size_t>(i % 3), u'w'));
    }
    TableBuilder& table = builder.addTable(spec);
    table.insert(row);
    const PlainTable read = exportTable(write(builder.bytes()), "wide");
    ASSERT_EQ(read.columns.size(), 255u);
    EXPECT_EQ(read.columns[254], "ColumnWithALongName254");
    ASSERT_EQ(read.rows.size(), 1u);
    EXPECT_EQ(read.rows[0][254], "vww");
}

TEST_F(Mdbtools, ReadsMapsOfEveryForm) {
    for (const MapForm form : {MapForm::Natural, MapForm::Inline, MapForm::Reference}) {
        FixtureBuilder builder;
        TableBuilder& table =
            builder.addTable({.name = u"t", .columns = {textColumn(u"a", 250)}, .maps = form});
        for (int i = 0; i < 12000; ++i) table.insert({std::u16string(250, u'a')});
        EXPECT_GT(table.dataPages().size(), 512u);
        EXPECT_EQ(exportTable(write(builder.bytes()), "t").rows.size(), 12000u);
    }
}

TEST_F(Mdbtools, ReadsACatalogOfManyPages) {
    FixtureBuilder builder;
    for (int i = 0; i < 120; ++i) {
        const std::string name = "table" + std::to_string(i);
        builder.addTable({.name = {name.begin(), name.end()}, .columns = {textColumn(u"a", 9)}})
            .insert({std::u16string{name.begin(), name.end()}});
    }
    builder.addCatalogRow({.id = 0x80000001, .name = u"aQuery", .type = 5});
    const std::string file = write(builder.bytes());
    EXPECT_EQ(names(file).size(), 120u);
    EXPECT_EQ(names(file, "--type=query"), Strings{"aQuery"});
    EXPECT_EQ(column0(exportTable(file, "table119")), Strings{"table119"});
}

TEST_F(Mdbtools, ReadsPrimaryKeysAndAutonumbers) {
    FixtureBuilder builder;
    ColumnSpec id = column(u"id", ColumnType::Long);
    id.autonumber = true;
    TableBuilder& table =
        builder.addTable({.name = u"t",
                          .columns = {id, textColumn(u"a", 20)},
                          .indexes = {{.name = u"PrimaryKey",
                                       .columns = {{u"id"}},
                                       .unique = true,
                                       .required = true,
                                       .primary = true},
                                      {.name = u"both", .columns = {{u"a"}, {u"id", false}}}}});
    for (int i = 1; i <= 100; ++i) table.insert({i, u"same"});
    const std::string file = write(builder.bytes());
    EXPECT_EQ(exportTable(file, "t").rows.size(), 100u);
    EXPECT_NE(
        run({"mdb-schema", "--indexes", "--no-relations", file, "postgres"}).find("PRIMARY KEY"),
        std::string::npos);
}

/// The plain form of a date, to the second.
std::string plainDate(jet::Date date) {
    const auto seconds = static_cast<std::int64_t>(std::llround(date.days * 86400));
    const std::int64_t days = seconds / 86400;
    const std::chrono::year_month_day day{std::chrono::sys_days{std::chrono::days{days - 25569}}};
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                  static_cast<int>(seconds % 86400 / 3600), static_cast<int>(seconds % 3600 / 60),
                  static_cast<int>(seconds % 60));
    return text;
}

class TraceDatabases : public Mdbtools, public testing::WithParamInterface<TraceFormat> {
protected:
    static PlainRow plainTrace(const Trace& trace, const TraceOrigin& origin, TraceFormat format) {
        const auto plain = [](const std::optional<std::u16string>& text) {
            return text ? std::optional{shown(*text)} : std::nullopt;
        };
        PlainRow row{plainDate(trace.date),   plain(origin.process),
                     plain(origin.source),    std::to_string(trace.number),
                     plain(origin.component), std::to_string(origin.level)};
        if (format != TraceFormat::Oldest) {
            row.push_back(trace.port ? std::optional{std::to_string(*trace.port)} : std::nullopt);
            row.push_back(plain(trace.callId));
        }
        row.push_back(plain(trace.text));
        if (format == TraceFormat::Newer) {
            row.push_back(trace.highlight ? "1" : "0");
            row.push_back(plain(origin.key()));
            row.push_back(trace.note ? "1" : "0");
            row.push_back(plain(trace.note));
        }
        return row;
    }
};

TEST_P(TraceDatabases, ComeBackRowForRow) {
    const TraceOptions options{.rows = 6000, .seed = 42};
    const std::string file = write(traceDatabase(options, GetParam()));
    const PlainTable read = exportTable(file, "tblTraces");
    ASSERT_EQ(read.rows.size(), options.rows);
    TraceGenerator generator{options};
    Trace trace;
    for (std::size_t i = 0; generator.next(trace); ++i) {
        ASSERT_EQ(read.rows[i], plainTrace(trace, generator.origins()[trace.origin], GetParam()))
            << i;
    }
    EXPECT_EQ(exportTable(file, "tblMacroTraces").rows.size(), macroTraces().size());
    if (GetParam() == TraceFormat::Newer) {
        const Strings process = column0(exportTable(file, "tblUniqueFilters"));
        EXPECT_GT(process.size(), 80u);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, TraceDatabases,
                         testing::Values(TraceFormat::Oldest, TraceFormat::Older,
                                         TraceFormat::Newer));

TEST_F(Mdbtools, ReadsADatabaseThatWasStreamedToAFile) {
    const TraceOptions options{.rows = 3000, .seed = 9};
    const std::filesystem::path streamed = folder_.path() / "streamed.mdb";
    writeTraceDatabase(streamed, options);
    const PlainTable fromMemory = exportTable(write(traceDatabase(options)), "tblTraces");
    EXPECT_EQ(exportTable(streamed.string(), "tblTraces").rows, fromMemory.rows);
    EXPECT_EQ(fromMemory.rows.size(), 3000u);
}

}  // namespace
}  // namespace fixture
