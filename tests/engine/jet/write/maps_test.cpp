// Usage maps in all their forms, and the map of free pages up to where a row of it ends.
#include "engine/jet/format/page.h"
#include "engine/jet/format/usage_map.h"
#include "engine/jet/usage_map.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/sparse_storage.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace jet {
namespace {

using fixture::SparseStorage;
using format::usage_map::kPagesPerBitmap;

/// A large file of which few pages take memory.
class LargeFile {
public:
    LargeFile() {
        database = Database::open(std::make_unique<SparseStorage>(emptyDatabase(kTestNow)));
        database->write([](WriteContext& context) {
            createTable(context, u"T",
                        {{.name = u"Id", .type = ColumnType::Long},
                         {.name = u"Text", .type = ColumnType::Text, .size = 510}});
        });
    }

    /// Pages that belong to nobody: what grows here is the file.
    void growTo(std::uint32_t pageCount) {
        database->write([&](WriteContext& context) {
            while (context.pager.pageCount() < pageCount) context.allocator.allocate();
        });
    }

    void insert(int first, int count) {
        database->write([&](WriteContext& context) {
            TableWriter writer{context, database->table(u"T")->definition()};
            for (int i = first; i < first + count; ++i) {
                writer.insert(row(std::int32_t{i}, std::u16string(255, u'\u4E01')));
            }
            writer.finish();
        });
        rows += count;
    }

    std::vector<std::uint8_t> mapRow(RowId map) {
        PageReader pages{database->storage(), database->cache()};
        return readUsageMapRow(pages, map);
    }

    RowId ownedMap() { return database->table(u"T")->definition().ownedMap; }

    /// No rule is broken but that pages belong to nobody, and all rows are there.
    void expectSound() {
        const CheckReport report = check(database->storage());
        EXPECT_TRUE(report.sound()) << describe(report);
        EXPECT_EQ(report.pages, database->storage().pageCount());
        const auto found = plainRows(*database->table(u"T"));
        ASSERT_EQ(found.size(), static_cast<std::size_t>(rows));
        for (int i = 0; i < rows; ++i) {
            EXPECT_EQ(found[static_cast<std::size_t>(i)][0], std::to_string(i));
        }
    }

    std::shared_ptr<Database> database;
    int rows = 0;
};

TEST(UsageMaps, AWindowBeginsWhereThePagesAre) {
    LargeFile file;
    file.growTo(2000);
    file.insert(0, 40);
    const auto map = file.mapRow(file.ownedMap());
    EXPECT_EQ(map[0], 0);
    EXPECT_GE(load<std::uint32_t>(map, 1), 1992u);
    EXPECT_EQ(load<std::uint32_t>(map, 1) % 8, 0u);
    file.expectSound();
    // As far as the window goes it stays.
    file.growTo(2400);
    file.insert(40, 40);
    const auto later = file.mapRow(file.ownedMap());
    EXPECT_EQ(later[0], 0);
    EXPECT_EQ(load<std::uint32_t>(later, 1), load<std::uint32_t>(map, 1));
    EXPECT_NE(later, map);
    file.expectSound();
}

/// A set being written to a map of its own, next to that of another set.
class OwnMap : public Written {
public:
    OwnMap() {
        write([&](WriteContext& context) {
            createTable(context, u"T", {{.name = u"M", .type = ColumnType::Memo}});
        });
        map = database->table(u"T")->definition().columns[0].ownedMap;
    }

    void save(const std::set<std::uint32_t>& pages) {
        write([&](WriteContext& context) {
            UsageMapWriter writer{context.pager, map};
            writer.clear();
            for (const std::uint32_t page : pages) writer.insert(PageNumber{page});
            writer.save(context.allocator);
        });
    }

    std::set<std::uint32_t> stored(RowId row) {
        PageReader pages{database->storage(), database->cache()};
        std::set<std::uint32_t> set;
        for (const PageNumber page : readUsageMap(pages, row)) set.insert(raw(page));
        return set;
    }

