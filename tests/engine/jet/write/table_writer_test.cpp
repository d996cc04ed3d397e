#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/written.h"

#include <gmock/gmock.h>

namespace jet {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

std::vector<NewColumn> peopleColumns() {
    return {{.name = u"Id", .type = ColumnType::Long},
            {.name = u"Name", .type = ColumnType::Text, .size = 100},
            {.name = u"Note", .type = ColumnType::Memo},
            {.name = u"Active", .type = ColumnType::Boolean},
            {.name = u"Born", .type = ColumnType::Date},
            {.name = u"Pay", .type = ColumnType::Currency},
            {.name = u"Picture", .type = ColumnType::Ole}};
}

/// A database with an empty table of people.
class People : public Written {
public:
    People() {
        write([](WriteContext& context) { createTable(context, u"People", peopleColumns()); });
    }

    void insert(std::int32_t id, std::u16string name, std::u16string note = {}) {
        Written::insert(u"People", {person(id, std::move(name), std::move(note))});
    }

    static std::vector<Value> person(std::int32_t id, std::u16string name, std::u16string note) {
        return {Value{id},   Value{std::move(name)}, Value{std::move(note)},
                Value{true}, Value{Date{100.25}},    Value{Currency{12345}},
                Value{}};
    }

    /// The rows' places, in storage order.
    std::vector<RowId> places() {
        const auto table = database->table(u"People");
        std::vector<RowId> found;
        for (TableScan scan{*table}; scan.next();) found.push_back(scan.rowId());
        return found;
    }

    void update(RowId row, std::size_t column, Value value) {
        write([&](WriteContext& context) {
            TableWriter writer{context, database->table(u"People")->definition()};
            const Assignments changes{{column, std::move(value)}};
            writer.update(row, changes);
            writer.finish();
        });
    }

    void remove(RowId row) {
        write([&](WriteContext& context) {
            TableWriter writer{context, database->table(u"People")->definition()};
            writer.remove(row);
            writer.finish();
        });
    }

    void index(NewIndex definition) {
        write([&](WriteContext& context) { createIndex(context, u"People", definition); });
    }
};

TEST(TableWriter, ANewTableIsEmptyAndSound) {
    People people;
    people.expectClean();
    EXPECT_THAT(people.rows(u"People"), SizeIs(0));
    EXPECT_THAT(columnNames(*people.database->table(u"people")),
                ElementsAre("Id", "Name", "Note", "Active", "Born", "Pay", "Picture"));
}

TEST(TableWriter, RowsAreReadAsTheyWereWritten) {
    People people;
    people.insert(7, u"Ada", u"first");
    people.insert(-1, u"", u"");
    people.Written::insert(u"People", {std::vector<Value>(7)});
    people.expectClean();
    EXPECT_THAT(
        people.rows(u"People"),
        ElementsAre(
            ElementsAre("7", "Ada", "first", "1", "1900-04-09 06:00:00", "1.2345", std::nullopt),
            ElementsAre("-1", "", "", "1", "1900-04-09 06:00:00", "1.2345", std::nullopt),
            ElementsAre(std::nullopt, std::nullopt, std::nullopt, "0", std::nullopt, std::nullopt,
                        std::nullopt)));
}

// The lengths at which a long value changes its form: in the record, in a row, in a chain.
TEST(TableWriter, LongValuesOfAllForms) {
    People people;
    std::vector<std::size_t> lengths{0,    1,    31,   32,   33,   62,   63,   64,   65,   1024,
                                     1025, 2037, 2038, 2039, 4072, 4076, 4077, 8144, 8145, 70000};
    for (const std::size_t length : lengths) {
        people.insert(static_cast<std::int32_t>(length), u"x",
                      std::u16string(length, u'a') + u"\u4E00");
    }
    people.expectClean();
    const auto rows = people.rows(u"People");
    ASSERT_THAT(rows, SizeIs(lengths.size()));
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        EXPECT_EQ(rows[i][2], std::string(lengths[i], 'a') + "\u4E00");
    }
}

