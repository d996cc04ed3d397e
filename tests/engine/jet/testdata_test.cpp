// Every table of the sample databases, held against what it is known to contain.
#include "tests/engine/jet/plain_value.h"
#include "tests/engine/jet/sample_files.h"

#include <gmock/gmock.h>

#include <set>

namespace jet {
namespace {

using fixture::PlainRow;
using fixture::PlainTable;
using testing::ElementsAreArray;

std::string shown(const PlainRow& row) {
    std::string text;
    for (const auto& field : row) text += fixture::toPlainField(field) + " | ";
    return text;
}

bool isNumber(const Column& column) {
    switch (column.type) {
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
        case ColumnType::Single:
        case ColumnType::Double:
            return true;
        default:
            return false;
    }
}

/// Numbers are the same by value: 0 and 0.0, 1e3 and 1000.
std::optional<std::string> spelledAlike(const Column& column,
                                        const std::optional<std::string>& field) {
    if (!field) return field;
    if (isNumber(column)) return plainNumber(std::strtod(field->c_str(), nullptr));
    const bool decimal = column.type == ColumnType::Numeric || column.type == ColumnType::Currency;
    return decimal ? withoutTrailingZeros(*field) : *field;
}

/// The rows with numbers in one spelling.
std::vector<PlainRow> normalized(std::vector<PlainRow> rows, const TableDefinition& definition) {
    for (PlainRow& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = spelledAlike(definition.columns[i], row[i]);
    }
    return rows;
}

enum class Order { Storage, Any };

void expectTable(Database& database, std::u16string_view name,
                 const std::filesystem::path& expectation, Order order) {
    SCOPED_TRACE(toUtf8(name));
    const auto table = database.table(name);
    const PlainTable expected = fixture::readPlainTable(expectation);
    ASSERT_THAT(columnNames(*table), ElementsAreArray(expected.columns));
    std::vector<PlainRow> wanted = normalized(expected.rows, table->definition());
    std::vector<PlainRow> found = normalized(plainRows(*table), table->definition());
    ASSERT_EQ(found.size(), wanted.size());
    if (order == Order::Any) {
        std::sort(wanted.begin(), wanted.end());
        std::sort(found.begin(), found.end());
    }
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        ASSERT_TRUE(found[i] == wanted[i])
            << "row " << i << "\nfound    " << shown(found[i]) << "\nexpected " << shown(wanted[i]);
    }
}

std::filesystem::path sibling(std::filesystem::path database, std::string_view ending) {
    return database.replace_extension(ending);
}

std::string testName(const testing::TestParamInfo<std::filesystem::path>& info) {
    std::string name = info.param.stem().string();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}

/// The sample databases that have `ending` beside them, a file or a folder.
std::vector<std::filesystem::path> databasesWith(std::string_view ending) {
    std::vector<std::filesystem::path> found = sample::databases();
    std::erase_if(
        found, [&](const auto& path) { return !std::filesystem::exists(sibling(path, ending)); });
    return found;
}

TEST(Samples, AreThere) {
    if (!fixture::testDataFolder()) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    EXPECT_GE(databasesWith(".traces.tsv").size(), 15u);
    EXPECT_GE(databasesWith(".schema.txt").size(), 13u);
}

class TraceSample : public testing::TestWithParam<std::filesystem::path> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TraceSample);

TEST_P(TraceSample, HoldsItsTraces) {
    const auto database = Database::open(GetParam());
    expectTable(*database, u"tblTraces", sibling(GetParam(), ".traces.tsv"), Order::Storage);
}

TEST_P(TraceSample, HoldsItsMacroTraces) {
    const auto database = Database::open(GetParam());
    expectTable(*database, u"tblMacroTraces", sibling(GetParam(), ".macros.txt"), Order::Storage);
}

/// Reads everything there is, system tables included: nothing is damaged.
TEST_P(TraceSample, AllTablesCanBeRead) {
    const auto database = Database::open(GetParam());
    for (const CatalogEntry& entry : database->catalog()) {
        if (!entry.isTable()) continue;
        SCOPED_TRACE(toUtf8(entry.name));
        const auto table = database->table(entry.name);
        EXPECT_GE(plainRows(*table).size(), table->definition().rowCount);
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, TraceSample, testing::ValuesIn(databasesWith(".traces.tsv")),
                         testName);

TEST(Samples, UniqueFiltersOfAnUpgradedDatabase) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    const auto database = Database::open(*folder / "newer-basic.mdb");
    expectTable(*database, u"tblUniqueFilters", *folder / "newer-basic.unique.tsv", Order::Any);
}

class AccessSample : public testing::TestWithParam<std::filesystem::path> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(AccessSample);

TEST_P(AccessSample, HoldsItsTables) {
    const auto database = Database::open(GetParam());
    std::vector<std::string> expectations;
    for (const auto& name : userTables(*database)) {
        const auto file = sibling(GetParam(), "") / (toUtf8(name) + ".tsv");
        expectTable(*database, name, file, Order::Any);
        expectations.push_back(file.filename().string());
    }
    std::vector<std::string> files;
    if (std::filesystem::exists(sibling(GetParam(), ""))) {
        for (const auto& file : std::filesystem::directory_iterator{sibling(GetParam(), "")}) {
            files.push_back(file.path().filename().string());
        }
    }
    EXPECT_THAT(files, testing::UnorderedElementsAreArray(expectations));
}

TEST_P(AccessSample, SystemTablesCanBeRead) {
    const auto database = Database::open(GetParam());
    std::set<std::u16string> names;
    for (const CatalogEntry& entry : database->catalog()) {
        if (!entry.isTable() || entry.isUserTable()) continue;
        SCOPED_TRACE(toUtf8(entry.name));
        const auto table = database->table(entry.name);
        EXPECT_GE(plainRows(*table).size(), table->definition().rowCount);
        if (table->definition().system) names.insert(entry.name);
    }
    for (const char16_t* name :
         {u"MSysObjects", u"MSysACEs", u"MSysQueries", u"MSysRelationships"}) {
        EXPECT_TRUE(names.contains(name)) << toUtf8(name);
    }
    EXPECT_EQ(plainRows(*database->table(u"MSysObjects")).size(), database->catalog().size());
}

INSTANTIATE_TEST_SUITE_P(Samples, AccessSample, testing::ValuesIn(databasesWith(".schema.txt")),
                         testName);

}  // namespace
}  // namespace jet
