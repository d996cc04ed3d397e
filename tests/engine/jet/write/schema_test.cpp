// Tables, columns and indexes that cannot be made or dropped: a typed error, and a file as before.
#include "engine/jet/write/definition_editor.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>

namespace jet {
namespace {

class Schema : public ::testing::Test {
protected:
    Schema() {
        file_.write([](WriteContext& context) {
            createTable(context, u"People",
                        {{.name = u"Id", .type = ColumnType::Long},
                         {.name = u"Name", .type = ColumnType::Text, .size = 40},
                         {.name = u"Picture", .type = ColumnType::Ole}});
            createIndex(context, u"People", {.name = u"ByName", .columns = {{u"Name"}}});
        });
        file_.insert(u"People", {row(std::int32_t{1}, text(u"a"), Value{}),
                                 row(std::int32_t{1}, text(u"b"), Value{}),
                                 row(Value{}, text(u"c"), Value{})});
        file_.database->commit();
    }

    /// Expects the fault, and that nothing has changed.
    void refuses(Fault fault, const std::function<void(WriteContext&)>& change,
                 CallSite where = CallSite::here()) {
        const std::vector<std::uint8_t> before = file_.bytes();
        expectFault(
            fault, [&] { file_.write(change); }, where);
        file_.database->commit();
        EXPECT_EQ(file_.bytes(), before) << where.line;
    }

    void refusesColumn(Fault fault, const NewColumn& column, CallSite where = CallSite::here()) {
        refuses(
            fault, [&](WriteContext& context) { addColumn(context, u"People", column); }, where);
        refuses(
            fault,
            [&](WriteContext& context) {
                createTable(context, u"New", {{.name = u"NAME", .type = ColumnType::Long}, column});
            },
            where);
    }

    void refusesIndex(Fault fault, const NewIndex& index, CallSite where = CallSite::here()) {
        refuses(
            fault, [&](WriteContext& context) { createIndex(context, u"People", index); }, where);
    }

