// Room that rows and long values give up is used again, and pages without room are left alone.
#include "engine/jet/usage_map.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"
#include "tests/support/damage.h"

#include <algorithm>

namespace jet {
namespace {

/// A record of one Binary column of n bytes takes n + 15 with its slot: ten of these fill a page.
constexpr std::size_t kTenth = 393;

class Rows : public Written {
public:
    Rows() {
        write([](WriteContext& context) {
            createTable(context, u"T",
                        {{.name = u"Id", .type = ColumnType::Long},
                         {.name = u"A", .type = ColumnType::Binary, .size = 510}});
        });
    }

    /// Works on the table in a statement of its own.
    void change(const std::function<void(TableWriter&)>& use) {
        write([&](WriteContext& context) {
            TableWriter writer{context, database->table(u"T")->definition()};
            use(writer);
            writer.finish();
        });
    }

    RowId add(std::size_t length) {
        RowId place;
        change([&](TableWriter& writer) { place = writer.insert(rowOf(length)); });
        return place;
    }

    void add(int count, std::size_t length) {
        change([&](TableWriter& writer) {
            for (int i = 0; i < count; ++i) places.push_back(writer.insert(rowOf(length)));
        });
    }

    void resize(RowId place, std::size_t length) {
        change([&](TableWriter& writer) {
            const Assignments changes{{1, Binary(length, 3)}};
            writer.update(place, changes);
        });
    }

    static std::vector<Value> rowOf(std::size_t length) {
        return row(std::int32_t{7}, Binary(length, 2));
    }

    std::vector<PageNumber> pages() { return database->table(u"T")->dataPages(); }

    std::vector<PageNumber> pagesWithRoom() {
        PageReader reader{database->storage(), database->cache()};
        return readUsageMap(reader, database->table(u"T")->definition().freeMap);
    }

    std::vector<RowId> places;
};

TEST(Room, FullPagesAreNoLongerLookedAt) {
    Rows rows;
    rows.add(100, kTenth);
    EXPECT_EQ(rows.pages().size(), 10u);
    EXPECT_EQ(rows.pagesWithRoom(), std::vector{rows.pages().back()});
    rows.expectClean();
}

TEST(Room, APageFillsUpOverManyStatements) {
    Rows rows;
    for (int i = 0; i < 10; ++i) rows.add(kTenth);
    EXPECT_EQ(rows.pages().size(), 1u);
}

TEST(Room, OfARowThatWasRemoved) {
    Rows rows;
    rows.add(100, kTenth);
    rows.change([&](TableWriter& writer) { writer.remove(rows.places[34]); });
    EXPECT_EQ(rows.add(kTenth).page(), rows.places[34].page());
    EXPECT_EQ(rows.pages().size(), 10u);
    rows.expectClean();
}

TEST(Room, OfARowThatGotShorter) {
    Rows rows;
    rows.add(100, kTenth);
    rows.resize(rows.places[34], 100);
    EXPECT_EQ(rows.add(200).page(), rows.places[34].page());
    // Changed together with all others: there is room on every page.
    rows.change([](TableWriter& writer) {
        writer.updateRows([](const Record&, PageReader&, Assignments& changes) {
            changes.push_back({1, Binary(100, 4)});
            return true;
        });
    });
    EXPECT_EQ(rows.pagesWithRoom(), rows.pages());
    rows.expectClean();
}

TEST(Room, OfARowThatGotShorterWhereItHadMovedTo) {
    Rows rows;
    rows.add(10, kTenth);
    rows.resize(rows.places[4], 500);
    ASSERT_EQ(rows.pages().size(), 2u);
    const PageNumber second = rows.pages()[1];
    rows.add(8, kTenth);
    rows.add(1, 270);  // leaves 18 bytes, which the next row finds out
    rows.add(10, kTenth);
    ASSERT_EQ(rows.pages().size(), 3u);
    const auto withRoom = rows.pagesWithRoom();
    ASSERT_EQ(std::ranges::find(withRoom, second), withRoom.end());
    rows.resize(rows.places[4], 20);
    EXPECT_EQ(rows.add(kTenth).page(), second);
    rows.expectClean();
}

// Of the pages that may have room, more than the last one is tried.
TEST(Room, OnAPageBeforeTheLastOne) {
    Rows rows;
    rows.add(100, kTenth);
    rows.change([&](TableWriter& writer) { writer.remove(rows.places[34]); });
    rows.change([&](TableWriter& writer) { writer.remove(rows.places[54]); });
    EXPECT_EQ(rows.add(200).page(), rows.places[54].page());  // which keeps some
    EXPECT_EQ(rows.add(kTenth).page(), rows.places[34].page());
    EXPECT_EQ(rows.pages().size(), 10u);
}

// Rows that move share the pages that they move to, and leave the others their room.
TEST(Room, RowsThatMoveShareTheirPages) {
    Rows rows;
    rows.add(40, 80);
    ASSERT_EQ(rows.pages().size(), 1u);
    rows.change([](TableWriter& writer) {
        writer.updateRows([](const Record&, PageReader&, Assignments& changes) {
            changes.push_back({1, Binary(180, 4)});
            return true;
        });
    });
    EXPECT_EQ(rows.pages().size(), 2u);
    rows.expectClean();
}

// updateRows alone has reason to leave room unused.
TEST(Room, IsUsedAfterManyRowsWereChanged) {
    Rows rows;
    rows.add(3, kTenth);
    rows.change([](TableWriter& writer) {
        writer.updateRows([](const Record&, PageReader&, Assignments&) { return false; });
        writer.insert(Rows::rowOf(kTenth));
    });
    EXPECT_EQ(rows.pages().size(), 1u);
}

// However small they are, a page takes 255 rows.
TEST(Room, APageWithAllItsSlotsHasNone) {
    Written file;
    file.write([](WriteContext& context) {
        createTable(context, u"T", {{.name = u"X", .type = ColumnType::Boolean}});
    });
    file.insert(u"T", std::vector<std::vector<Value>>(600, row(true)));
    const auto table = file.database->table(u"T");
    PageReader reader = table->pageReader();
    EXPECT_EQ(readUsageMap(reader, table->definition().freeMap),
              std::vector{table->dataPages().back()});
}

// ---- Long values --------------------------------------------------------------------------------

/// Four values of 1,010 bytes fill a page.
constexpr std::size_t kFourth = 1010;

class Values : public Written {
public:
    explicit Values(const std::vector<std::uint8_t>& bytes) : Written{bytes} {}
    Values() {
        write([](WriteContext& context) {
            for (const char16_t* name : {u"T", u"U"}) {
                createTable(context, name,
                            {{.name = u"Id", .type = ColumnType::Long},
                             {.name = u"M", .type = ColumnType::Ole}});
            }
        });
    }