TEST(TableWriter, LongValuesGoWithTheirRow) {
    People people;
    for (int i = 0; i < 20; ++i) people.insert(i, u"x", std::u16string(3000u * (i % 3 + 1u), u'b'));
    for (const RowId place : people.places()) people.remove(place);
    people.expectClean();
    EXPECT_THAT(people.rows(u"People"), SizeIs(0));
}

TEST(TableWriter, ALongValueIsReplaced) {
    People people;
    people.insert(1, u"x", std::u16string(9000, u'b'));
    people.update(people.places()[0], 2, std::u16string(100, u'c'));
    people.expectClean();
    EXPECT_EQ(people.rows(u"People")[0][2], std::string(100, 'c'));
    people.update(people.places()[0], 2, Value{});
    people.expectClean();
    EXPECT_EQ(people.rows(u"People")[0][2], std::nullopt);
}

// A record that outgrows its page moves; its row stays where it was. Moved again, it leaves nothing
// behind.
TEST(TableWriter, ARecordThatOutgrowsItsPageMoves) {
    People people;
    for (int i = 0; i < 60; ++i) people.insert(i, u"n" + std::u16string(20, u'x'), u"note");
    const std::vector<RowId> places = people.places();
    for (int round = 1; round <= 3; ++round) {
        for (std::size_t i = 0; i < places.size(); i += 3) {
            people.update(places[i], 1,
                          std::u16string(16u * static_cast<unsigned>(round), u'\u4E01'));
        }
        people.expectClean();
        EXPECT_EQ(people.places(), places);
    }
    const auto rows = people.rows(u"People");
    EXPECT_EQ(rows[0][0], "0");
    EXPECT_EQ(rows[3][1]->size(), 3u * 48);
    for (const RowId place : places) people.remove(place);
    people.expectClean();
}

TEST(TableWriter, IndexesFollowEveryChange) {
    People people;
    people.index({.name = u"ByName", .columns = {{u"Name"}}});
    people.index({.name = u"ByBoth", .columns = {{u"Born", false}, {u"Id"}}});
    people.index({.name = u"Key", .columns = {{u"Id"}}, .primary = true});
    for (int i = 0; i < 700; ++i) {
        people.insert(
            i * 7919 % 1000,
            u"Name " + std::u16string(1u + i % 40u, static_cast<char16_t>(u'a' + i % 26)));
    }
    people.expectClean();
    const std::vector<RowId> places = people.places();
    for (std::size_t i = 0; i < places.size(); i += 2) people.update(places[i], 1, text(u"same"));
    people.expectClean();
    for (std::size_t i = 0; i < places.size(); i += 5) people.remove(places[i]);
    people.expectClean();
    for (const RowId place : people.places()) people.remove(place);
    people.expectClean();
}

TEST(TableWriter, AUniqueIndexRefusesAKeyThatItHolds) {
    People people;
    people.index({.name = u"Key", .columns = {{u"Id"}}, .unique = true});
    people.insert(1, u"a");
    try {
        people.insert(1, u"b");
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.fault(), Fault::DuplicateKey);
    }
    EXPECT_THAT(people.rows(u"People"), SizeIs(1));
    // Nulls do not collide.
    people.Written::insert(u"People", {std::vector<Value>(7), std::vector<Value>(7)});
    people.expectClean();
}

TEST(TableWriter, AnIndexOfDuplicatesCannotBeUnique) {
    People people;
    people.insert(1, u"a");
    people.insert(1, u"b");
    EXPECT_THROW(people.index({.name = u"Key", .columns = {{u"Id"}}, .unique = true}), Error);
    people.expectClean();
    EXPECT_TRUE(people.database->table(u"People")->definition().logicalIndexes.empty());
}

