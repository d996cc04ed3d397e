// The order of one view over rows that it shares with others.
#include "engine/ado/view_order.h"

#include "tests/engine/ado/recordset_fixture.h"

namespace {

using namespace ado;

fixture::ByteVector numbersDatabase() {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Numbers",
         .columns = {fixture::column(u"N", jet::ColumnType::Long), fixture::memoColumn(u"Text")}});
    for (const std::int32_t number : {3, 1, 2}) {
        table.insert({number, std::u16string(1, char16_t(u'a' + number))});
    }
    return builder.bytes();
}

/// Rows of a table of which a test adds as many as it likes.
class ViewOrderTest : public testing::Test {
protected:
    ViewOrderTest() { add(2); }

    void add(int count) {
        RowStore& store = set.scanned()->store();
        std::vector<jet::LostField> lost;
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(scan.next());
            store.append(scan.rowId(), scan.record(), lost);
        }
        store.publish();
    }

    std::vector<std::int32_t> shown(const ViewOrder& order) {
        std::vector<std::int32_t> numbers;
        for (std::uint32_t i = 0; i < set.rows().count(); ++i) {
            numbers.push_back(std::get<std::int32_t>(set.rows().value(order.rowAt(i), 0)));
        }
        return numbers;
    }

    using Numbers = std::vector<std::int32_t>;

    TestConnection database{numbersDatabase()};
    RowSet set{sql::Query::prepare(database.connection.database(), u"SELECT N, Text FROM Numbers")};
    jet::TableScan scan{set.scanned()->table()};
};

TEST_F(ViewOrderTest, IsAtFirstThatOfTheFetch) {
    const ViewOrder order;
    EXPECT_EQ(shown(order), (Numbers{3, 1}));
    EXPECT_EQ(order.sortString(), u"");
    EXPECT_EQ(order.byteCount(), 0u);
}

TEST_F(ViewOrderTest, RowsThatComeLaterFollowUntilItSortsAgain) {
    ViewOrder order;
    order.sort(set, u"N ASC");
    EXPECT_FALSE(order.sortAgain(set)) << "there is nothing to sort";
    EXPECT_EQ(shown(order), (Numbers{1, 3}));
    add(1);
    EXPECT_EQ(shown(order), (Numbers{1, 3, 2}));
    EXPECT_TRUE(order.sortAgain(set));
    EXPECT_EQ(shown(order), (Numbers{1, 2, 3}));
    EXPECT_EQ(order.sortString(), u"N ASC");
    EXPECT_EQ(order.byteCount(), 3 * sizeof(std::uint32_t));
}

TEST_F(ViewOrderTest, NoSortIsNotSortedAgain) {
    ViewOrder order;
    order.sort(set, u"N DESC");
    order.sort(set, u"");
    add(1);
    EXPECT_FALSE(order.sortAgain(set));
    EXPECT_EQ(shown(order), (Numbers{3, 1, 2}));
}

TEST_F(ViewOrderTest, AStorageThatFailsLeavesTheOrderAsItIs) {
    ViewOrder order;
    order.sort(set, u"Text ASC");
    add(1);
    database.connection.database()->cache().clear();
    database.gate->failAlways();
    EXPECT_FALSE(order.sortAgain(set));
    EXPECT_THROW(order.sort(set, u"Text DESC"), jet::Error);
    EXPECT_EQ(order.sortString(), u"Text ASC");
    EXPECT_EQ(shown(order), (Numbers{1, 3, 2}));
}

TEST_F(ViewOrderTest, ViewsWithTheSameSortShareIt) {
    ViewOrder one;
    ViewOrder other;
    one.sort(set, u"N ASC");
    other.sort(set, u"n desc");
    EXPECT_EQ(one.rows().permutation(), other.rows().permutation());
    EXPECT_EQ(shown(other), (Numbers{3, 1}));
}

}  // namespace