    void change(const std::function<void(TableWriter&)>& use, std::u16string_view name = u"T") {
        write([&](WriteContext& context) {
            TableWriter writer{context, database->table(name)->definition()};
            use(writer);
            writer.finish();
        });
    }

    void add(int count, std::size_t length, std::u16string_view name = u"T") {
        change(
            [&](TableWriter& writer) {
                for (int i = 0; i < count; ++i) places.push_back(writer.insert(rowOf(length)));
            },
            name);
    }

    void remove(RowId place) {
        change([&](TableWriter& writer) { writer.remove(place); });
    }

    static std::vector<Value> rowOf(std::size_t length) {
        return row(std::int32_t{7}, Binary(length, 2));
    }

    const Column& column(std::u16string_view name = u"T") {
        table_ = database->table(name);
        return table_->definition().columns[1];
    }
    std::vector<PageNumber> pages(std::u16string_view name = u"T") {
        return setOf(column(name).ownedMap);
    }
    std::vector<PageNumber> pagesWithRoom() { return setOf(column().freeMap); }

    std::vector<PageNumber> setOf(RowId map) {
        PageReader reader{database->storage(), database->cache()};
        return readUsageMap(reader, map);
    }

    std::vector<RowId> places;

private:
    std::shared_ptr<const Table> table_;
};

TEST(RoomOfLongValues, FullPagesAreNoLongerLookedAt) {
    Values values;
    values.add(40, kFourth);
    EXPECT_EQ(values.pages().size(), 10u);
    EXPECT_EQ(values.pagesWithRoom(), std::vector{values.pages().back()});
    values.expectClean();
}

TEST(RoomOfLongValues, APageFillsUpOverManyStatements) {
    Values values;
    for (int i = 0; i < 4; ++i) values.add(1, kFourth);
    EXPECT_EQ(values.pages().size(), 1u);
}

// Two pages have room again, but one of them not enough for the next value.
TEST(RoomOfLongValues, OfAValueThatWasRemoved) {
    Values values;
    values.add(40, kFourth);
    values.remove(values.places[13]);
    values.remove(values.places[25]);
    values.add(1, 500);
    values.add(1, kFourth);
    EXPECT_EQ(values.pages().size(), 10u);
    values.expectClean();
}

// Less room than is worth a look does not bring a page back.
TEST(RoomOfLongValues, OfASmallValue) {
    Values values;
    values.add(1, 65);
    values.add(3, kFourth);
    values.add(1, 963);  // leaves 14 bytes
    values.add(1, kFourth);
    ASSERT_EQ(values.pages().size(), 2u);
    ASSERT_EQ(values.pagesWithRoom(), std::vector{values.pages()[1]});
    values.remove(values.places[0]);
    EXPECT_EQ(values.pagesWithRoom(), std::vector{values.pages()[1]});
}

// The page of the value that was written last is gone with it.
TEST(RoomOfLongValues, OfThePageThatWasWrittenLast) {
    Values values;
    values.change([](TableWriter& writer) {
        writer.remove(writer.insert(Values::rowOf(kFourth)));
        writer.insert(Values::rowOf(kFourth));
    });
    values.expectClean();
    EXPECT_EQ(values.pages().size(), 1u);
}

// The second value of the page begins where no value can.
TEST(RoomOfLongValues, APageWithADamagedValueTakesNoOthers) {
    Values values;
    values.add(2, 500);
    values.database->commit();
    std::vector<std::uint8_t> bytes = values.bytes();
    const std::size_t page = std::size_t{raw(values.pages()[0])} * kPageSize;
    bytes[page + 14 + 2] = 0xFF;
    bytes[page + 14 + 3] = 0x0F;
    Values damaged{bytes};
    damaged.add(1, 500);
    damaged.database->commit();
    EXPECT_TRUE(std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(page),
                           bytes.begin() + static_cast<std::ptrdiff_t>(page + kPageSize),
                           damaged.bytes().begin() + static_cast<std::ptrdiff_t>(page)));
}

// A row whose value belongs to another table takes nothing of that along.
TEST(RoomOfLongValues, ValuesOfOthersAreLeftAlone) {
    Values values;
    values.add(1, kFourth, u"T");
    values.add(2, kFourth, u"U");
    values.database->commit();
    std::vector<std::uint8_t> bytes = values.bytes();
    const RowId foreign{values.pages(u"U")[0], 0};
    fixture::poke32(bytes, fixture::longValueHeaderOffset(bytes, values.places[0], 0) + 4,
                    foreign.packed());
    Values damaged{bytes};
    damaged.remove(values.places[0]);
    const auto rows = damaged.rows(u"U");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0][1], rows[1][1]);
}

}  // namespace
}  // namespace jet
