// The keys of a table's rows, collected for an index that is built at once.
#include "engine/jet/write/row_keys.h"

#include "engine/jet/index.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"
#include "tests/support/damage.h"

#include <algorithm>

namespace jet {
namespace {

using Entry = std::pair<Key, RowId>;

/// Some texts come again and again, some once.
std::u16string textOf(std::int32_t row) {
    const std::u16string number = toUtf16(std::to_string(row));
    return row % 3 == 0 ? u"name " + number : u"often " + toUtf16(std::to_string(row * 7 % 5));
}

// Codes of texts that have been met hold for one run; the next one begins without any.
TEST(RowKeys, AreTheSameHoweverOftenTheSorterStartsANewRun) {
    constexpr std::int32_t kRows = 1500;
    Written file;
    file.write([](WriteContext& context) {
        createTable(context, u"T", {{.name = u"Text", .type = ColumnType::Text, .size = 100}});
    });
    std::vector<std::vector<Value>> rows;
    for (std::int32_t i = 0; i < kRows; ++i) rows.push_back(row(textOf(i)));
    file.insert(u"T", rows);

    const auto table = file.database->table(u"T");
    const TableDefinition& definition = table->definition();
    const PhysicalIndex index{.columns = {{definition.columns[0].id, true}}, .map = {}};
    std::vector<Entry> expected;
    std::int32_t number = 0;
    for (TableScan scan{*table}; scan.next(); ++number) {
        expected.emplace_back(Key{}, scan.rowId());
        appendKeyPart(Value{textOf(number)}, definition.columns[0], true, expected.back().first);
    }
    std::ranges::sort(expected);

    for (const std::size_t budget : {std::size_t{3000}, KeySorter::kDefaultBudget}) {
        KeySorter keys{budget};
        TableScan scan{*table};
        RowKeys{definition, index}.collect(scan, keys);
        EXPECT_EQ(keys.run() > 10, budget == 3000);
        std::vector<Entry> found;
        keys.forEach([&](const Key& key, RowId place) { found.emplace_back(key, place); });
        EXPECT_TRUE(found == expected) << budget;
    }
}

/// A table whose second page can be spoilt.
class TwoPages : public Written {
public:
    TwoPages() {
        write([](WriteContext& context) {
            createTable(context, u"T", {{.name = u"Text", .type = ColumnType::Text, .size = 510}});
        });
        insert(u"T", std::vector<std::vector<Value>>(12, row(std::u16string(255, u'\u4E01'))));
        database->commit();
        page = database->table(u"T")->dataPages().at(1);
    }

    PageNumber page{};
};

// An index that lacks a row would hide it.
TEST(RowKeys, ATableOfWhichAPartCannotBeReadGetsNoIndex) {
    const TwoPages table;
    std::vector<std::uint8_t> foreign = table.bytes();
    fixture::poke32(foreign, fixture::pageOffset(table.page) + 4, 77);
    std::vector<std::uint8_t> outside = table.bytes();
    fixture::poke16(outside, fixture::slotOffset({table.page, 2}), 0x1FFF);
    for (const auto& bytes : {foreign, outside}) {
        Written damaged{bytes};
        expectFault(Fault::DamagedFile, [&] {
            damaged.write([](WriteContext& context) {
                createIndex(context, u"T", {.name = u"I", .columns = {{u"Text"}}});
            });
        });
        damaged.database->commit();
        EXPECT_EQ(damaged.bytes(), bytes);
    }
}

// Left out is a row whose key columns are all Null, not one of them.
TEST(RowKeys, AnIndexThatIgnoresNullsLeavesOutRowsOfNullsAlone) {
    Written file;
    file.write([](WriteContext& context) {
        createTable(
            context, u"T",
            {{.name = u"A", .type = ColumnType::Long}, {.name = u"B", .type = ColumnType::Long}});
        createIndex(context, u"T",
                    {.name = u"I", .columns = {{u"A"}, {u"B"}}, .ignoreNulls = true});
    });
    const Value five{std::int32_t{5}};
    file.insert(u"T", {{five, {}}, {{}, five}, {{}, {}}, {five, five}});
    file.expectClean();
    const auto table = file.database->table(u"T");
    IndexCursor cursor{table->pageReader(), table->definition(),
                       table->definition().physicalIndexes[0]};
    int entries = 0;
    for (cursor.first(); cursor.valid(); cursor.next()) ++entries;
    EXPECT_EQ(entries, 3);
}

}  // namespace
}  // namespace jet
