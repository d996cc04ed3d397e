// Deep trees: pages that take few entries, split, merge and vanish.
#include "engine/jet/index.h"
#include "engine/jet/index_key.h"
#include "tests/engine/jet/check/check_support.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"
#include "tests/support/random.h"

#include <gmock/gmock.h>

#include <map>

namespace jet {
namespace {

using fixture::Random;

/// A table of one long text, whose keys fill a page in handfuls.
class LongKeys : public Written {
public:
    LongKeys() {
        write([](WriteContext& context) {
            createTable(context, u"T", {{.name = u"Key", .type = ColumnType::Text, .size = 510}});
            createIndex(context, u"T", {.name = u"Key", .columns = {{u"Key"}}});
        });
    }

    static Value key(std::uint32_t number, std::size_t length = 255) {
        std::string digits = std::to_string(number);
        digits.insert(0, 9 - digits.size(), '0');
        std::u16string text = toUtf16(digits);
        text.resize(length, u'x');
        return text;
    }

    std::map<std::string, RowId> places() {
        const auto table = database->table(u"T");
        std::map<std::string, RowId> found;
        for (TableScan scan{*table}; scan.next();) {
            found[*plain(valuesOf(scan, table->definition())[0])] = scan.rowId();
        }
        return found;
    }

    /// Texts in the index's order.
    std::size_t entries() {
        const auto table = database->table(u"T");
        IndexCursor cursor{table->pageReader(), table->definition(),
                           table->definition().physicalIndexes[0]};
        std::size_t count = 0;
        for (cursor.first(); cursor.valid(); cursor.next()) ++count;
        return count;
    }

    void change(const std::function<void(TableWriter&)>& use) {
        write([&](WriteContext& context) {
            TableWriter writer{context, database->table(u"T")->definition()};
            use(writer);
            writer.finish();
        });
    }

