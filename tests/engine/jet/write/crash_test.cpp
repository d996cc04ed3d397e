// The power fails at every operation of a change, and at a thousand of a larger one: the file
// then is the old one or the new one, byte for byte.
#include "tests/engine/jet/write/written.h"
#include "tests/support/faulty_disk.h"
#include "tests/support/random.h"

namespace jet {
namespace {

using fixture::FaultyDisk;
using fixture::Random;
using fixture::Survival;
using ByteVector = std::vector<std::uint8_t>;

/// Traces in the older format.
ByteVector olderFormat(std::int32_t rows) {
    Written file;
    file.write([](WriteContext& context) {
        createTable(context, u"Traces",
                    {{.name = u"Date", .type = ColumnType::Date},
                     {.name = u"Component", .type = ColumnType::Text, .size = 100},
                     {.name = u"Level", .type = ColumnType::Integer},
                     {.name = u"Trace", .type = ColumnType::Memo}});
    });
    std::vector<std::vector<Value>> traces;
    for (std::int32_t i = 0; i < rows; ++i) {
        traces.push_back(row(Date{40000.0 + i}, u"Component " + std::u16string(i % 9u, u'x'),
                             static_cast<std::int16_t>(i % 5),
                             std::u16string(20u + i * 37u % 200u, u't')));
    }
    file.insert(u"Traces", traces);
    file.database->commit();
    return file.bytes();
}

/// Several statements of all kinds, not yet durable.
void change(Database& database) {
    database.setClock([] { return Date{43000}; });
    database.write([](WriteContext& context) {
        addColumn(context, u"Traces", {.name = u"Highlight", .type = ColumnType::Boolean});
    });
    database.write([](WriteContext& context) {
        addColumn(context, u"Traces", {.name = u"Key", .type = ColumnType::Text, .size = 320});
    });
    database.write([&](WriteContext& context) {
        const TableDefinition definition = database.table(u"Traces")->definition();
        TableWriter writer{context, definition};
        writer.updateRows([&](const Record& record, PageReader& pages, Assignments& out) {
            const Column& component = definition.columns[1];
            const Value value =
                decodeField(pages, component, record.field(component), record.page());
            out.push_back({5, std::get<std::u16string>(value) + u"_process_10_source"});
            return true;
        });
        writer.finish();
    });
    database.write([](WriteContext& context) {
        createIndex(context, u"Traces", {.name = u"Key", .columns = {{u"Key"}}});
    });
    database.write([](WriteContext& context) {
        createTable(context, u"Filters", {{.name = u"Key", .type = ColumnType::Text, .size = 320}});
    });
    database.write([&](WriteContext& context) {
        TableWriter writer{context, database.table(u"Filters")->definition()};
        for (int i = 0; i < 50; ++i) writer.insert(row(std::u16string(i + 1u, u'k')));
        writer.finish();
    });
}

struct Change {
    ByteVector before;
    ByteVector after;
    std::uint64_t operations = 0;
    std::size_t changedPages;

    Change(std::int32_t rows, std::size_t capacity)
        : before{olderFormat(rows)}, changedPages{capacity} {
        FaultyDisk disk{before};
        {
            const auto database = Database::open(disk.open(), changedPages);
            change(*database);
            database->commit();
        }
        after = disk.database();
        operations = disk.operations();
        EXPECT_FALSE(disk.hasJournal());
        expectClean(MemoryStorage{after});
    }

    /// Lets the power fail before an operation, and looks at what is found afterwards.
    void failBefore(std::uint64_t operation, Survival survival, Random& random) const {
        FaultyDisk disk{before};
        disk.failAfter(operation);
        try {
            const auto database = Database::open(disk.open(), changedPages);
            change(*database);
            database->commit();
        } catch (const Error&) {
            EXPECT_TRUE(disk.hasFailed());
        }
        ASSERT_TRUE(disk.hasFailed());
        FaultyDisk found = disk.restarted(survival, random);
        {
            const auto database = Database::open(found.open(), changedPages);
            EXPECT_EQ(database->recovery().obstacle, "") << "operation " << operation;
        }
        const bool old = found.database() == before;
        const bool complete = found.database() == after;
        ASSERT_TRUE(old || complete) << "operation " << operation << " of " << operations
                                     << ", survival " << static_cast<int>(survival);
    }
};

constexpr std::array kSurvivals{Survival::None, Survival::All, Survival::Random, Survival::Torn};

TEST(Crash, AtEveryOperationOfAChange) {
    Random random{1};
    const Change change{60, Pager::kDefaultCapacity};
    EXPECT_GT(change.operations, 6u);
    for (std::uint64_t operation = 0; operation < change.operations; ++operation) {
        for (const Survival survival : kSurvivals) change.failBefore(operation, survival, random);
    }
}

// With room for a few pages only, the file is written to long before the end.
TEST(Crash, AtEveryOperationOfAChangeThatDoesNotFitIntoMemory) {
    Random random{2};
    const Change change{400, 4};
    EXPECT_GT(change.operations, 50u);
    for (std::uint64_t operation = 0; operation < change.operations; ++operation) {
        for (const Survival survival : kSurvivals) change.failBefore(operation, survival, random);
    }
}

TEST(Crash, AtRandomOperationsOfALargerChange) {
    Random random{3};
    const Change change{2000, 4};
    EXPECT_GT(change.operations, 100u);
    const auto operations = static_cast<std::uint32_t>(change.operations);
    for (int round = 0; round < 1000; ++round) {
        change.failBefore(random.below(operations), kSurvivals[round % kSurvivals.size()], random);
    }
}

// The power fails again while the first failure is being repaired.
TEST(Crash, DuringRecovery) {
    Random random{4};
    const Change change{150, 16};
    for (std::uint64_t operation = change.operations / 2; operation < change.operations;
         ++operation) {
        FaultyDisk disk{change.before};
        disk.failAfter(operation);
        try {
            const auto database = Database::open(disk.open(), change.changedPages);
            jet::change(*database);
            database->commit();
        } catch (const Error&) {
        }
        FaultyDisk found = disk.restarted(Survival::Random, random);
        for (std::uint64_t second = 0; second < 40; ++second) {
            FaultyDisk again = found.restarted(Survival::All, random);
            again.failAfter(second);
            try {
                const auto database = Database::open(again.open());
                if (!again.hasFailed()) break;
            } catch (const Error&) {
            }
            FaultyDisk last = again.restarted(Survival::Torn, random);
            EXPECT_EQ(Database::open(last.open())->recovery().obstacle, "");
            ASSERT_TRUE(last.database() == change.before || last.database() == change.after)
                << operation << ", " << second;
        }
    }
}

}  // namespace
}  // namespace jet