    Written file_;
};

TEST_F(Schema, NamesThatAreTaken) {
    refuses(Fault::TableExists, [](WriteContext& context) {
        createTable(context, u"PEOPLE", {{.name = u"X", .type = ColumnType::Long}});
    });
    refuses(Fault::TableExists, [](WriteContext& context) {
        createTable(context, u"msysobjects", {{.name = u"X", .type = ColumnType::Long}});
    });
    refusesColumn(Fault::AlreadyExists, {.name = u"name", .type = ColumnType::Long});
    refusesIndex(Fault::AlreadyExists, {.name = u"BYNAME", .columns = {{u"Id"}}});
}

TEST_F(Schema, WhatIsNotThere) {
    refuses(Fault::NoSuchTable, [](WriteContext& context) {
        addColumn(context, u"Nobody", {.name = u"X", .type = ColumnType::Long});
    });
    refuses(Fault::NoSuchTable, [](WriteContext& context) {
        createIndex(context, u"Nobody", {.name = u"X", .columns = {{u"X"}}});
    });
    refuses(Fault::NoSuchTable, [](WriteContext& context) { dropTable(context, u"Nobody"); });
    refusesIndex(Fault::NoSuchColumn, {.name = u"X", .columns = {{u"Id"}, {u"Nothing"}}});
}

TEST_F(Schema, SystemTablesAreNotDropped) {
    for (const char16_t* name : {u"MSysObjects", u"MSysACEs", u"MSysQueries"}) {
        refuses(Fault::ReadOnly, [&](WriteContext& context) { dropTable(context, name); });
    }
}

TEST_F(Schema, ColumnsThatCannotBe) {
    refusesColumn(Fault::TooMany, {.name = u"X", .type = ColumnType::Text, .size = 0});
    refusesColumn(Fault::TooMany, {.name = u"X", .type = ColumnType::Text, .size = 512});
    refusesColumn(Fault::TooMany, {.name = u"X", .type = ColumnType::Binary, .size = 511});
    refusesColumn(Fault::TooMany, {.name = std::u16string(65, u'x'), .type = ColumnType::Long});
    refusesColumn(Fault::TooMany, {.name = u"a.b", .type = ColumnType::Long});
    refusesColumn(Fault::WrongType, {.name = u"X", .type = ColumnType::InternalBinary});
    refusesColumn(Fault::WrongType,
                  {.name = u"X", .type = ColumnType::Text, .size = 20, .autonumber = true});
    refusesColumn(Fault::WrongType,
                  {.name = u"X", .type = ColumnType::Numeric, .precision = 29, .scale = 0});
    refusesColumn(Fault::WrongType,
                  {.name = u"X", .type = ColumnType::Numeric, .precision = 4, .scale = 5});
}

TEST_F(Schema, MoreThanATableTakes) {
    refuses(Fault::TooMany,
            [](WriteContext& context) { createTable(context, u"None", std::vector<NewColumn>{}); });
    std::vector<NewColumn> columns;
    for (int i = 0; i < 256; ++i) {
        columns.push_back({.name = u"C" + toUtf16(std::to_string(i)), .type = ColumnType::Byte});
    }
    refuses(Fault::TooMany, [&](WriteContext& context) { createTable(context, u"Wide", columns); });
    columns.pop_back();
    file_.write([&](WriteContext& context) { createTable(context, u"Wide", columns); });
    file_.expectClean();
    file_.database->commit();
    refuses(Fault::TooMany, [](WriteContext& context) {
        addColumn(context, u"Wide", {.name = u"X", .type = ColumnType::Byte});
    });
}

// The numbers of columns that were dropped are not given again.
TEST(SchemaOfAnotherMaker, ColumnsThatWereDroppedCount) {
    fixture::FixtureBuilder builder;
    fixture::TableSpec spec{.name = u"T", .columns = {}};
    for (int i = 0; i < 255; ++i) {
        spec.columns.push_back(
            fixture::column(u"C" + toUtf16(std::to_string(i)), ColumnType::Byte));
    }
    auto& table = builder.addTable(spec);
    for (int i = 0; i < 200; ++i) table.dropColumn(u"C" + toUtf16(std::to_string(i)));
    Written file{builder.bytes()};
    ASSERT_EQ(file.database->table(u"T")->definition().columns.size(), 55u);
    expectFault(Fault::TooMany, [&] {
        file.write([](WriteContext& context) {
            addColumn(context, u"T", {.name = u"X", .type = ColumnType::Byte});
        });
    });
}

TEST_F(Schema, FixedColumnsThatNoRecordCanHold) {
    std::vector<NewColumn> columns;
    for (int i = 0; i < 255; ++i) {
        columns.push_back({.name = u"C" + toUtf16(std::to_string(i)), .type = ColumnType::Guid});
    }
    refuses(Fault::TooMany, [&](WriteContext& context) { createTable(context, u"Wide", columns); });
}

TEST_F(Schema, MoreIndexesThanATableTakes) {
    for (int i = 1; i < 32; ++i) {
        file_.write([&](WriteContext& context) {
            createIndex(context, u"People",
                        {.name = u"I" + toUtf16(std::to_string(i)), .columns = {{u"Id"}}});
        });
    }
    file_.expectClean();
    file_.database->commit();
    refusesIndex(Fault::TooMany, {.name = u"Last", .columns = {{u"Id"}}});
}

// Relationships of other makers' tables share a tree, and each has a name of its own.
TEST_F(Schema, MoreNamesOfIndexesThanATableTakes) {
    file_.write([&](WriteContext& context) {
        DefinitionEditor definition{context, file_.database->table(u"People")->definition().page};
        for (std::uint32_t i = 1; i < 32; ++i) {
            definition.addLogicalIndex({.name = u"I" + toUtf16(std::to_string(i)), .number = i});
        }
        definition.write();
    });
    file_.database->commit();
    refusesIndex(Fault::TooMany, {.name = u"Last", .columns = {{u"Id"}}});
}

TEST_F(Schema, IndexesThatCannotBe) {
    refusesIndex(Fault::TooMany, {.name = u"X", .columns = {}});
    refusesIndex(Fault::TooMany,
                 {.name = u"X", .columns = std::vector<NewIndexColumn>(11, {u"Id"})});
    refusesIndex(Fault::WrongType, {.name = u"X", .columns = {{u"Picture"}}});
    refusesIndex(Fault::DuplicateKey, {.name = u"X", .columns = {{u"Id"}}, .unique = true});
    refusesIndex(Fault::NullKey, {.name = u"X", .columns = {{u"Id"}}, .required = true});
    refusesIndex(Fault::NullKey, {.name = u"X", .columns = {{u"Name"}, {u"Id"}}, .primary = true});
    file_.write([](WriteContext& context) {
        createIndex(context, u"People", {.name = u"Key", .columns = {{u"Name"}}, .primary = true});
    });
    file_.database->commit();
    refusesIndex(Fault::AlreadyExists, {.name = u"Other", .columns = {{u"Name"}}, .primary = true});
}

// Rows that are refused by an index or by a column.
TEST_F(Schema, RowsThatAreRefused) {
    file_.write([](WriteContext& context) {
        createTable(context, u"Strict",
                    {{.name = u"Id", .type = ColumnType::Long},
                     {.name = u"Name", .type = ColumnType::Text, .size = 8}});
        createIndex(context, u"Strict", {.name = u"Key", .columns = {{u"Id"}}, .primary = true});
    });
    file_.insert(u"Strict", {row(std::int32_t{1}, text(u"one"))});
    file_.database->commit();
    const auto refusesRow = [&](Fault fault, const std::vector<Value>& values) {
        refuses(fault, [&](WriteContext& context) {
            TableWriter writer{context, file_.database->table(u"Strict")->definition()};
            writer.insert(row(std::int32_t{7}, text(u"ok")));
            writer.insert(values);
            writer.finish();
        });
    };
    refusesRow(Fault::DuplicateKey, row(std::int32_t{1}, text(u"two")));
    refusesRow(Fault::NullKey, row(Value{}, text(u"two")));
    refusesRow(Fault::ValueTooLarge, row(std::int32_t{2}, text(u"12345")));
    refusesRow(Fault::WrongType, row(std::int16_t{2}, text(u"two")));
    refuses(Fault::DuplicateKey, [&](WriteContext& context) {
        TableWriter writer{context, file_.database->table(u"Strict")->definition()};
        writer.insert(row(std::int32_t{2}, text(u"two")));
        writer.updateRows([](const Record&, PageReader&, Assignments& changes) {
            changes.push_back({0, std::int32_t{5}});
            return true;
        });
        writer.finish();
    });
    file_.expectClean();
}

// What was dropped can be made anew in the same statement.
TEST_F(Schema, ATableIsReplacedInOneStatement) {
    for (int round = 0; round < 5; ++round) {
        file_.write([](WriteContext& context) {
            dropTable(context, u"People");
            createTable(context, u"people", {{.name = u"Only", .type = ColumnType::Memo}});
        });
        file_.insert(u"PEOPLE", {row(std::u16string(5000, u'm'))});
        file_.expectClean();
        EXPECT_EQ(file_.rows(u"People").size(), 1u);
    }
}

}  // namespace
}  // namespace jet
