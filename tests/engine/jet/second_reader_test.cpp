// Every table of the sample databases and of built ones, held against what mdb-export reads there.
// Under Windows no test starts other programs.
#ifndef _WIN32
#include "tests/engine/jet/second_reader.h"

#include "tests/engine/jet/sample_files.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/random.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace jet {
namespace {

using fixture::TemporaryFolder;

class SecondReader : public testing::TestWithParam<std::filesystem::path> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SecondReader);

TEST_P(SecondReader, AgreesOnEveryTable) {
    if (!fixture::hasProgram("mdb-export")) {
        GTEST_SKIP() << kNotInstalled;
    }
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
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    if (!fixture::hasProgram("mdb-export")) {
        GTEST_SKIP() << kNotInstalled;
    }
    const auto file = *folder / "old-orphans.mdb";
    const auto table = Database::open(file)->table(u"tblTraces");
    const auto ours = ourRows(*table);
    const auto theirs = theirRows(*table, exported(file, u"tblTraces"));
    EXPECT_TRUE(std::includes(theirs.begin(), theirs.end(), ours.begin(), ours.end()));
    EXPECT_EQ(theirs.size(), ours.size() + 68);
}

TEST(SecondReader, AgreesOnBuiltTraceDatabases) {
    if (!fixture::hasProgram("mdb-export")) {
        GTEST_SKIP() << kNotInstalled;
    }
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
    if (!fixture::hasProgram("mdb-export")) {
        GTEST_SKIP() << kNotInstalled;
    }
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