TEST(TableWriter, AddedColumnsAreNullInOldRows) {
    People people;
    people.insert(1, u"Ada");
    people.write([](WriteContext& context) {
        addColumn(context, u"People", {.name = u"Flag", .type = ColumnType::Boolean});
        addColumn(context, u"People", {.name = u"Town", .type = ColumnType::Text, .size = 40});
        addColumn(context, u"People", {.name = u"More", .type = ColumnType::Memo});
        addColumn(context, u"People", {.name = u"Size", .type = ColumnType::Double});
    });
    people.expectClean();
    auto rows = people.rows(u"People");
    EXPECT_THAT(rows[0], SizeIs(11));
    EXPECT_EQ(rows[0][7], "0");
    EXPECT_EQ(rows[0][8], std::nullopt);
    people.update(people.places()[0], 8, text(u"London"));
    people.update(people.places()[0], 9, std::u16string(500, u'm'));
    people.expectClean();
    rows = people.rows(u"People");
    EXPECT_EQ(rows[0][1], "Ada");
    EXPECT_EQ(rows[0][8], "London");
}

// A definition of many columns stands on several pages.
TEST(TableWriter, ADefinitionGrowsOverSeveralPages) {
    People people;
    people.insert(1, u"Ada");
    people.write([](WriteContext& context) {
        for (int i = 0; i < 200; ++i) {
            const std::string name = "Column number " + std::to_string(i);
            addColumn(context, u"People",
                      {.name = toUtf16(name),
                       .type = i % 2 ? ColumnType::Text : ColumnType::Long,
                       .size = 20});
        }
    });
    people.expectClean();
    EXPECT_THAT(people.database->table(u"People")->definition().columns, SizeIs(207));
    EXPECT_EQ(people.rows(u"People")[0][1], "Ada");
    people.write([](WriteContext& context) { dropTable(context, u"People"); });
    people.expectClean();  // no page of the definition is left without an owner
}

TEST(TableWriter, ATableThatIsDroppedLeavesNothing) {
    People people;
    for (int i = 0; i < 100; ++i) people.insert(i, u"secret", std::u16string(5000, u'b'));
    people.index({.name = u"ByName", .columns = {{u"Name"}}});
    const auto holdsName = [&] {
        people.database->commit();
        const std::string stored = "secret";
        const auto& bytes = people.bytes();
        return std::search(bytes.begin(), bytes.end(), stored.begin(), stored.end()) != bytes.end();
    };
    EXPECT_TRUE(holdsName());
    people.write([](WriteContext& context) { dropTable(context, u"People"); });
    people.expectClean();
    EXPECT_FALSE(holdsName());
    EXPECT_TRUE(userTables(*people.database).empty());
    EXPECT_THROW(people.database->table(u"People"), Error);
}

TEST(TableWriter, AutonumbersCountOn) {
    Written file;
    file.write([](WriteContext& context) {
        createTable(context, u"T",
                    {{.name = u"No", .type = ColumnType::Long, .autonumber = true},
                     {.name = u"X", .type = ColumnType::Byte}});
    });
    const Value x{std::uint8_t{5}};
    file.insert(u"T", {{{}, x}, {{}, x}, {Value{std::int32_t{10}}, x}, {{}, x}});
    file.expectClean();
    const auto rows = file.rows(u"T");
    EXPECT_EQ(rows[0][0], "1");
    EXPECT_EQ(rows[1][0], "2");
    EXPECT_EQ(rows[2][0], "10");
    EXPECT_EQ(rows[3][0], "11");
}

