// What an open database shows of its statements: those that stand, and those that do not.
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"
#include "tests/support/faulty_disk.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <stdexcept>

namespace jet {
namespace {

using fixture::FaultyDisk;

const std::vector<NewColumn> kOneColumn{{.name = u"X", .type = ColumnType::Long}};

void addTable(Database& database, const std::u16string& name) {
    database.write([&](WriteContext& context) { createTable(context, name, kOneColumn); });
}

TEST(DatabaseWrite, ATableIsGoneWithTheStatementThatMadeIt) {
    Written file;
    EXPECT_THROW(file.write([&](WriteContext& context) {
        createTable(context, u"T", kOneColumn);
        EXPECT_NO_THROW(file.database->table(u"T"));
        throw std::runtime_error{"on second thoughts"};
    }),
                 std::runtime_error);
    expectFault(Fault::NoSuchTable, [&] { file.database->table(u"T"); });
    file.expectClean();
}

TEST(DatabaseWrite, ATableIsGoneWithTheCommitThatFailed) {
    FaultyDisk disk{emptyDatabase(kTestNow)};
    const auto database = Database::open(disk.open());
    addTable(*database, u"T");
    EXPECT_NO_THROW(database->table(u"T"));
    disk.failOnceAfter(0, Fault::WriteFailed);
    expectFault(Fault::WriteFailed, [&] { database->commit(); });
    expectFault(Fault::NoSuchTable, [&] { database->table(u"T"); });
}

TEST(DatabaseWrite, AStatementSeesTheTablesThatOthersMade) {
    FaultyDisk disk{emptyDatabase(kTestNow)};
    const auto database = Database::open(disk.open());
    expectFault(Fault::NoSuchTable, [&] { database->table(u"T"); });
    {
        const auto other = Database::open(disk.open());
        addTable(*other, u"T");
        other->commit();
    }
    database->write([&](WriteContext&) { EXPECT_NO_THROW(database->table(u"T")); });
}

// Whoever changes rows of the catalog directly has no need to say so.
TEST(DatabaseWrite, TheCatalogIsReadAnewAfterAStatement) {
    Written file;
    addTable(*file.database, u"Before");
    file.write([&](WriteContext& context) {
        const auto objects = file.database->table(u"MSysObjects");
        const Column& name = *objects->definition().findColumn(u"Name");
        TableWriter writer{context, objects->definition()};
        writer.updateRows([&](const Record& record, PageReader& pages, Assignments& changes) {
            const Value value = decodeField(pages, name, record.field(name), record.page());
            if (value != text(u"Before")) return false;
            const auto place =
                static_cast<std::size_t>(&name - objects->definition().columns.data());
            changes.push_back({place, text(u"After")});
            return true;
        });
        writer.finish();
        EXPECT_NO_THROW(file.database->table(u"MSysObjects"));
    });
    EXPECT_NO_THROW(file.database->table(u"After"));
    expectFault(Fault::NoSuchTable, [&] { file.database->table(u"Before"); });
}

/// This machine's local time, as the catalog's dates have it.
Date wallClock() {
    const std::time_t now = std::time(nullptr);
    const std::tm local = *std::localtime(&now);
    const std::chrono::sys_days day =
        std::chrono::year{local.tm_year + 1900} / (local.tm_mon + 1) / local.tm_mday;
    const int seconds = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
    return Date{25569.0 + static_cast<double>(day.time_since_epoch().count()) + seconds / 86400.0};
}

TEST(DatabaseWrite, StatementsTakeTheTimeFromTheWallClock) {
    const auto database = Database::open(std::make_unique<MemoryStorage>(emptyDatabase(kTestNow)));
    const double before = wallClock().days;
    double now = 0;
    database->write([&](WriteContext& context) { now = context.now.days; });
    EXPECT_GE(now, before);
    EXPECT_LE(now, wallClock().days);
}

// ---- What a new table gets in the catalog ---------------------------------------------------------

/// The rows of a system table whose column has that value.
std::vector<fixture::PlainRow> rowsOf(Written& file, std::u16string_view table,
                                      std::u16string_view column, const std::string& value) {
    const TableDefinition definition = file.database->table(table)->definition();
    const auto place = definition.findColumn(column) - definition.columns.data();
    std::vector<fixture::PlainRow> found = file.rows(table);
    std::erase_if(found,
                  [&](const auto& row) { return row[static_cast<std::size_t>(place)] != value; });
    return found;
}

std::string pageOf(Written& file, std::u16string_view table) {
    return std::to_string(raw(file.database->table(table)->definition().page));
}

constexpr std::int32_t kTables = 0x0F000001;

TEST(DatabaseWrite, RightsToANewTable) {
    Written file;
    const auto grant = [&](bool inheritable, Binary holder, std::int32_t mask) {
        // ACM, FInheritable, ObjectId, SID
        file.insert(u"MSysACEs", {row(Value{mask}, Value{inheritable}, Value{kTables},
                                      Value{std::move(holder)})});
    };
    grant(false, {0x01, 0x01}, 0xFFEFF);  // is handed on to nobody
    grant(true, {0x02, 0x02}, 0xFFEFF);
    grant(true, {0x02, 0x02}, 0x14);  // once more
    addTable(*file.database, u"T");
    std::vector<std::string> holders;
    for (const auto& right : rowsOf(file, u"MSysACEs", u"ObjectId", pageOf(file, u"T"))) {
        EXPECT_EQ(right[0], std::to_string(0xFFEFF));
        EXPECT_EQ(right[1], "0");
        holders.push_back(right[3].value_or(""));
    }
    std::ranges::sort(holders);
    // The owner of the database, its users, and the one above; not whoever made the container.
    EXPECT_EQ(holders, (std::vector<std::string>{"0x0202", "0x648b", "0x658b"}));
    file.expectClean();
}

TEST(DatabaseWrite, ATableMayBeNamedAsAnObjectOfAnotherContainer) {
    Written file;
    addTable(*file.database, u"Databases");
    EXPECT_NO_THROW(file.database->table(u"Databases"));
    file.expectClean();
}

// Other objects may have numbers that are like those of tables.
TEST(DatabaseWrite, AChangedTableIsDatedAndNoOtherObject) {
    Written file;
    addTable(*file.database, u"T");
    const TableDefinition objects = file.database->table(u"MSysObjects")->definition();
    const auto placeOf = [&](std::u16string_view name) {
        return static_cast<std::size_t>(objects.findColumn(name) - objects.columns.data());
    };
    std::vector<Value> query(objects.columns.size());
    query[placeOf(u"Id")] =
        static_cast<std::int32_t>(0x80000000u | raw(file.database->table(u"T")->definition().page));
    query[placeOf(u"ParentId")] = kTables;
    query[placeOf(u"Name")] = text(u"Q");
    query[placeOf(u"Type")] = std::int16_t{5};
    query[placeOf(u"DateUpdate")] = kTestNow;
    file.insert(u"MSysObjects", {query});
    const auto dateOf = [&](const std::string& name) {
        return *rowsOf(file, u"MSysObjects", u"Name", name)[0][placeOf(u"DateUpdate")];
    };
    const std::string before = dateOf("Q");
    EXPECT_EQ(dateOf("T"), before);
    file.database->setClock([] { return Date{kTestNow.days + 1}; });
    file.write([](WriteContext& context) {
        addColumn(context, u"T", {.name = u"Y", .type = ColumnType::Long});
    });
    const std::string later = dateOf("T");
    EXPECT_NE(later, before);
    EXPECT_EQ(dateOf("Q"), before);
    file.database->setClock([] { return Date{kTestNow.days + 2}; });
    file.write([](WriteContext& context) {
        createIndex(context, u"T", {.name = u"I", .columns = {{u"X"}}});
    });
    EXPECT_NE(dateOf("T"), later);
}

TEST(DatabaseWrite, TheSystemTablesUseTheRoomOfTheirPages) {
    Written file;
    for (const char16_t* name : {u"A", u"B", u"C"}) addTable(*file.database, name);
    EXPECT_EQ(file.database->table(u"MSysObjects")->dataPages().size(), 1u);
    EXPECT_EQ(file.database->table(u"MSysACEs")->dataPages().size(), 1u);
}

}  // namespace
}  // namespace jet