    RowId map;
};

TEST(UsageMaps, TheLastPageBeforeAnother) {
    OwnMap file;
    std::set<std::uint32_t> set;
    for (const std::uint32_t page : {1u, 2u, 62u, 63u, 64u, 65u, 127u, 128u, 300u, 511u}) {
        set.insert(page);
    }
    file.write([&](WriteContext& context) {
        UsageMapWriter writer{context.pager, file.map};
        EXPECT_EQ(writer.lastBefore(format::page::kMaxCount), kNoPage);
        for (const std::uint32_t page : set) writer.insert(PageNumber{page});
        for (std::uint32_t end = 0; end < 600; ++end) {
            const auto behind = set.lower_bound(end);
            const std::uint32_t expected = behind == set.begin() ? 0 : *std::prev(behind);
            ASSERT_EQ(raw(writer.lastBefore(end)), expected) << end;
        }
    });
}

// A window holds 512 pages, from a multiple of 8 on.
TEST(UsageMaps, TheEdgesOfAWindow) {
    for (const std::uint32_t first : {16u, 100u, 800u}) {
        for (std::uint32_t last = first + 500; last < first + 530; ++last) {
            OwnMap file;
            const RowId neighbour = file.database->table(u"T")->definition().columns[0].freeMap;
            file.save({first, last});
            EXPECT_EQ(file.stored(file.map), (std::set{first, last}));
            EXPECT_TRUE(file.stored(neighbour).empty());
            PageReader pages{file.database->storage(), file.database->cache()};
            const bool fits = last < 512 || last - first / 8 * 8 < 512;
            EXPECT_EQ(readUsageMapRow(pages, file.map)[0], fits ? 0 : 1) << first << ", " << last;
        }
    }
}

// Bitmaps stay where they are when the set gets smaller.
TEST(UsageMaps, ASetThatShrinks) {
    OwnMap file;
    const std::vector<std::set<std::uint32_t>> sets{
        {1, kPagesPerBitmap, 3 * kPagesPerBitmap + 7}, {1, 2}, {}, {kPagesPerBitmap - 1}};
    for (const auto& set : sets) {
        file.save(set);
        std::set<std::uint32_t> expected = set;
        EXPECT_EQ(file.stored(file.map), expected);
    }
    file.write([&](WriteContext& context) {
        EXPECT_EQ((UsageMapWriter{context.pager, file.map}.bitmapPages().size()), 3u);
    });
}

TEST(UsageMaps, PagesThatNoWindowHoldsAreKeptOnBitmaps) {
    LargeFile file;
    file.insert(0, 40);
    file.growTo(700);
    file.insert(40, 40);
    const auto map = file.mapRow(file.ownedMap());
    EXPECT_EQ(map.size(), format::usage_map::kNewRowSize);
    EXPECT_EQ(map[0], 1);
    EXPECT_NE(load<std::uint32_t>(map, 1), 0u);
    EXPECT_EQ(load<std::uint32_t>(map, 5), 0u);
    file.expectSound();
}

// Page 32,736 is the first of the second bitmap; the map of free pages has long outgrown its row.
TEST(UsageMaps, OfAFileBeyondOneBitmap) {
    LargeFile file;
    file.insert(0, 40);
    file.growTo(32000);
    EXPECT_EQ(file.mapRow(RowId{PageNumber{1}, 0})[0], 0);  // grown in place
    file.insert(40, 40);
    file.expectSound();
    file.growTo(32100);
    EXPECT_EQ(file.mapRow(RowId{PageNumber{1}, 0})[0], 1);
    file.insert(80, 40);
    file.expectSound();
    file.growTo(format::usage_map::kPagesPerBitmap + 40);
    file.insert(120, 40);
    for (const RowId map : {file.ownedMap(), RowId{PageNumber{1}, 0}}) {
        const auto references = file.mapRow(map);
        EXPECT_NE(load<std::uint32_t>(references, 1), 0u);
        EXPECT_NE(load<std::uint32_t>(references, 5), 0u);
        EXPECT_EQ(load<std::uint32_t>(references, 9), 0u);
    }
    file.expectSound();
    file.database->commit();
    file.expectSound();
    file.database->write([](WriteContext& context) { dropTable(context, u"T"); });
    EXPECT_TRUE(check(file.database->storage()).sound());
}

// The first and the last page have room, so the map of pages with room is kept on a bitmap.
TEST(UsageMaps, TheirBitmapsGoWithTheTable) {
    LargeFile file;
    file.insert(0, 40);
    file.growTo(700);
    file.insert(40, 40);
    const RowId free = file.database->table(u"T")->definition().freeMap;
    file.database->write([&](WriteContext& context) {
        const auto table = file.database->table(u"T");
        TableWriter writer{context, table->definition()};
        for (unsigned slot = 0; slot < 4; ++slot) {
            writer.remove(RowId{table->dataPages().front(), slot});
        }
        writer.finish();
    });
    ASSERT_EQ(file.mapRow(free)[0], 1);
    const CheckReport before = check(file.database->storage());
    file.database->write([](WriteContext& context) { dropTable(context, u"T"); });
    const CheckReport after = check(file.database->storage());
    EXPECT_TRUE(after.sound()) << describe(after);
    EXPECT_EQ(after.warnings, before.warnings) << "no page is left behind";
}

// The row grows in steps of 32 pages, to the page that needs it.
TEST(FreePages, TheirMapGrowsInPlace) {
    LargeFile file;
    for (const std::uint32_t pages : {512u, 513u, 544u, 545u, 743u, 772u}) {
        file.growTo(pages);
        const auto map = file.mapRow(RowId{PageNumber{1}, 0});
        EXPECT_EQ(map.size(), 5 + std::max(64u, (pages + 31) / 32 * 4)) << pages;
        EXPECT_EQ(file.mapRow(RowId{PageNumber{1}, 1}), std::vector<std::uint8_t>(69));
    }
    file.insert(0, 10);
    file.expectSound();
}

/// A database of another maker's making, whose map of free pages is changed by `change`.
std::vector<std::uint8_t> foreignFile(const std::function<void(std::span<std::uint8_t>)>& change) {
    fixture::FixtureBuilder builder;
    auto& table =
        builder.addTable({.name = u"T", .columns = {fixture::column(u"N", ColumnType::Long)}});
    for (std::int32_t i = 0; i < 5; ++i) table.insert({i});
    std::vector<std::uint8_t> bytes = builder.bytes();
    const RowId map{PageNumber{1}, 0};
    change(
        std::span{bytes}.subspan(fixture::rowOffset(bytes, map), fixture::rowLength(bytes, map)));
    return bytes;
}

void addTable(Database& database) {
    database.write([](WriteContext& context) {
        createTable(context, u"New", {{.name = u"X", .type = ColumnType::Memo}});
    });
}

TEST(FreePages, AMapThatIsWrongIsATypedErrorAndNothingChanges) {
    const std::vector<std::pair<const char*, std::function<void(std::span<std::uint8_t>)>>> damages{
        {"another kind", [](auto map) { map[0] = 2; }},
        {"references where bits are", [](auto map) { map[0] = 1; }},
        {"references to nothing",
         [](auto map) {
             std::ranges::fill(map, std::uint8_t{0});
             map[0] = 1;
         }},
        {"a reference outside the file",
         [](auto map) {
             std::ranges::fill(map, std::uint8_t{0xFF});
             map[0] = 1;
         }},
        {"a reference to a page of something else",
         [](auto map) {
             std::ranges::fill(map, std::uint8_t{0});
             map[0] = 1;
             map[1] = 2;
         }},
        {"all pages free", [](auto map) { std::ranges::fill(map.subspan(5), std::uint8_t{0xFF}); }},
    };
    for (const auto& [name, damage] : damages) {
        SCOPED_TRACE(name);
        const auto bytes = foreignFile(damage);
        Written file{bytes};
        expectFault(Fault::DamagedFile, [&] { addTable(*file.database); });
        file.database->commit();
        EXPECT_EQ(file.bytes(), bytes);
        EXPECT_EQ(file.rows(u"T").size(), 5u);
    }
}

// What lies before the window is in use.
TEST(FreePages, AMapThatBeginsAbovePageZero) {
    Written file{foreignFile([](std::span<std::uint8_t> map) {
        std::rotate(map.begin() + 5, map.begin() + 6, map.end());
        map[1] = 8;
        map.back() = 0xFF;
    })};
    addTable(*file.database);
    file.insert(u"New", {row(std::u16string(3000, u'm'))});
    file.expectClean();
}

// Until it no longer fits its page, and is kept on bitmaps.
TEST(FreePages, AMapThatBeginsAbovePageZeroAndOutgrowsItsPage) {
    const auto bytes = foreignFile([](std::span<std::uint8_t> map) {
        std::rotate(map.begin() + 5, map.begin() + 6, map.end());
        map[1] = 8;
        map.back() = 0xFF;
    });
    const auto database = Database::open(std::make_unique<SparseStorage>(bytes));
    database->write([&](WriteContext& context) {
        while (context.pager.pageCount() < kPagesPerBitmap) context.allocator.allocate();
    });
    PageReader pages{database->storage(), database->cache()};
    EXPECT_EQ(readUsageMapRow(pages, RowId{PageNumber{1}, 0})[0], 1);
    const CheckReport report = check(database->storage());
    EXPECT_TRUE(report.sound()) << describe(report);
}

// Pages that a statement gives back are the first that it takes.
TEST(FreePages, AreUsedAgainInTheStatementThatFreesThem) {
    Written file;
    addTable(*file.database);
    file.insert(u"New", {row(std::u16string(20000, u'm'))});
    const std::uint32_t before = file.database->storage().pageCount();
    file.write([&](WriteContext& context) {
        dropTable(context, u"New");
        createTable(context, u"New", {{.name = u"X", .type = ColumnType::Memo}});
        TableWriter writer{context, file.database->table(u"New")->definition()};
        writer.insert(row(std::u16string(20000, u'n')));
        writer.finish();
    });
    EXPECT_EQ(file.database->storage().pageCount(), before);
    file.expectClean();
}

// A map of a table that lists what belongs to others: nothing of that is given back.
TEST(UsageMaps, PagesOfOthersAreNotGivenBack) {
    Written file;
    file.write([](WriteContext& context) {
        for (const char16_t* name : {u"A", u"B"}) {
            createTable(context, name, {{.name = u"X", .type = ColumnType::Long}});
            createIndex(context, name, {.name = u"I", .columns = {{u"X"}}});
        }
    });
    file.insert(u"A", {row(std::int32_t{1})});
    file.insert(u"B", {row(std::int32_t{2})});
    file.database->commit();
    const TableDefinition a = file.database->table(u"A")->definition();
    const TableDefinition b = file.database->table(u"B")->definition();
    PageReader pages{file.database->storage(), file.database->cache()};
    const std::uint32_t foreign = raw(readUsageMap(pages, b.ownedMap).front());
    for (const RowId map : {a.ownedMap, a.physicalIndexes[0].map}) {
        std::vector<std::uint8_t> bytes = file.bytes();
        bytes[fixture::rowOffset(bytes, map) + 5 + foreign / 8] |=
            static_cast<std::uint8_t>(1u << (foreign % 8));
        Written damaged{bytes};
        expectFault(Fault::DamagedFile, [&] {
            damaged.write([](WriteContext& context) { dropTable(context, u"A"); });
        });
        damaged.database->commit();
        EXPECT_EQ(damaged.bytes(), bytes);
        EXPECT_EQ(damaged.rows(u"B")[0][0], "2");
    }
}

// Neither when many rows are changed, and an index is built anew for it.
TEST(UsageMaps, PagesOfOthersAreNotChanged) {
    Written file;
    file.write([](WriteContext& context) {
        for (const char16_t* name : {u"A", u"B"}) {
            createTable(context, name, {{.name = u"X", .type = ColumnType::Long}});
            createIndex(context, name, {.name = u"I", .columns = {{u"X"}}});
        }
    });
    file.insert(u"A", std::vector<std::vector<Value>>(1500, row(std::int32_t{1})));
    file.insert(u"B", {row(std::int32_t{2})});
    file.database->commit();
    const TableDefinition a = file.database->table(u"A")->definition();
    const TableDefinition b = file.database->table(u"B")->definition();
    PageReader pages{file.database->storage(), file.database->cache()};
    const std::uint32_t rows = raw(readUsageMap(pages, b.ownedMap).front());
    const std::uint32_t leaf = raw(b.physicalIndexes[0].root);
    for (const auto& [map, foreign] :
         {std::pair{a.ownedMap, rows}, std::pair{a.physicalIndexes[0].map, rows},
          std::pair{a.physicalIndexes[0].map, leaf}}) {
        std::vector<std::uint8_t> bytes = file.bytes();
        bytes[fixture::rowOffset(bytes, map) + 5 + foreign / 8] |=
            static_cast<std::uint8_t>(1u << (foreign % 8));
        Written damaged{bytes};
        expectFault(Fault::DamagedFile, [&] {
            damaged.write([&](WriteContext& context) {
                TableWriter writer{context, damaged.database->table(u"A")->definition()};
                writer.updateRows([](const Record&, PageReader&, Assignments& changes) {
                    changes.push_back({0, std::int32_t{9}});
                    return true;
                });
                writer.finish();
            });
        });
        damaged.database->commit();
        EXPECT_EQ(damaged.bytes(), bytes);
    }
}

}  // namespace
}  // namespace jet
