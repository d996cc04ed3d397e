#include "engine/jet/database.h"
#include "engine/jet/table.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/plain_value.h"
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace jet {
namespace {

using fixture::ByteVector;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::SizeIs;

std::shared_ptr<Database> open(const ByteVector& file) {
    return Database::open(std::make_unique<MemoryStorage>(file));
}

/// A table of numbers, each with a text of `padding` characters and a memo of 100.
struct Numbers {
    fixture::FixtureBuilder builder;
    fixture::TableBuilder& table;
    std::vector<RowId> ids;

    explicit Numbers(int count, std::size_t padding = 0,
                     fixture::MapForm maps = fixture::MapForm::Natural)
        : table{builder.addTable({.name = u"Numbers",
                                  .columns = {fixture::column(u"N", ColumnType::Long),
                                              fixture::textColumn(u"Padding", 255, false),
                                              fixture::memoColumn(u"Note")},
                                  .maps = maps})} {
        for (int n = 0; n < count; ++n) ids.push_back(table.insert(row(n, padding)));
    }

    static fixture::Row row(int n, std::size_t padding = 0) {
        return {n, std::u16string(padding, u'p'),
                std::u16string(100, static_cast<char16_t>(u'A' + n % 26))};
    }

    RowId id(int n) const { return ids[static_cast<std::size_t>(n)]; }
};

struct Scanned {
    std::vector<int> numbers;
    std::vector<RowId> ids;
    Losses losses;
};

/// Reads all rows of "Numbers" whole, and counts those that are damaged in a field.
Scanned scanAll(const ByteVector& file) {
    const auto database = open(file);
    const auto table = database->table(u"Numbers");
    Scanned scanned;
    TableScan scan{*table};
    while (scan.next()) {
        try {
            const std::vector<Value> values = valuesOf(scan, table->definition());
            scanned.numbers.push_back(std::get<std::int32_t>(values.at(0)));
            scanned.ids.push_back(scan.rowId());
        } catch (const Error& error) {
            EXPECT_EQ(error.fault(), Fault::Damaged);
            scan.loseRow(error);
        }
    }
    scanned.losses = scan.losses();
    return scanned;
}

std::vector<int> upTo(int count) {
    std::vector<int> numbers(static_cast<std::size_t>(count));
    for (int n = 0; n < count; ++n) numbers[static_cast<std::size_t>(n)] = n;
    return numbers;
}

TEST(TableScan, AnEmptyTable) {
    Numbers numbers{0};
    const Scanned scanned = scanAll(numbers.builder.bytes());
    EXPECT_THAT(scanned.numbers, IsEmpty());
    EXPECT_EQ(scanned.losses.rows + scanned.losses.pages, 0u);
}

TEST(TableScan, RowsInStorageOrder) {
    Numbers numbers{1000, 30};
    const Scanned scanned = scanAll(numbers.builder.bytes());
    EXPECT_EQ(scanned.numbers, upTo(1000));
    EXPECT_EQ(scanned.ids, numbers.ids);
    EXPECT_EQ(scanned.losses.rows + scanned.losses.pages, 0u);
}

TEST(TableScan, BothKindsOfMap) {
    for (const auto form : {fixture::MapForm::Inline, fixture::MapForm::Reference}) {
        Numbers numbers{3000, 200, form};
        EXPECT_EQ(scanAll(numbers.builder.bytes()).numbers, upTo(3000));
    }
}

TEST(TableScan, DeletedRowsAreGone) {
    Numbers numbers{20};
    for (int n : {0, 7, 8, 19}) numbers.table.deleteRow(numbers.id(n));
    EXPECT_THAT(scanAll(numbers.builder.bytes()).numbers,
                ElementsAre(1, 2, 3, 4, 5, 6, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18));
}

TEST(TableScan, AMovedRowIsMetWhereItsPointerStands) {
    Numbers numbers{40, 60};
    for (int n : {0, 5, 39}) numbers.table.moveRow(numbers.id(n), Numbers::row(n + 1000, 250));
    numbers.table.moveRow(numbers.id(5), Numbers::row(2005, 250));
    std::vector<int> expected = upTo(40);
    expected[0] = 1000;
    expected[5] = 2005;
    expected[39] = 1039;
    const Scanned scanned = scanAll(numbers.builder.bytes());
    EXPECT_EQ(scanned.numbers, expected);
    EXPECT_EQ(scanned.ids, numbers.ids);
}

TEST(TableScan, RecordsMarkedAsMovedThatNothingPointsToAreNoRows) {
    Numbers numbers{10};
    for (int i = 0; i < 5; ++i) numbers.table.insertOrphan(Numbers::row(99));
    const Scanned scanned = scanAll(numbers.builder.bytes());
    EXPECT_EQ(scanned.numbers, upTo(10));
    EXPECT_EQ(scanned.losses.rows, 0u);
}

TEST(TableScan, RowsFromBeforeAColumnWasAdded) {
    Numbers numbers{3};
    numbers.table.addColumn(fixture::textColumn(u"Late", 20));
    numbers.table.addColumn(fixture::column(u"Flag", ColumnType::Boolean));
    numbers.table.addColumn(fixture::column(u"Amount", ColumnType::Double));
    fixture::Row row = Numbers::row(3);
    row.insert(row.end(), {u"text", true, 2.5});
    numbers.table.insert(row);
    const auto database = open(numbers.builder.bytes());
    const auto rows = plainRows(*database->table(u"Numbers"));
    ASSERT_THAT(rows, SizeIs(4));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(rows[i][3], std::nullopt);
        EXPECT_EQ(rows[i][4], "0");
        EXPECT_EQ(rows[i][5], std::nullopt);
    }
    EXPECT_EQ(rows[3][3], "text");
    EXPECT_EQ(rows[3][4], "1");
    EXPECT_EQ(rows[3][5], "2.5");
}

TEST(TableScan, RecordsKeepTheBytesOfADroppedColumn) {
    Numbers numbers{2};
    numbers.table.dropColumn(u"Padding");
    numbers.table.insert({2, std::u16string{u"note"}});
    const auto database = open(numbers.builder.bytes());
    const auto rows = plainRows(*database->table(u"Numbers"));
    ASSERT_THAT(rows, SizeIs(3));
    EXPECT_THAT(rows[2], ElementsAre("2", "note"));
    EXPECT_EQ(rows[1][1], std::string(100, 'B'));
}

TEST(TableScan, LongValuesOfEveryForm) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"Memos", .columns = {fixture::memoColumn(u"M")}});
    std::vector<std::string> expected;
    for (const auto form :
         {fixture::LongForm::Inline, fixture::LongForm::Single, fixture::LongForm::Chain}) {
        const std::size_t length = form == fixture::LongForm::Chain ? 30000 : 900;
        table.insert({fixture::longValue(std::u16string(length, u'z'), form)});
        expected.push_back(std::string(length, 'z'));
    }
    const auto database = open(builder.bytes());
    const auto rows = plainRows(*database->table(u"Memos"));
    ASSERT_THAT(rows, SizeIs(3));
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(rows[i][0], expected[i]);
}

