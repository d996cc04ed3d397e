// Where records go when they grow: as few as can be leave their pages.
#include "engine/jet/format/record.h"
#include "tests/engine/jet/check/check_support.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"
#include "tests/support/random.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace jet {
namespace {

using fixture::Random;

constexpr std::size_t kRoom = kPageSize - 14;
constexpr std::size_t kSlot = 2;

/// What stands on a data page of a table.
struct PageRows {
    std::map<unsigned, std::size_t> home;  ///< records that stand where their row is, by slot
    std::size_t pointers = 0;
    std::size_t fixedBytes = 0;  ///< of all that is no such record
    std::size_t slots = 0;
};

class Table1 : public Written {
public:
    explicit Table1(bool memo = false) {
        write([&](WriteContext& context) {
            std::vector<NewColumn> columns{{.name = u"Id", .type = ColumnType::Long},
                                           {.name = u"A", .type = ColumnType::Binary, .size = 510}};
            for (const char16_t* name : {u"B", u"C", u"D", u"E", u"F", u"G", u"H"}) {
                columns.push_back({.name = name, .type = ColumnType::Binary, .size = 510});
            }
            if (memo) columns.push_back({.name = u"M", .type = ColumnType::Memo});
            createTable(context, u"T", columns);
        });
    }

    std::size_t width() { return database->table(u"T")->definition().columns.size(); }

    /// A row whose A is of that length.
    std::vector<Value> rowOf(std::int32_t id, std::size_t length) {
        std::vector<Value> values(width());
        values[0] = id;
        values[1] = Binary(length, static_cast<std::uint8_t>(id));
        return values;
    }

    /// Sets A and B of each row to the lengths that `lengths` gives for its number.
    std::uint64_t update(const std::function<std::pair<std::size_t, std::size_t>(int)>& lengths) {
        std::uint64_t changed = 0;
        write([&](WriteContext& context) {
            TableWriter writer{context, database->table(u"T")->definition()};
            const Column id = writer.definition().columns[0];
            changed = writer.updateRows([&](const Record& record, PageReader& pages,
                                            Assignments& changes) {
                const int number =
                    std::get<std::int32_t>(decodeField(pages, id, record.field(id), record.page()));
                const auto [a, b] = lengths(number);
                changes.push_back({1, Binary(a, static_cast<std::uint8_t>(number))});
                changes.push_back({2, b == 0 ? Value{} : Value{Binary(b, 0xBB)}});
                return true;
            });
            writer.finish();
        });
        return changed;
    }

    std::map<std::uint32_t, PageRows> pages() {
        std::map<std::uint32_t, PageRows> found;
        const auto table = database->table(u"T");
        PageReader reader = table->pageReader();
        for (const PageNumber number : table->dataPages()) {
            const DataPage page{reader.page(number), number};
            PageRows& rows = found[raw(number)];
            rows.slots = page.slotCount();
            for (unsigned i = 0; i < page.slotCount(); ++i) {
                const auto slot = page.slot(i);
                if (slot->deleted) continue;
                if (slot->pointer) ++rows.pointers;
                if (slot->pointer || slot->moved) {
                    rows.fixedBytes += slot->bytes.size();
                } else {
                    rows.home[i] = slot->bytes.size();
                }
            }
        }
        return found;
    }