    void insertAll(const std::vector<std::uint32_t>& numbers) {
        change([&](TableWriter& writer) {
            for (const std::uint32_t number : numbers) writer.insert(row(key(number)));
        });
    }
};

std::vector<std::uint32_t> numbersTo(std::uint32_t count) {
    std::vector<std::uint32_t> numbers(count);
    for (std::uint32_t i = 0; i < count; ++i) numbers[i] = i;
    return numbers;
}

TEST(IndexWriter, KeysInTheirOrderFillThePages) {
    LongKeys file;
    file.insertAll(numbersTo(2500));
    file.expectClean();
    EXPECT_EQ(file.entries(), 2500u);
}

TEST(IndexWriter, KeysInReverseOrder) {
    LongKeys file;
    auto numbers = numbersTo(2500);
    std::ranges::reverse(numbers);
    file.insertAll(numbers);
    file.expectClean();
    EXPECT_EQ(file.entries(), 2500u);
}

TEST(IndexWriter, RandomKeysComeAndGo) {
    Random random{1};
    LongKeys file;
    std::vector<std::uint32_t> numbers = numbersTo(3000);
    for (std::size_t i = numbers.size(); i > 1; --i) {
        std::swap(numbers[i - 1], numbers[random.below(static_cast<std::uint32_t>(i))]);
    }
    file.insertAll(numbers);
    file.expectClean();
    // In steps, to a tree of one page again.
    for (const std::uint32_t keep : {5u, 50u, 0u}) {
        file.change([&, places = file.places()](TableWriter& writer) {
            for (const auto& [text, place] : places) {
                if (keep == 0 || random.below(keep) != 0) writer.remove(place);
            }
        });
        file.expectClean();
        EXPECT_EQ(file.entries(), file.places().size());
    }
    file.insertAll({3, 1, 2});
    file.expectClean();
}

TEST(IndexWriter, RemovingFromBothEnds) {
    for (const bool fromFront : {true, false}) {
        LongKeys file;
        file.insertAll(numbersTo(1200));
        const auto places = file.places();
        std::vector<RowId> order;
        for (const auto& [text, place] : places) order.push_back(place);
        if (!fromFront) std::ranges::reverse(order);
        for (std::size_t start = 0; start < order.size(); start += 300) {
            file.change([&](TableWriter& writer) {
                for (std::size_t i = start; i < start + 300; ++i) writer.remove(order[i]);
            });
            file.expectClean();
        }
        EXPECT_EQ(file.entries(), 0u);
    }
}

// A tree of a whole table, built at once, and then added to.
TEST(IndexWriter, ATreeThatWasBuiltAtOnceGrowsOn) {
    LongKeys file;
    std::vector<std::uint32_t> even;
    std::vector<std::uint32_t> odd;
    for (std::uint32_t i = 0; i < 3000; ++i) (i % 2 == 0 ? even : odd).push_back(i);
    file.write([](WriteContext& context) {
        createTable(context, u"U", {{.name = u"Key", .type = ColumnType::Text, .size = 510}});
    });
    file.write([&](WriteContext& context) {
        TableWriter writer{context, file.database->table(u"U")->definition()};
        for (const std::uint32_t number : even) writer.insert(row(LongKeys::key(number, 200)));
        writer.finish();
    });
    file.write([](WriteContext& context) {
        createIndex(context, u"U", {.name = u"Key", .columns = {{u"Key"}}});
    });
    file.expectClean();
    file.write([&](WriteContext& context) {
        TableWriter writer{context, file.database->table(u"U")->definition()};
        for (const std::uint32_t number : odd) writer.insert(row(LongKeys::key(number, 255)));
        writer.finish();
    });
    file.expectClean();
}

// Keys of all lengths on one page: parents whose entries change their length.
TEST(IndexWriter, KeysOfManyLengths) {
    Random random{2};
    LongKeys file;
    for (int round = 0; round < 6; ++round) {
        file.change([&](TableWriter& writer) {
            for (int i = 0; i < 400; ++i) {
                writer.insert(row(LongKeys::key(random.below(100000), random.between(9, 255))));
            }
        });
        file.expectClean();
        file.change([&, places = file.places()](TableWriter& writer) {
            for (const auto& [text, place] : places) {
                if (random.oneIn(3)) writer.remove(place);
            }
        });
        file.expectClean();
    }
}

// Rows and entries that contradict each other are damage, which no change may make worse.
TEST(IndexWriter, AnEntryThatShouldNotBeThereOrIsMissing) {
    LongKeys file;
    file.insertAll({10, 20, 30});
    const RowId place = file.places().begin()->second;
    const auto keyOf = [&](std::uint32_t number) {
        Key key;
        const auto table = file.database->table(u"T");
        appendKeyPart(LongKeys::key(number), table->definition().columns[0], true, key);
        return key;
    };
    file.write([&](WriteContext& context) {
        const TableDefinition definition = file.database->table(u"T")->definition();
        IndexWriter writer{context.pager, context.allocator, definition, 0};
        expectFault(Fault::Damaged, [&] { writer.insert(keyOf(10), place); });
        expectFault(Fault::Damaged, [&] { writer.remove(keyOf(15), place); });
        expectFault(Fault::Damaged, [&] { writer.remove(keyOf(20), place); });
        expectFault(Fault::Damaged, [&] { writer.remove(keyOf(99), place); });
        writer.finish();
    });
    EXPECT_EQ(file.entries(), 3u);
    file.expectClean();
}

// Some writers leave the level of the pages above the leaves at 0.
TEST(IndexWriter, ATreeWhosePagesDoNotSayTheirLevel) {
    CheckSample sample;
    sample.file[sample.at(sample.root(), 26)] = 0;
    Written file{sample.file};
    const std::size_t before = file.rows(u"Rows").size();
    std::vector<std::vector<Value>> rows;
    for (std::int32_t i = 0; i < 300; ++i) {
        rows.push_back(
            row(Value{}, u"name " + toUtf16(std::to_string(i)), std::int16_t{1}, true, Value{}));
    }
    file.insert(u"Rows", rows);
    const CheckReport report = check(file.database->storage());
    EXPECT_TRUE(report.sound()) << describe(report);
    EXPECT_EQ(file.rows(u"Rows").size(), before + 300);
}

TEST(IndexWriter, AKeyThatIsTooLong) {
    Written file;
    std::vector<NewColumn> columns;
    NewIndex index{.name = u"All", .columns = {}};
    for (int i = 0; i < 8; ++i) {
        columns.push_back(
            {.name = u"C" + toUtf16(std::to_string(i)), .type = ColumnType::Text, .size = 510});
        index.columns.push_back({columns.back().name});
    }
    file.write([&](WriteContext& context) { createTable(context, u"T", columns); });
    file.write([&](WriteContext& context) { createIndex(context, u"T", index); });
    const std::vector<Value> wide(8, Value{std::u16string(240, u'w')});
    try {
        file.insert(u"T", {wide});
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.fault(), Fault::ValueTooLarge);
    }
    EXPECT_TRUE(file.rows(u"T").empty());
    file.expectClean();
    // The same in a table that has the row already.
    file.write([&](WriteContext& context) { createTable(context, u"U", columns); });
    file.insert(u"U", {wide});
    expectFault(Fault::ValueTooLarge, [&] {
        file.write([&](WriteContext& context) { createIndex(context, u"U", index); });
    });
    file.expectClean();
}

}  // namespace
}  // namespace jet