// --- A part of the pages ---------------------------------------------------------------------

TEST(TableScan, ThreadsShareThePages) {
    Numbers numbers{2000, 100};
    const auto database = open(numbers.builder.bytes());
    const auto table = database->table(u"Numbers");
    const std::vector<PageNumber> pages = table->dataPages();
    ASSERT_GT(pages.size(), 100u);
    std::atomic<int> sum = 0;
    std::atomic<int> count = 0;
    std::vector<std::thread> threads;
    for (std::size_t part = 0; part < 3; ++part) {
        const std::size_t begin = pages.size() * part / 3;
        const std::size_t end = pages.size() * (part + 1) / 3;
        threads.emplace_back([&, begin, end] {
            TableScan scan{*table, std::span{pages}.subspan(begin, end - begin)};
            while (scan.next()) {
                sum += std::get<std::int32_t>(valuesOf(scan, table->definition()).at(0));
                ++count;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(count, 2000);
    EXPECT_EQ(sum, 1999 * 2000 / 2);
}

// The pages of a list that does not ascend were looked for in a block that did not hold them.
TEST(TableScan, PagesInAnyOrder) {
    Numbers numbers{400, 200};
    const auto database = open(numbers.builder.bytes());
    const auto table = database->table(u"Numbers");
    std::vector<PageNumber> pages = table->dataPages();
    std::reverse(pages.begin(), pages.end());
    std::swap(pages[3], pages[7]);
    std::vector<int> found;
    TableScan scan{*table, pages};
    while (scan.next()) {
        // Long values are read between: they must not take the row's own page away.
        const std::vector<Value> values = valuesOf(scan, table->definition());
        found.push_back(std::get<std::int32_t>(valuesOf(scan, table->definition()).at(0)));
        EXPECT_EQ(std::get<std::int32_t>(values.at(0)), found.back());
    }
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, upTo(400));
}

// --- Damage ----------------------------------------------------------------------------------

TEST(DamagedTable, APageOfAnotherKindIsSkipped) {
    Numbers numbers{1000, 100};
    ByteVector file = numbers.builder.bytes();
    const auto& pages = numbers.table.dataPages();
    ASSERT_GT(pages.size(), 10u);
    fixture::poke(file, fixture::pageOffset(pages[3]), {0x02});
    fixture::poke32(file, fixture::pageOffset(pages[5]) + 4, 0x4C41564C);
    fixture::poke16(file, fixture::pageOffset(pages[7]) + 12, 0xFFFF);
    const Scanned scanned = scanAll(file);
    EXPECT_EQ(scanned.losses.pages, 3u);
    EXPECT_EQ(scanned.losses.rows, 0u);
    const std::size_t onAPage = 1000 / (pages.size() - 1);
    EXPECT_THAT(scanned.numbers, SizeIs(AllOf(Ge(1000 - 3 * onAPage - 6), Le(1000u))));
}

TEST(DamagedTable, ARowOutsideItsPageIsSkipped) {
    Numbers numbers{100, 100};
    ByteVector file = numbers.builder.bytes();
    fixture::poke16(file, fixture::slotOffset(numbers.id(2)), 5);
    const Scanned scanned = scanAll(file);
    EXPECT_EQ(scanned.losses.rows, 2u);  // and the one below, which ends where it begins
    EXPECT_THAT(scanned.numbers, SizeIs(98));
}

TEST(DamagedTable, ARecordThatMakesNoSenseIsSkipped) {
    Numbers numbers{100, 100};
    ByteVector file = numbers.builder.bytes();
    fixture::poke16(file, fixture::rowOffset(file, numbers.id(2)), 0xFFFF);
    // How many variable columns it has is known from the table.
    const std::size_t end =
        fixture::rowOffset(file, numbers.id(4)) + fixture::rowLength(file, numbers.id(4));
    fixture::poke16(file, end - 3, 0x7FFF);
    const Scanned scanned = scanAll(file);
    EXPECT_EQ(scanned.losses.rows, 1u);
    std::vector<int> expected = upTo(100);
    std::erase_if(expected, [](int n) { return n == 2; });
    EXPECT_EQ(scanned.numbers, expected);
}

TEST(DamagedTable, ADamagedLongValueCostsItsRowOnly) {
    Numbers numbers{100};
    ByteVector file = numbers.builder.bytes();
    const std::size_t header = fixture::longValueHeaderOffset(file, numbers.id(50), 1);
    fixture::poke32(file, header + 4, 0xFFFFFFFF);
    const Scanned scanned = scanAll(file);
    EXPECT_EQ(scanned.losses.rows, 1u);
    EXPECT_THAT(scanned.numbers, SizeIs(99));
}

TEST(DamagedTable, PointersThatLeadNowhere) {
    Numbers numbers{40, 60};
    for (int n : {3, 4, 5, 6}) numbers.table.moveRow(numbers.id(n), Numbers::row(n, 250));
    ByteVector file = numbers.builder.bytes();
    fixture::poke32(file, fixture::rowOffset(file, numbers.id(3)),
                    numbers.id(3).packed());  // itself
    fixture::poke32(file, fixture::rowOffset(file, numbers.id(4)), 0xFFFFFF00);
    fixture::poke32(file, fixture::rowOffset(file, numbers.id(5)), numbers.id(0).packed());
    const Scanned scanned = scanAll(file);
    EXPECT_EQ(scanned.losses.rows, 3u);
    // The records themselves are found at the end.
    std::vector<int> expected = upTo(40);
    expected.erase(expected.begin() + 3, expected.begin() + 6);
    expected.insert(expected.end(), {3, 4, 5});
    EXPECT_EQ(scanned.numbers, expected);
}

TEST(DamagedTable, SlotsThatAllHaveTheSameBytes) {
    Numbers numbers{100, 10};
    ByteVector file = numbers.builder.bytes();
    const PageNumber page = numbers.table.dataPages().front();
    fixture::poke16(file, fixture::pageOffset(page) + 12, 255);
    for (unsigned slot = 0; slot < 255; ++slot) {
        fixture::poke16(file, fixture::slotOffset({page, slot}), slot % 2 == 0 ? 600 : 4096);
    }
    const Scanned scanned = scanAll(file);
    EXPECT_LE(scanned.ids.size(), 255u + 100u);
    EXPECT_GE(scanned.losses.rows, 120u);
}

TEST(DamagedTable, AMapThatListsEveryPage) {
    Numbers numbers{1000, 100};
    ByteVector file = numbers.builder.bytes();
    const RowId map = numbers.table.parts().maps.owned;
    const std::size_t row = fixture::rowOffset(file, map);
    std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(row + 5),
                fixture::rowLength(file, map) - 5, std::uint8_t{0xFF});
    const Scanned scanned = scanAll(file);
    EXPECT_EQ(scanned.numbers, upTo(1000));
    // All pages but page 0, those of the table, and those that only the map knows.
    EXPECT_EQ(scanned.losses.pages, 512 - 1 - numbers.table.dataPages().size());
}

// --- One row by its identity -----------------------------------------------------------------

TEST(TableFind, RowsThatAScanGave) {
    Numbers numbers{200, 50};
    for (int n : {10, 11}) numbers.table.moveRow(numbers.id(n), Numbers::row(n, 250));
    const auto database = open(numbers.builder.bytes());
    const auto table = database->table(u"Numbers");
    PageReader reader = table->pageReader();
    for (int n : {0, 10, 11, 150, 199, 3}) {
        Record record;
        ASSERT_TRUE(table->find(reader, numbers.id(n), record));
        const StoredField field = record.field(table->definition().columns[0]);
        EXPECT_EQ(decodeField(reader, table->definition().columns[0], field, record.page()),
                  Value{std::int32_t{n}});
    }
}

TEST(TableFind, WhatIsNoRow) {
    Numbers numbers{20, 50};
    numbers.table.moveRow(numbers.id(1), Numbers::row(1, 250));
    numbers.table.deleteRow(numbers.id(2));
    const RowId moved = numbers.table.recordPlace(numbers.id(1));
    const RowId orphan = numbers.table.insertOrphan(Numbers::row(9));
    ByteVector file = numbers.builder.bytes();
    fixture::poke16(file, fixture::rowOffset(file, numbers.id(4)), 0xFFFF);
    const auto database = open(file);
    const auto table = database->table(u"Numbers");
    PageReader reader = table->pageReader();
    const PageNumber page = numbers.id(0).page();
    for (const RowId id : {moved, orphan}) {
        Record record;
        EXPECT_TRUE(table->find(reader, id, record)) << "scans may end with such records";
    }
    for (const RowId id : {RowId{}, numbers.id(2), numbers.id(4), RowId{page, 255},
                           RowId{PageNumber{1}, 0}, RowId{PageNumber{2}, 0},
                           RowId{table->definition().page, 0}, RowId{PageNumber{0xFFFFFF}, 0}}) {
        Record record;
        EXPECT_FALSE(table->find(reader, id, record));
        EXPECT_THAT(record.bytes(), IsEmpty());
    }
}

// --- A file that another program writes to ---------------------------------------------------

/// Another version of the file from the moment that it is set.
class ChangingStorage : public Storage {
public:
    explicit ChangingStorage(ByteVector content) : content_{std::move(content)} {}
    void change(ByteVector content) { content_ = MemoryStorage{std::move(content)}; }
    std::uint64_t size() const override { return content_.size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        return content_.readAt(offset, buffer);
    }

private:
    MemoryStorage content_;
};

// The map of the table's pages and the last page of its long values came from the cache, as they
// were when they were read first.
TEST(ChangingFile, ANewScanSeesTheRowsThatWereAdded) {
    Numbers before{10, 100};
    Numbers after{100, 100};
    auto storage = std::make_unique<ChangingStorage>(before.builder.bytes());
    ChangingStorage& file = *storage;
    const auto database = Database::open(std::move(storage));
    const auto table = database->table(u"Numbers");
    EXPECT_THAT(plainRows(*table), SizeIs(10));
    file.change(after.builder.bytes());
    const auto rows = plainRows(*table);
    ASSERT_THAT(rows, SizeIs(100));
    EXPECT_EQ(rows[99][0], "99");
    EXPECT_EQ(rows[99][2], std::string(100, 'V'));
}

TEST(ChangingFile, AFileThatWasCutMeanwhile) {
    Numbers numbers{1000, 100};
    auto storage = std::make_unique<ChangingStorage>(numbers.builder.bytes());
    ChangingStorage& file = *storage;
    const auto database = Database::open(std::move(storage));
    const auto table = database->table(u"Numbers");
    const std::vector<PageNumber> pages = table->dataPages();
    ByteVector cut = numbers.builder.bytes();
    fixture::truncate(cut, fixture::pageOffset(pages[pages.size() / 2]));
    file.change(cut);
    TableScan scan{*table, pages};
    std::size_t rows = 0;
    while (scan.next()) ++rows;
    EXPECT_GE(rows, 400u);
    EXPECT_EQ(scan.losses().pages, pages.size() - pages.size() / 2);
}

/// Fails from some moment on, as a share does that vanishes.
class FailingStorage : public MemoryStorage {
public:
    using MemoryStorage::MemoryStorage;
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        if (failing) throw Error{Fault::ReadFailed, "The share is gone."};
        return MemoryStorage::readAt(offset, buffer);
    }
    bool failing = false;
};

TEST(FailingStorage, IsNotTakenForDamage) {
    Numbers numbers{1000, 100};
    numbers.table.moveRow(numbers.id(0), Numbers::row(0, 250));
    auto storage = std::make_unique<FailingStorage>(numbers.builder.bytes());
    FailingStorage& share = *storage;
    const auto database = Database::open(std::move(storage));
    const auto table = database->table(u"Numbers");
    TableScan scan{*table};
    ASSERT_TRUE(scan.next());
    share.failing = true;
    expectFault(Fault::ReadFailed, [&] {
        while (scan.next()) continue;
    });
    EXPECT_EQ(scan.losses().rows + scan.losses().pages, 0u);
    PageReader reader = table->pageReader();
    Record record;
    expectFault(Fault::ReadFailed, [&] { table->find(reader, numbers.id(900), record); });
    expectFault(Fault::ReadFailed, [&] { TableScan{*table}; });
    share.failing = false;
    EXPECT_TRUE(table->find(reader, numbers.id(900), record));
}

// --- What a scan makes of damaged counts and marks ---------------------------------------------

/// The numbers of a table of 1,000, sorted, after `damage` has changed the file.
template <typename Damage>
Scanned sortedAfter(Damage damage) {
    Numbers numbers{1000, 30};
    ByteVector file = numbers.builder.bytes();
    damage(file, numbers);
    Scanned scanned = scanAll(file);
    std::sort(scanned.numbers.begin(), scanned.numbers.end());
    return scanned;
}

TEST(DamagedTable, ANumberOfSlotsThatIsImpossibleIsFoundOut) {
    for (const std::uint16_t count : {std::uint16_t{0x6030}, std::uint16_t{256}}) {
        const Scanned scanned = sortedAfter([&](ByteVector& file, Numbers& numbers) {
            const std::size_t page = fixture::pageOffset(numbers.table.dataPages().at(1));
            fixture::poke16(file, page + 12, count);
        });
        EXPECT_EQ(scanned.numbers, upTo(1000));
        EXPECT_EQ(scanned.losses.pages, 1u);
    }
}

// Other readers take such a record for a row: it was missing without a word.
TEST(DamagedTable, ARowThatIsMarkedAsMovedIsFoundAtTheEnd) {
    const Scanned scanned = sortedAfter([](ByteVector& file, Numbers& numbers) {
        const std::size_t slot = fixture::slotOffset(numbers.id(77));
        file[slot + 1] = static_cast<std::uint8_t>(file[slot + 1] | 0x80);
    });
    EXPECT_EQ(scanned.numbers, upTo(1000));
    EXPECT_FALSE(scanned.losses.any());
    EXPECT_EQ(scanned.losses.hints, 1u);
}

TEST(DamagedTable, ARecordWhosePointerIsLostIsFoundAtTheEnd) {
    Numbers numbers{1000, 30};
    numbers.table.moveRow(numbers.ids[5], Numbers::row(5, 200));
    ByteVector file = numbers.builder.bytes();
    fixture::poke32(file, fixture::rowOffset(file, numbers.id(5)), 0xFFFFFFFF);
    const Scanned scanned = scanAll(file);
    EXPECT_THAT(scanned.numbers, SizeIs(1000));
    EXPECT_EQ(scanned.numbers.back(), 5);
    EXPECT_EQ(scanned.losses.rows, 1u) << "the pointer";
}

TEST(DamagedTable, ANumberOfVariableColumnsThatIsWrongIsThatOfTheTable) {
    for (const int change : {-1, +1}) {
        Numbers numbers{10, 30};
        ByteVector file = numbers.builder.bytes();
        const std::size_t end =
            fixture::rowOffset(file, numbers.id(3)) + fixture::rowLength(file, numbers.id(3));
        fixture::poke16(file, end - 3, static_cast<std::uint16_t>(2 + change));
        const auto database = open(file);
        const auto table = database->table(u"Numbers");
        TableScan scan{*table};
        for (int n = 0; n < 10; ++n) {
            ASSERT_TRUE(scan.next());
            const std::vector<Value> values = valuesOf(scan, table->definition());
            EXPECT_EQ(values.at(1), Value{std::u16string(30, u'p')});
            EXPECT_FALSE(isNull(values.at(2)));
        }
        EXPECT_EQ(scan.losses().hints, 1u);
        EXPECT_TRUE(database->firstLoss()) << "nothing may be written";
    }
}

// The table's number is no remedy where the offsets are not where it puts them.
TEST(DamagedTable, OffsetsThatContradictTheTableCostTheRow) {
    const Scanned scanned = sortedAfter([](ByteVector& file, Numbers& numbers) {
        const std::size_t end =
            fixture::rowOffset(file, numbers.id(3)) + fixture::rowLength(file, numbers.id(3));
        fixture::poke16(file, end - 3, 3);
        fixture::poke16(file, end - 5, 10);  // of the first variable value, which begins at 6
    });
    EXPECT_THAT(scanned.numbers, SizeIs(999));
    EXPECT_EQ(scanned.losses.rows, 1u);
}

// A hint that the row itself is there all the same, and a reason not to write.
TEST(DamagedTable, ALongValueThatIsMarkedAsDeleted) {
    Numbers numbers{10};
    ByteVector file = numbers.builder.bytes();
    const std::size_t header = fixture::longValueHeaderOffset(file, numbers.id(9), 1);
    const RowId memo = RowId::fromPacked(fixture::get<std::uint32_t>(file, header + 4));
    const std::size_t slot = fixture::slotOffset(memo);
    file[slot + 1] = static_cast<std::uint8_t>(file[slot + 1] | 0xC0);
    const auto database = open(file);
    const auto table = database->table(u"Numbers");
    TableScan scan{*table};
    while (scan.next()) {
        EXPECT_FALSE(isNull(valuesOf(scan, table->definition()).at(2)));
    }
    EXPECT_EQ(scan.rowCount(), 10u);
    EXPECT_EQ(scan.losses().hints, 1u);
    EXPECT_TRUE(database->firstLoss());
}

TEST(DamagedTable, AnUnreadableColumnIsNullWhereItsRecordSaysSo) {
    Numbers numbers{2};
    numbers.table.insert({2, fixture::kNull, u"note"});
    ByteVector file = numbers.builder.bytes();
    const std::size_t definition = fixture::pageOffset(numbers.table.definitionPages().front());
    file[definition + 63 + 25] = 14;  // the type of the second column
    const auto database = open(file);
    const auto table = database->table(u"Numbers");
    const Column& padding = table->definition().columns.at(1);
    ASSERT_NE(padding.unreadable, "");
    TableScan scan{*table};
    for (int n = 0; n < 3; ++n) {
        ASSERT_TRUE(scan.next());
        const Value value = readField(scan.pages(), padding, scan.record());
        EXPECT_EQ(isUnreadable(value), n < 2);
        EXPECT_TRUE(isNull(value));
        EXPECT_TRUE(n < 2 || scan.record().field(padding).null);
    }
}

TEST(DamagedTable, MoreColumnsThanTheTableHasAreNoRow) {
    const Scanned scanned = sortedAfter([](ByteVector& file, Numbers& numbers) {
        fixture::poke16(file, fixture::rowOffset(file, numbers.id(3)), 4);
    });
    EXPECT_THAT(scanned.numbers, SizeIs(999));
    EXPECT_EQ(scanned.losses.rows, 1u);
}

}  // namespace
}  // namespace jet