    /// The number in each row that stands at home, by its place.
    std::map<RowId, int> numbers() {
        const auto table = database->table(u"T");
        std::map<RowId, int> found;
        for (TableScan scan{*table}; scan.next();) {
            found[scan.rowId()] = std::get<std::int32_t>(valuesOf(scan, table->definition())[0]);
        }
        return found;
    }
};

/// The least number of records that have to leave a page whose records get these sizes: for each
/// number of records the smallest rest that removing so many can leave.
std::size_t leastMoves(const PageRows& page, std::vector<std::size_t> sizes) {
    std::size_t used = page.fixedBytes + kSlot * page.slots;
    used += std::accumulate(sizes.begin(), sizes.end(), std::size_t{0});
    std::vector<std::size_t> saved;
    for (const std::size_t size : sizes) saved.push_back(size > 4 ? size - 4 : 0);
    std::ranges::sort(saved, std::greater{});
    std::size_t moves = 0;
    while (used > kRoom) used -= saved.at(moves++);
    return moves;
}

TEST(Records, AsFewAsCanBeMove) {
    Random random{21};
    for (int round = 0; round < 25; ++round) {
        Table1 table;
        const std::uint32_t longest = random.between(4, 200);
        std::vector<std::vector<Value>> rows;
        for (std::int32_t i = 0; i < 250; ++i) {
            rows.push_back(table.rowOf(i, random.below(longest)));
        }
        table.insert(u"T", rows);
        std::map<int, std::pair<std::size_t, std::size_t>> lengths;
        for (int i = 0; i < 250; ++i) {
            lengths[i] = {random.below(longest * 2), random.oneIn(3) ? random.below(300) : 0};
        }
        // A record's own bytes: columns, 2 + 4 fixed, eight offsets and their end, count, mask.
        const auto sizeOf = [&](int number) {
            const auto [a, b] = lengths[number];
            return 2 + 4 + a + b + 2 * 9 + 2 + 2;
        };
        const auto before = table.pages();
        std::map<std::uint32_t, std::vector<std::size_t>> sizes;
        for (const auto& [place, number] : table.numbers()) {
            sizes[raw(place.page())].push_back(sizeOf(number));
        }
        EXPECT_EQ(table.update([&](int number) { return lengths[number]; }), 250u);
        const auto after = table.pages();
        for (const auto& [number, page] : before) {
            ASSERT_EQ(page.pointers, 0u);
            ASSERT_EQ(after.at(number).pointers, leastMoves(page, sizes[number]))
                << "round " << round << ", page " << number;
        }
        table.expectClean();
    }
}

TEST(Records, ThatHadMovedMoveAgainOrStay) {
    Table1 table;
    std::vector<std::vector<Value>> rows;
    for (std::int32_t i = 0; i < 200; ++i) rows.push_back(table.rowOf(i, 10));
    table.insert(u"T", rows);
    const auto places = table.numbers();
    for (const std::size_t length : {60u, 200u, 500u, 30u, 500u}) {
        EXPECT_EQ(table.update([&](int number) {
            return std::pair{length, number % 3 == 0 ? length : std::size_t{0}};
        }),
                  200u);
        table.expectClean();
        EXPECT_EQ(table.numbers(), places);
        for (const auto& row : table.rows(u"T")) {
            EXPECT_EQ(row[1]->size(), 2 + 2 * length);
            EXPECT_EQ(row[2].has_value(), std::stoi(*row[0]) % 3 == 0);
        }
    }
}

// One byte a row identity: 255 rows are all that a page takes, however small they are.
TEST(Records, TinyOnesFillAPageByTheirNumber) {
    Written file;
    file.write([](WriteContext& context) {
        createTable(context, u"T", {{.name = u"X", .type = ColumnType::Boolean}});
    });
    std::vector<std::vector<Value>> rows;
    for (int i = 0; i < 600; ++i) rows.push_back(row(i % 2 == 0));
    file.insert(u"T", rows);
    file.expectClean();
    EXPECT_EQ(file.database->table(u"T")->dataPages().size(), 3u);
    file.write([](WriteContext& context) {
        addColumn(context, u"T", {.name = u"Text", .type = ColumnType::Text, .size = 200});
    });
    file.write([&](WriteContext& context) {
        TableWriter writer{context, file.database->table(u"T")->definition()};
        writer.updateRows([](const Record&, PageReader&, Assignments& changes) {
            changes.push_back({1, std::u16string(50, u't')});
            return true;
        });
        writer.finish();
    });
    file.expectClean();
    const auto found = file.rows(u"T");
    ASSERT_EQ(found.size(), 600u);
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i][0], i % 2 == 0 ? "1" : "0");
        EXPECT_EQ(found[i][1], std::string(50, 't'));
    }
}