// The count goes on from the highest number, in this statement and the next; Null and numbers below
// zero do not take it back.
TEST(TableWriter, AutonumbersThatAreGivenDoNotTakeTheCountBack) {
    Written file;
    file.write([](WriteContext& context) {
        createTable(context, u"T", {{.name = u"No", .type = ColumnType::Long, .autonumber = true}});
    });
    file.insert(u"T", {row(std::int32_t{10}), row(std::int32_t{3}), row(Value{})});
    file.insert(u"T", {row(std::int32_t{-7}), row(Value{})});
    file.insert(u"T", {row(Value{})});
    std::vector<std::string> numbers;
    for (const auto& found : file.rows(u"T")) numbers.push_back(found[0].value_or("Null"));
    EXPECT_THAT(numbers, ElementsAre("10", "3", "11", "-7", "12", "13"));
    EXPECT_EQ(file.database->table(u"T")->definition().lastAutonumber, 13u);
    file.expectClean();
}

// Nulls are no duplicates, also where the index is built of rows that are there.
TEST(TableWriter, AUniqueIndexOfManyNulls) {
    for (const bool ascending : {true, false}) {
        People people;
        people.Written::insert(u"People", {std::vector<Value>(7), std::vector<Value>(7)});
        people.insert(1, u"a");
        people.index({.name = u"Key", .columns = {{u"Id", ascending}}, .unique = true});
        people.expectClean();
        people.Written::insert(u"People", {std::vector<Value>(7)});
        people.expectClean();
        EXPECT_THAT(people.rows(u"People"), SizeIs(4));
    }
}

// What the definition says of an index: its entries when it was built, and its keys.
TEST(TableWriter, AnIndexIsCounted) {
    People people;
    for (int i = 0; i < 4; ++i) people.insert(i % 2, u"a");
    people.index({.name = u"Key", .columns = {{u"Id"}}});
    const auto counters = [&] {
        const auto table = people.database->table(u"People");
        const PhysicalIndex& index = table->definition().physicalIndexes[0];
        return std::pair{index.entriesAtBuild, index.distinctKeys};
    };
    EXPECT_EQ(counters(), (std::pair{4u, 2u}));
    people.insert(1, u"b");
    people.insert(7, u"b");
    EXPECT_EQ(counters(), (std::pair{4u, 3u}));
    // So many keys change that the tree is built anew.
    people.Written::insert(u"People",
                           std::vector<std::vector<Value>>(1500, People::person(9, u"x", u"")));
    people.write([&](WriteContext& context) {
        TableWriter writer{context, people.database->table(u"People")->definition()};
        writer.updateRows([](const Record&, PageReader&, Assignments& changes) {
            changes.push_back({0, std::int32_t{5}});
            return true;
        });
        writer.finish();
    });
    EXPECT_EQ(counters(), (std::pair{1506u, 1u}));
    people.expectClean();
}

TEST(TableWriter, ABooleanTakesNoOtherType) {
    People people;
    people.insert(1, u"Ada");
    expectFault(Fault::WrongType,
                [&] { people.update(people.places()[0], 3, Value{std::int32_t{1}}); });
    people.update(people.places()[0], 3, Value{});
    EXPECT_EQ(people.rows(u"People")[0][3], "0");
}

// A row id of another table is no row of this one.
TEST(TableWriter, RowsChangeOneAfterAnotherInOneStatement) {
    People people;
    people.index({.name = u"ByName", .columns = {{u"Name"}}});
    for (int i = 0; i < 3; ++i) people.insert(i, u"before");
    people.write([&](WriteContext& context) {
        TableWriter writer{context, people.database->table(u"People")->definition()};
        for (const RowId row : people.places()) {
            const Assignments changes{{1, text(u"after")}};
            writer.update(row, changes);
        }
        writer.finish();
    });
    people.expectClean();
    for (const auto& person : people.rows(u"People")) EXPECT_EQ(person[1], "after");
}

