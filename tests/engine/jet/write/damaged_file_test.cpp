// Files with damage in them: nothing is written, and what was not yet durable is taken back.
#include "engine/jet/database.h"
#include "engine/jet/write/schema.h"
#include "engine/jet/write/table_writer.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/plain_value.h"
#include "tests/support/damage.h"
#include "tests/support/faulty_disk.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace jet {
namespace {

using fixture::FaultyDisk;
using testing::HasSubstr;
using ByteVector = std::vector<std::uint8_t>;

/// Where the rows of a table are.
std::vector<RowId> rowsOf(Database& database, std::u16string_view name) {
    std::vector<RowId> rows;
    const auto table = database.table(name);
    for (TableScan scan{*table}; scan.next();) rows.push_back(scan.rowId());
    return rows;
}

class DamagedFile : public testing::Test {
protected:
    DamagedFile() {
        ByteVector bytes = fixture::traceDatabase({.rows = 2500}, fixture::TraceFormat::Older);
        const auto database = Database::open(std::make_unique<MemoryStorage>(bytes));
        const auto rows = rowsOf(*database, u"tblTraces");
        page_ = rows[rows.size() / 2].page();
        fixture::poke(bytes, fixture::pageOffset(page_), {0, 0});
        disk_ = FaultyDisk{std::move(bytes)};
    }

    static void addColumn(Database& database, const char16_t* name) {
        database.write([&](WriteContext& context) {
            jet::addColumn(context, u"tblTraces", {.name = name, .type = ColumnType::Boolean});
        });
    }

    /// A statement that reads all rows of the table.
    static void update(Database& database) {
        database.write([&](WriteContext& context) {
            const auto table = database.table(u"tblTraces");
            TableWriter writer{context, table->definition()};
            writer.updateRows([](const Record&, PageReader&, Assignments& out) {
                out.push_back({1, std::u16string{u"process"}});
                return true;
            });
            writer.finish();
        });
    }

    /// Every statement fails before it begins.
    void expectReadOnly(Database& database) {
        const auto operations = disk_.operations();
        bool begun = false;
        const std::string message = expectFault(
            Fault::DamagedFile, [&] { database.write([&](WriteContext&) { begun = true; }); });
        EXPECT_FALSE(begun);
        EXPECT_EQ(disk_.operations(), operations);
        EXPECT_FALSE(database.hasUncommittedChanges());
        ASSERT_TRUE(database.firstLoss());
        EXPECT_THAT(message, HasSubstr(toText(*database.firstLoss())));
        EXPECT_FALSE(disk_.hasJournal());
    }

    FaultyDisk disk_{ByteVector{}};
    PageNumber page_ = kNoPage;
};

TEST_F(DamagedFile, AStatementThatMeetsTheDamageTakesBackTheOnesBeforeIt) {
    const ByteVector before = disk_.database();
    for (const std::size_t changedPages : {2u, 1000u}) {
        const auto database = Database::open(disk_.open(), changedPages);
        addColumn(*database, u"Highlight");
        addColumn(*database, u"NotePresent");
        EXPECT_TRUE(database->hasUncommittedChanges());
        const std::string message = expectFault(Fault::DamagedFile, [&] { update(*database); });
        EXPECT_THAT(message, HasSubstr("age " + std::to_string(raw(page_)) + ":"));
        expectReadOnly(*database);
        EXPECT_EQ(disk_.database(), before);
        // It can be read as before.
        EXPECT_EQ(database->table(u"tblTraces")->definition().findColumn(u"Highlight"), nullptr);
        EXPECT_GT(rowsOf(*database, u"tblTraces").size(), 2000u);
    }
    EXPECT_EQ(disk_.database(), before);
}

TEST_F(DamagedFile, ALossThatAReaderHasSeenForbidsAllStatements) {
    const ByteVector before = disk_.database();
    {
        const auto database = Database::open(disk_.open());
        rowsOf(*database, u"tblTraces");
        expectReadOnly(*database);
    }
    EXPECT_EQ(disk_.database(), before);
}

TEST_F(DamagedFile, WhatIsDurableStays) {
    const auto database = Database::open(disk_.open());
    addColumn(*database, u"Highlight");
    database->commit();
    const ByteVector before = disk_.database();
    addColumn(*database, u"NotePresent");
    rowsOf(*database, u"tblTraces");
    expectFault(Fault::DamagedFile, [&] { addColumn(*database, u"Notes"); });
    expectReadOnly(*database);
    EXPECT_EQ(disk_.database(), before);
    EXPECT_NE(database->table(u"tblTraces")->definition().findColumn(u"Highlight"), nullptr);
}

TEST_F(DamagedFile, AnEntryOfTheCatalogThatIsLost) {
    ByteVector bytes = fixture::traceDatabase({.rows = 10}, fixture::TraceFormat::Newer);
    {
        const auto database = Database::open(std::make_unique<MemoryStorage>(bytes));
        const RowId last = rowsOf(*database, u"MSysObjects").back();
        fixture::poke16(bytes, fixture::rowOffset(bytes, last), 0x7FFF);
    }
    disk_ = FaultyDisk{bytes};
    const auto database = Database::open(disk_.open());
    expectFault(Fault::DamagedFile, [&] { addColumn(*database, u"Extra"); });
    expectReadOnly(*database);
    EXPECT_EQ(disk_.database(), bytes);
}

// A statement that fails for another reason is undone alone.
TEST_F(DamagedFile, OtherFailuresLeaveEarlierStatements) {
    const auto database = Database::open(disk_.open());
    addColumn(*database, u"Highlight");
    expectFault(Fault::AlreadyExists, [&] { addColumn(*database, u"Highlight"); });
    EXPECT_TRUE(database->hasUncommittedChanges());
    EXPECT_FALSE(database->firstLoss());
    addColumn(*database, u"NotePresent");
    database->commit();
}

}  // namespace
}  // namespace jet