TEST(Records, AsLargeAsCanBe) {
    Table1 table;
    const auto rowOf = [&](std::size_t last) {
        std::vector<Value> values(9);
        values[0] = std::int32_t{1};
        for (std::size_t i = 1; i < 8; ++i) values[i] = Binary(510, 7);
        values[8] = Binary(last, 8);
        return values;
    };
    // 2 + 4, seven of 510, offsets, count and mask.
    constexpr std::size_t kTaken = 2 + 4 + 7 * 510 + 2 * 9 + 2 + 2;
    constexpr std::size_t kMax = format::record::kMaxSize - kTaken;
    for (std::size_t last = kMax - 3; last <= kMax; ++last) table.insert(u"T", {rowOf(last)});
    table.expectClean();
    EXPECT_THROW(table.insert(u"T", {rowOf(kMax + 1)}), Error);
    EXPECT_EQ(table.rows(u"T").size(), 4u);
    // Grown to the limit where it stands among others.
    table.insert(u"T", {table.rowOf(2, 10), table.rowOf(3, 10), table.rowOf(4, 10)});
    table.write([&](WriteContext& context) {
        TableWriter writer{context, table.database->table(u"T")->definition()};
        for (const auto& [place, number] : table.numbers()) {
            if (number < 2) continue;
            Assignments changes;
            for (std::size_t i = 1; i < 8; ++i) changes.push_back({i, Binary(510, 9)});
            changes.push_back({8, Binary(kMax, 9)});
            writer.update(place, changes);
        }
        writer.finish();
    });
    table.expectClean();
}

// Short memos stand in the record; when it gets too large they leave it, and the row stays whole.
TEST(Records, MemosLeaveARecordThatGetsTooLarge) {
    Table1 table{true};
    std::vector<Value> values = table.rowOf(1, 10);
    values[9] = std::u16string(30, u'm');
    table.insert(u"T", {values});
    EXPECT_EQ(check(table.database->storage()).longValues, 0u);
    const RowId place = table.numbers().begin()->first;
    table.write([&](WriteContext& context) {
        TableWriter writer{context, table.database->table(u"T")->definition()};
        Assignments changes;
        for (std::size_t i = 1; i < 8; ++i) changes.push_back({i, Binary(510, 9)});
        changes.push_back({8, Binary(440, 9)});
        writer.update(place, changes);
        writer.finish();
    });
    table.expectClean();
    EXPECT_EQ(check(table.database->storage()).longValues, 1u);
    EXPECT_EQ(table.rows(u"T")[0][9], std::string(30, 'm'));
}

// Places of columns that no record can have.
TEST(Records, OfADefinitionThatIsWrong) {
    const CheckSample sound;
    const auto expectRefused = [&](std::size_t offset, std::uint16_t value) {
        std::vector<std::uint8_t> bytes = sound.file;
        fixture::poke16(bytes, offset, value);
        Written file{bytes};
        expectFault(Fault::DamagedFile, [&] {
            file.insert(u"Empty", {row(std::int32_t{1}, text(u"b"), text(u"c"), std::int32_t{2})});
        });
        file.database->commit();
        EXPECT_EQ(file.bytes(), bytes);
    };
    const DefinitionOffsets offsets = sound.emptyOffsets();
    expectRefused(offsets.column(3) + 21, 5000);  // in the fixed part
    expectRefused(offsets.column(2) + 7, 2);      // among the variable columns, of which are two
    expectRefused(offsets.column(2) + 7, 300);
}

// A page with a damaged row may still be read; a row that is added goes elsewhere.
TEST(Records, PagesWithDamagedRowsTakeNoOthers) {
    Table1 table;
    table.insert(u"T", {table.rowOf(1, 10), table.rowOf(2, 10)});
    table.database->commit();
    const RowId second = std::next(table.numbers().begin())->first;
    for (const unsigned word : {0x1FFFu, 0x0000u, 0x0FFFu, 0x9FFFu}) {
        std::vector<std::uint8_t> bytes = table.bytes();
        const std::size_t at = std::size_t{raw(second.page())} * kPageSize + 14 + 2;
        bytes[at] = static_cast<std::uint8_t>(word);
        bytes[at + 1] = static_cast<std::uint8_t>(word >> 8);
        Written damaged{bytes};
        damaged.insert(u"T", {table.rowOf(3, 10)});
        damaged.database->commit();
        const std::size_t page = std::size_t{raw(second.page())} * kPageSize;
        EXPECT_TRUE(std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(page),
                               bytes.begin() + static_cast<std::ptrdiff_t>(page + kPageSize),
                               damaged.bytes().begin() + static_cast<std::ptrdiff_t>(page)))
            << word;
        const auto stored = damaged.database->table(u"T");
        int read = 0;
        for (TableScan scan{*stored}; scan.next();) ++read;
        EXPECT_GE(read, 2) << word;
    }
}

}  // namespace
}  // namespace jet