TEST(TableWriter, ARowOfAnotherTableIsNotChanged) {
    const auto expectRefused = [](const std::function<void(People&, RowId)>& change) {
        People people;
        people.insert(1, u"Ada");
        people.write(
            [](WriteContext& context) { createTable(context, u"Other", peopleColumns()); });
        people.Written::insert(u"Other", {People::person(2, u"Bob", u"")});
        people.database->commit();
        const auto other = people.database->table(u"Other");
        TableScan scan{*other};
        ASSERT_TRUE(scan.next());
        expectFault(Fault::DamagedFile, [&] { change(people, scan.rowId()); });
        EXPECT_EQ(people.rows(u"Other")[0][1], "Bob");
        people.expectClean();
    };
    expectRefused([](People& people, RowId row) { people.update(row, 1, text(u"Eve")); });
    expectRefused([](People& people, RowId row) { people.remove(row); });
}

TEST(TableWriter, NewColumnsAreDescribedAsTheyAreAskedFor) {
    Written file;
    file.write([](WriteContext& context) {
        createTable(context, u"T",
                    {{.name = u"Flag", .type = ColumnType::Boolean},
                     {.name = u"Plain", .type = ColumnType::Text, .size = 20, .compressed = false},
                     {.name = u"Small", .type = ColumnType::Text, .size = 20, .compressed = true}});
        addColumn(context, u"T", {.name = u"Number", .type = ColumnType::Long});
        addColumn(context, u"T", {.name = u"Other", .type = ColumnType::Double});
    });
    const TableDefinition definition = file.database->table(u"T")->definition();
    EXPECT_FALSE(definition.findColumn(u"Plain")->compressed);
    EXPECT_TRUE(definition.findColumn(u"Small")->compressed);
    EXPECT_EQ(definition.findColumn(u"Number")->fixedOffset, 0u);
    EXPECT_EQ(definition.findColumn(u"Other")->fixedOffset, 4u);
    for (std::size_t i = 0; i < definition.columns.size(); ++i) {
        EXPECT_EQ(definition.columns[i].ordinal, i);
        EXPECT_EQ(definition.columns[i].id, i);
    }
}

TEST(TableWriter, ManyRowsChangeAtOnce) {
    People people;
    std::vector<std::vector<Value>> rows;
    for (int i = 0; i < 3000; ++i) {
        rows.push_back(People::person(i, u"N" + std::u16string(i % 20u, u'x'), u"note"));
    }
    people.Written::insert(u"People", rows);
    people.index({.name = u"ByName", .columns = {{u"Name"}}});
    std::uint64_t changed = 0;
    people.write([&](WriteContext& context) {
        TableWriter writer{context, people.database->table(u"People")->definition()};
        changed = writer.updateRows([](const Record& record, PageReader& pages, Assignments& out) {
            Column id;
            id.type = ColumnType::Long;
            id.fixed = true;
            const auto number =
                std::get<std::int32_t>(decodeField(pages, id, record.field(id), record.page()));
            if (number % 3 == 0) return false;
            out.push_back({1, std::u16string(30, u'\u4E01') + std::u16string(number % 7u, u'q')});
            return true;
        });
        writer.finish();
    });
    EXPECT_EQ(changed, 2000u);
    people.expectClean();
    const auto after = people.rows(u"People");
    ASSERT_THAT(after, SizeIs(3000));
    EXPECT_EQ(after[2999][1]->size(), 30u * 3 + 2999 % 7);
    EXPECT_EQ(after[0][1], "N");
}

TEST(TableWriter, NamesThatCannotBe) {
    Written file;
    const auto make = [&](std::u16string name) {
        file.write([&](WriteContext& context) {
            createTable(context, name, {{.name = u"X", .type = ColumnType::Long}});
        });
    };
    for (const auto* name : {u"", u" x", u"a.b", u"a!b", u"a[b", u"a]b", u"a`b", u"a\nb"}) {
        EXPECT_THROW(make(name), Error) << toUtf8(name);
    }
    EXPECT_THROW(make(std::u16string(65, u'x')), Error);
    make(std::u16string(64, u'x'));
    make(u"Aé");
    try {
        make(u"aÉ");
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.fault(), Fault::TableExists);
    }
    file.expectClean();
}

}  // namespace
}  // namespace jet
