// Any cell by position and field, without a current record.
#include "engine/ado/cells.h"

#include "tests/engine/ado/recordset_fixture.h"

namespace {

using namespace ado;

fixture::ByteVector itemsDatabase() {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Items",
         .columns = {fixture::column(u"Id", jet::ColumnType::Long), fixture::memoColumn(u"Text")}});
    table.insert({1, u"beta"});
    table.insert({2, fixture::kNull});
    table.insert({3, u""});
    table.insert({4, u"alpha"});
    return builder.bytes();
}

class CellsTest : public testing::Test {
protected:
    CellsTest() {
        Fetch{set.query(), set.scanned(), {}}.runHere();
        order = set.orders().order(set.rows(), {{.column = 0, .descending = true}});
    }

    std::u16string line(std::uint32_t position, std::u16string_view nullText) {
        std::u16string out = u">";
        cells.appendLine(position, ValueFormatter{}, u"|", nullText, out);
        return out;
    }

    TestConnection database{itemsDatabase()};
    RowSet set{sql::Query::prepare(database.connection.database(), u"SELECT * FROM Items")};
    RowOrder order;
    const Cells cells{set, order};
};

TEST_F(CellsTest, AreReadByPositionAndField) {
    std::u16string text = u"old";
    EXPECT_EQ(cells.value(0, 0), jet::Value{std::int32_t{4}});
    EXPECT_TRUE(cells.text(0, 1, ValueFormatter{}, text));
    EXPECT_EQ(text, u"alpha");
    EXPECT_TRUE(cells.text(2, 1, ValueFormatter{}, text)) << "Null is a value";
    EXPECT_EQ(text, u"");
}

TEST_F(CellsTest, ThatDoNotExistAreEmpty) {
    std::u16string text = u"old";
    EXPECT_FALSE(cells.text(4, 0, ValueFormatter{}, text));
    EXPECT_EQ(text, u"");
    text = u"old";
    EXPECT_FALSE(cells.text(0, 2, ValueFormatter{}, text));
    EXPECT_EQ(text, u"");
    EXPECT_TRUE(jet::isNull(cells.value(4, 0)));
    EXPECT_TRUE(jet::isNull(cells.value(0, 2)));
}

TEST_F(CellsTest, ThatCannotBeReadAreEmpty) {
    database.connection.database()->cache().clear();
    database.gate->failAlways();
    std::u16string text = u"old";
    EXPECT_FALSE(cells.text(0, 1, ValueFormatter{}, text));
    EXPECT_EQ(text, u"");
    EXPECT_TRUE(jet::isNull(cells.value(0, 1)));
    EXPECT_THROW(line(0, u""), jet::Error);
    EXPECT_THROW(cells.ranks(1), jet::Error);
}

TEST_F(CellsTest, MakeALineOfAllFields) {
    EXPECT_EQ(line(0, u"none"), u">4|alpha");
    EXPECT_EQ(line(1, u"none"), u">3|") << "an empty text is not Null";
    EXPECT_EQ(line(2, u"none"), u">2|none");
    EXPECT_EQ(line(2, u""), u">2|");
}

TEST_F(CellsTest, HaveRanksByPosition) {
    EXPECT_EQ(cells.ranks(0), (std::vector<std::uint32_t>{3, 2, 1, 0}));
    EXPECT_EQ(cells.ranks(1), (std::vector<std::uint32_t>{2, 1, 0, 3}));
}

}  // namespace
