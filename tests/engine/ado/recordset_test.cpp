// The current record, the fields, the states, and the numbers of the errors.
#include "engine/jet/text.h"
#include "tests/engine/ado/recordset_fixture.h"

namespace {

using namespace ado;

fixture::ByteVector peopleDatabase(unsigned count) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"People",
         .columns = {fixture::textColumn(u"Name", 50),
                     fixture::column(u"Age", jet::ColumnType::Long),
                     fixture::column(u"Date", jet::ColumnType::Date), fixture::memoColumn(u"Notes"),
                     fixture::column(u"Here", jet::ColumnType::Boolean)}});
    for (unsigned i = 0; i < count; ++i) {
        const auto name = u"Person " + jet::toUtf16(std::to_string(i));
        table.insert({name, static_cast<std::int32_t>(20 + i), jet::Date{36'526.0 + i},
                      i % 2 == 0 ? fixture::kNull : fixture::Cell{std::u16string(100, u'x') + name},
                      i % 3 == 0});
    }
    return builder.bytes();
}

struct People : TestConnection {
    explicit People(unsigned count) : TestConnection{peopleDatabase(count)} {
        rows.open(u"SELECT * FROM People", connection, adOpenStatic);
    }

    Recordset rows;
};

TEST(Recordset, StatesAndTheirErrors) {
    TestConnection database{peopleDatabase(2)};
    Recordset rows;
    EXPECT_EQ(rows.state(), adStateClosed);
    EXPECT_EQ(errorNumber([&] { rows.close(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.moveFirst(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.eof(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.recordCount(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.absolutePosition(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.fields().count(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.clone(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.getString(); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.find(u"Age = 1"); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.setSort(u"Age"); }), 3704);
    EXPECT_EQ(errorNumber([&] { rows.setSort(u""); }), 0);
    rows.open(u"SELECT * FROM People", database.connection);
    EXPECT_EQ(rows.state(), adStateOpen);
    EXPECT_EQ(errorNumber([&] { rows.open(u"SELECT * FROM People", database.connection); }), 3705);
    EXPECT_EQ(errorNumber([&] { rows.setCursorLocation(adUseClient); }), 3705);
    rows.close();
    EXPECT_EQ(rows.state(), adStateClosed);
    rows.open(u"SELECT Name FROM People", database.connection);
    EXPECT_EQ(rows.fields().count(), 1u);
}

TEST(Recordset, WrongStatements) {
    TestConnection database{peopleDatabase(2)};
    Recordset rows;
    const auto open = [&](std::u16string_view source) {
        return errorNumber([&] { rows.open(source, database.connection); });
    };
    EXPECT_EQ(open(u"SELECT * FROM Nobody"), kErrorNoSuchTable);
    EXPECT_EQ(open(u"SELECT Name, Shoes FROM People"), kErrorParameter);
    EXPECT_EQ(open(u"SELECT Name FROM"), kErrorStatement);
    EXPECT_EQ(open(u""), kErrorStatement);
    EXPECT_EQ(rows.state(), adStateClosed);
    database.connection.close();
    EXPECT_EQ(open(u"SELECT * FROM People"), 3704);
}

TEST(Recordset, NothingOfAnOpeningIsLeftForTheNextOne) {
    TestConnection database{peopleDatabase(5)};
    Recordset rows;
    rows.open(u"SELECT * FROM People", database.connection);
    rows.setSort(u"Age DESC");
    rows.setAbsolutePosition(4);
    rows.close();
    EXPECT_EQ(rows.sort(), u"");
    rows.open(u"SELECT * FROM People", database.connection);
    EXPECT_EQ(rows.sort(), u"");
    EXPECT_EQ(rows.absolutePosition(), 1);
    EXPECT_EQ(rows.fields()[u"Age"].value(), jet::Value{std::int32_t{20}});
    EXPECT_EQ(rows.source(), u"SELECT * FROM People");
}

TEST(Recordset, MovesFromTheFirstRowToTheEndAndBack) {
    People people{3};
    Recordset& rows = people.rows;
    const auto name = [&] { return rows.fields()[u"Name"].text(); };
    EXPECT_EQ(name(), u"Person 0");
    EXPECT_FALSE(rows.bof());
    rows.moveNext();
    rows.moveNext();
    EXPECT_EQ(name(), u"Person 2");
    EXPECT_EQ(rows.absolutePosition(), 3);
    rows.moveNext();
    EXPECT_TRUE(rows.eof());
    EXPECT_EQ(rows.absolutePosition(), adPosEOF);
    EXPECT_EQ(errorNumber([&] { rows.moveNext(); }), 3021);
    EXPECT_EQ(errorNumber([&] { name(); }), 3021);
    rows.movePrevious();
    EXPECT_EQ(name(), u"Person 2");
    rows.moveFirst();
    rows.movePrevious();
    EXPECT_TRUE(rows.bof());
    EXPECT_FALSE(rows.eof());
    EXPECT_EQ(rows.absolutePosition(), adPosBOF);
    EXPECT_EQ(errorNumber([&] { rows.movePrevious(); }), 3021);
    rows.moveNext();
    EXPECT_EQ(name(), u"Person 0");
    rows.moveLast();
    EXPECT_EQ(name(), u"Person 2");
}

TEST(Recordset, EmptyRecordsetHasNoCurrentRecord) {
    People people{0};
    Recordset& rows = people.rows;
    EXPECT_TRUE(rows.bof());
    EXPECT_TRUE(rows.eof());
    EXPECT_EQ(rows.absolutePosition(), adPosUnknown);
    EXPECT_EQ(errorNumber([&] { rows.moveFirst(); }), 3021);
    EXPECT_EQ(errorNumber([&] { rows.moveLast(); }), 3021);
    EXPECT_EQ(errorNumber([&] { rows.moveNext(); }), 3021);
    EXPECT_EQ(errorNumber([&] { rows.movePrevious(); }), 3021);
    EXPECT_EQ(errorNumber([&] { rows.setAbsolutePosition(1); }), 3021);
    EXPECT_EQ(errorNumber([&] { rows.find(u"Age = 1"); }), 3021);
    EXPECT_EQ(errorNumber([&] { rows.getString(); }), 3021);
    rows.setSort(u"Age DESC");
    EXPECT_TRUE(rows.eof());
}

TEST(Recordset, AbsolutePositionCountsFromOne) {
    People people{5};
    Recordset& rows = people.rows;
    rows.setAbsolutePosition(4);
    EXPECT_EQ(rows.fields()[0].text(), u"Person 3");
    EXPECT_EQ(errorNumber([&] { rows.setAbsolutePosition(0); }), 3001);
    EXPECT_EQ(errorNumber([&] { rows.setAbsolutePosition(adPosEOF); }), 3001);
    EXPECT_EQ(rows.absolutePosition(), 4);
    rows.setAbsolutePosition(6);
    EXPECT_TRUE(rows.eof());
}

TEST(Recordset, MoveCompleteTellsOfEveryChangeOfTheCurrentRecord) {
    People people{5};
    int moves = 0;
    people.rows.moveComplete = [&] { ++moves; };
    people.rows.moveNext();
    people.rows.setAbsolutePosition(2);
    EXPECT_EQ(moves, 1);
    people.rows.find(u"Age = 24");
    EXPECT_EQ(moves, 2);
}

TEST(Recordset, FieldsByNameAndNumber) {
    People people{2};
    Recordset& rows = people.rows;
    const Fields fields = rows.fields();
    EXPECT_EQ(fields.count(), 5u);
    EXPECT_EQ(fields[u"nOTes"].name(), u"Notes");
    EXPECT_EQ(fields[u"Name"].type(), adVarWChar);
    EXPECT_EQ(fields[u"Name"].definedSize(), 50);
    EXPECT_EQ(fields[u"Age"].type(), adInteger);
    EXPECT_EQ(fields[u"Date"].type(), adDate);
    EXPECT_EQ(fields[u"Notes"].type(), adLongVarWChar);
    EXPECT_EQ(fields[u"Here"].type(), adBoolean);
    EXPECT_EQ(fields[u"Here"].value(), jet::Value{true});
    EXPECT_TRUE(jet::isNull(fields[u"Notes"].value()));
    EXPECT_EQ(fields[u"Date"].text(), u"2000-01-01 00:00:00");
    rows.moveNext();
    EXPECT_EQ(fields[1].value(), jet::Value{std::int32_t{21}});
    EXPECT_EQ(fields[u"Notes"].text(), std::u16string(100, u'x') + u"Person 1");
    EXPECT_EQ(errorNumber([&] { fields[5]; }), 3265);
    EXPECT_EQ(errorNumber([&] { fields[-1]; }), 3265);
    EXPECT_EQ(errorNumber([&] { fields[u"Shoes"]; }), 3265);
}

TEST(Recordset, EveryColumnHasItsType) {
    using jet::ColumnType;
    const std::vector<std::pair<fixture::ColumnSpec, int>> columns{
        {fixture::column(u"a", ColumnType::Byte), adUnsignedTinyInt},
        {fixture::column(u"b", ColumnType::Integer), adSmallInt},
        {fixture::column(u"c", ColumnType::Currency), adCurrency},
        {fixture::column(u"d", ColumnType::Single), adSingle},
        {fixture::column(u"e", ColumnType::Double), adDouble},
        {fixture::column(u"f", ColumnType::Ole), adLongVarBinary},
        {fixture::column(u"g", ColumnType::Guid), adGUID},
        {fixture::numericColumn(u"h", 18, 2), adNumeric},
        {fixture::binaryColumn(u"i", 20), adVarBinary}};
    fixture::TableSpec spec{.name = u"T", .columns = {}};
    for (const auto& [column, type] : columns) spec.columns.push_back(column);
    fixture::FixtureBuilder builder;
    builder.addTable(spec);
    TestConnection database{builder.bytes()};
    Recordset rows;
    rows.open(u"SELECT * FROM T", database.connection);
    for (const auto& [column, type] : columns) {
        EXPECT_EQ(rows.fields()[column.name].type(), type) << jet::toUtf8(column.name);
    }
}

TEST(Recordset, PropertiesByName) {
    Recordset rows;
    rows.properties()[u"initial fetch size"].setValue(100);
    EXPECT_EQ(rows.properties()[u"Initial Fetch Size"].value(), 100);
    EXPECT_EQ(errorNumber([&] { rows.properties()[u"Final Fetch Size"]; }), 3265);
    EXPECT_EQ(errorNumber([&] { rows.setCursorLocation(1); }), 3001);
    EXPECT_EQ(errorNumber([&] { rows.setPageSize(0); }), 3001);
}

TEST(Recordset, RandomAccessLeavesTheCurrentRecordAlone) {
    People people{4};
    Recordset& rows = people.rows;
    rows.setAbsolutePosition(2);
    std::u16string text = u"old";
    EXPECT_TRUE(rows.textAt(3, 0, text));
    EXPECT_EQ(text, u"Person 3");
    EXPECT_TRUE(rows.textAt(2, 3, text));
    EXPECT_EQ(text, u"");
    EXPECT_FALSE(rows.textAt(4, 0, text));
    EXPECT_FALSE(rows.textAt(0, 5, text));
    EXPECT_TRUE(jet::isNull(rows.valueAt(4, 0)));
    EXPECT_EQ(rows.absolutePosition(), 2);
}

TEST(Recordset, NullIsAnEmptyText) {
    fixture::FixtureBuilder builder;
    builder
        .addTable({.name = u"T",
                   .columns = {fixture::column(u"Number", jet::ColumnType::Long),
                               fixture::textColumn(u"Text", 20), fixture::memoColumn(u"Memo")}})
        .insert({});
    TestConnection database{builder.bytes()};
    Recordset rows;
    rows.open(u"SELECT * FROM T", database.connection);
    for (std::size_t field = 0; field < 3; ++field) {
        std::u16string text = u"old";
        EXPECT_TRUE(rows.textAt(0, field, text)) << field;
        EXPECT_EQ(text, u"");
    }
}

TEST(Recordset, GetStringTakesBlocksAndMovesBehindThem) {
    People people{250};
    Recordset& rows = people.rows;
    std::vector<std::size_t> lines;
    std::u16string first;
    while (!rows.eof()) {
        const std::u16string block = rows.getString(adClipString, 100, u"\t", u"\r\n", u"");
        if (first.empty()) first = block.substr(0, block.find(u'\r'));
        lines.push_back(static_cast<std::size_t>(std::count(block.begin(), block.end(), u'\n')));
    }
    EXPECT_EQ(lines, (std::vector<std::size_t>{100, 100, 50}));
    EXPECT_EQ(first, u"Person 0\t20\t2000-01-01 00:00:00\t\tTrue");
    EXPECT_EQ(rows.absolutePosition(), adPosEOF);
    EXPECT_EQ(errorNumber([&] { rows.getString(); }), 3021);
    rows.moveLast();
    EXPECT_EQ(rows.getString(adClipString, 1, u"|", u"", u"none").substr(0, 14), u"Person 249|269");
    rows.setAbsolutePosition(1);
    EXPECT_NE(rows.getString(adClipString, 1, u"|", u"", u"none").find(u"|none|"),
              std::u16string::npos);
    rows.moveFirst();
    EXPECT_EQ(errorNumber([&] { rows.getString(1); }), 3001);
    EXPECT_EQ(errorNumber([&] { rows.getString(adClipString, -2); }), 3001);
}

TEST(Recordset, FormatterDecidesTheTextOfValues) {
    class German : public ValueFormatter {
        void appendDate(jet::Date, std::u16string& out) const override { out += u"heute"; }
        void appendTruth(bool truth, std::u16string& out) const override {
            out += truth ? u"Wahr" : u"Falsch";
        }
    };
    People people{1};
    people.rows.setFormatter(std::make_shared<German>());
    const auto copy = people.rows.clone();
    EXPECT_EQ(copy->getString(), u"Person 0\t20\theute\t\tWahr\r");
}

TEST(Recordset, ClonesShareRowsAndKeepTheirOwnPlaceAndOrder) {
    People people{10};
    Recordset& rows = people.rows;
    rows.setSort(u"Age DESC");
    rows.setAbsolutePosition(3);
    const auto copy = rows.clone(adLockUnspecified);
    EXPECT_EQ(copy->sort(), u"");
    EXPECT_EQ(copy->absolutePosition(), 1);
    EXPECT_EQ(copy->fields()[0].text(), u"Person 0");
    copy->setSort(rows.sort());
    copy->setAbsolutePosition(rows.absolutePosition());
    EXPECT_EQ(copy->fields()[0].text(), rows.fields()[0].text());
    copy->moveNext();
    EXPECT_EQ(rows.absolutePosition(), 3);
    copy->setSort(u"");
    EXPECT_EQ(rows.fields()[0].text(), u"Person 7");
    rows.close();
    EXPECT_EQ(copy->recordCount(), 10);
    copy->moveLast();
    EXPECT_EQ(copy->fields()[0].text(), u"Person 9");
    EXPECT_EQ(errorNumber([&] { copy->clone(adLockPessimistic); }), 3001);
}

TEST(Recordset, AClonesSettingsAreThoseOfItsOriginal) {
    TestConnection database{peopleDatabase(2)};
    Recordset rows;
    rows.setCursorLocation(adUseClient);
    rows.setPageSize(7);
    rows.setCacheSize(9);
    rows.open(u"SELECT * FROM People", database.connection);
    const auto copy = rows.clone();
    EXPECT_EQ(copy->cursorLocation(), adUseClient);
    EXPECT_EQ(copy->pageSize(), 7);
    EXPECT_EQ(copy->cacheSize(), 9);
}

TEST(Recordset, CurrentRecordThatAnotherProgramDeletedReadsAsNull) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"T", .columns = {fixture::memoColumn(u"Text")}});
    const jet::RowId row = table.insert({u"a text in the file"});
    fixture::ByteVector content = builder.bytes();

    /// Bytes that the test changes behind the reader's back.
    struct Shared : jet::Storage {
        explicit Shared(std::shared_ptr<fixture::ByteVector> bytes) : content{std::move(bytes)} {}
        std::uint64_t size() const override { return content->size(); }
        std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
            return jet::MemoryStorage{*content}.readAt(offset, buffer);
        }
        std::shared_ptr<fixture::ByteVector> content;
    };
    const auto bytes = std::make_shared<fixture::ByteVector>(std::move(content));
    Connection connection;
    connection.open(jet::Database::open(std::make_unique<Shared>(bytes)));
    Recordset rows;
    rows.open(u"SELECT * FROM T", connection);
    const std::size_t slot =
        std::size_t{jet::raw(row.page())} * jet::kPageSize + 14 + 2 * std::size_t{row.slot()};
    (*bytes)[slot + 1] |= 0xC0;
    std::u16string text = u"old";
    EXPECT_FALSE(rows.textAt(0, 0, text));
    EXPECT_EQ(text, u"");
    EXPECT_TRUE(jet::isNull(rows.fields()[0].value()));
    EXPECT_EQ(rows.recordCount(), 1);
}

TEST(Recordset, StorageThatFailsAfterwardsIsAnErrorForTheCurrentRecordOnly) {
    TestConnection database{fixture::traceDatabase({.rows = 30'000})};
    Recordset rows;
    openTraces(rows, database.connection);
    database.gate->failAlways();
    rows.moveLast();
    EXPECT_NE(rows.fields()[u"Process"].text(), u"") << "kept in memory";
    rows.setAbsolutePosition(15'000);
    EXPECT_EQ(errorNumber([&] { rows.fields()[u"Trace"].value(); }), kErrorFile);
    std::u16string text;
    EXPECT_FALSE(rows.textAt(15'000, 8, text));
    EXPECT_TRUE(jet::isNull(rows.valueAt(15'000, 8)));
    EXPECT_EQ(errorNumber([&] { rows.find(u"Trace Like '*no such text*'"); }), kErrorFile);
    EXPECT_EQ(errorNumber([&] { rows.getString(adClipString, 100); }), kErrorFile);
    EXPECT_EQ(rows.absolutePosition(), 15'000);
}

}  // namespace
