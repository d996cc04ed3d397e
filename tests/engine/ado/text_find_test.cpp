// Searches for texts find what a look at every row in turn finds.
#include "engine/jet/text.h"
#include "engine/sql/like/case_fold.h"
#include "engine/sql/like/like.h"
#include "tests/engine/ado/recordset_fixture.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"
#include "tests/support/random.h"

#include <future>
#include <thread>

namespace {

using namespace ado;

constexpr std::u16string_view kWords[] = {
    u"error ",       u"Error, ",  u"retry ",         u"k\u212Aelvin ", u"\u017Ftra\u00DFe ",
    u"\u0131\u0130", u"\u00E6on", u"\u5185\u7DDA 7", u"100% ",         u"it's ",
    u"[x] ",         u"a*b ",     u"5#3 ",           u"\U0001F4DE ",   u"\u0416\u0443\u043A "};

std::u16string randomText(fixture::Random& random) {
    std::u16string text;
    const std::uint32_t words = random.oneIn(40) ? 700 + random.below(900) : random.below(14);
    for (std::uint32_t i = 0; i < words; ++i) text += random.pick<std::u16string_view>(kWords);
    return text;
}

/// A part of some text with its letters in other forms, and sometimes with signs of patterns.
std::u16string randomPattern(fixture::Random& random, const std::u16string& text) {
    std::u16string wanted = u"error";
    if (text.size() > 3) {
        wanted =
            text.substr(random.below(static_cast<std::uint32_t>(text.size())), 1 + random.below(9));
    }
    if (random.oneIn(3)) wanted += random.pick<std::u16string_view>(kWords).substr(0, 3);
    for (char16_t& unit : wanted) {
        const auto variants = sql::variantsOf(sql::foldCase(unit));
        unit = variants[random.below(static_cast<std::uint32_t>(variants.size()))];
        if (unit == u'\'' || unit == u'[') unit = u'?';
    }
    if (random.oneIn(5)) wanted.insert(wanted.size() / 2, u"*");
    if (random.oneIn(9)) wanted += u"[a-z ]";
    return u"*" + wanted + u"*";
}

/// Rows with a number and a text of each kind, over several groups of rows.
fixture::ByteVector textDatabase(std::uint32_t count) {
    fixture::Random random{17};
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Lines",
         .columns = {fixture::column(u"Id", jet::ColumnType::Long),
                     fixture::column(u"Key", jet::ColumnType::Long), fixture::memoColumn(u"Trace"),
                     fixture::memoColumn(u"Plain", false), fixture::textColumn(u"Short", 255)}});
    std::vector<jet::RowId> ids;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::u16string text = randomText(random);
        fixture::Row row{static_cast<std::int32_t>(i),
                         static_cast<std::int32_t>(random.below(1000)), text, text,
                         text.substr(0, 250)};
        if (random.oneIn(20)) row[2] = row[3] = row[4] = fixture::kNull;
        if (text.size() < 1500 && random.oneIn(30))
            row[2] = fixture::longValue(text, fixture::LongForm::Single);
        ids.push_back(table.insert(row));
        if (random.oneIn(200)) table.moveRow(ids[random.below(i + 1)], row);
    }
    return builder.bytes();
}

class TextFind : public testing::Test {
protected:
    static const fixture::ByteVector& content() {
        static const fixture::ByteVector bytes = textDatabase(5000);
        return bytes;
    }

    TextFind() { rows.open(u"SELECT * FROM Lines", database.connection); }

    /// Where the search ends if each row is looked at in turn.
    int plainFind(std::size_t field, const sql::LikePattern& pattern, int start, int direction) {
        std::u16string text;
        const int count = rows.recordCount();
        for (int position = start; position >= 1 && position <= count; position += direction) {
            const auto at = static_cast<std::uint32_t>(position - 1);
            if (jet::isNull(rows.valueAt(at, field))) continue;
            rows.textAt(at, field, text);
            if (pattern.matches(text)) return position;
        }
        return direction == adSearchForward ? adPosEOF : adPosBOF;
    }

    void compareAt(const std::u16string& field, const std::u16string& pattern, int start,
                   int direction) {
        const std::size_t index = field == u"Trace" ? 2 : field == u"Plain" ? 3 : 4;
        rows.setAbsolutePosition(start);
        rows.find(field + u" Like '" + pattern + u"'", 0, direction);
        rows.absolutePosition() > 0 ? ++found_ : ++missed_;
        ASSERT_EQ(rows.absolutePosition(),
                  plainFind(index, sql::LikePattern{pattern}, start, direction))
            << jet::toUtf8(field + u" Like " + pattern) << " from " << start << " by " << direction;
    }

    TestConnection database{content()};
    Recordset rows;
    int found_ = 0;
    int missed_ = 0;
};

TEST_F(TextFind, AgreesWithALookAtEveryRow) {
    fixture::Random random{23};
    constexpr std::u16string_view kSorts[] = {u"", u"Id DESC", u"Key ASC", u"Key DESC, Id"};
    constexpr std::u16string_view kFields[] = {u"Trace", u"Plain", u"Short"};
    const auto anywhere = [&] { return static_cast<int>(1 + random.below(5000)); };
    for (int round = 0; round < 120; ++round) {
        if (round % 4 == 0) rows.setSort(random.pick<std::u16string_view>(kSorts));
        const std::u16string field{random.pick<std::u16string_view>(kFields)};
        std::u16string sample;
        rows.textAt(random.below(5000), 2, sample);
        const std::u16string pattern = randomPattern(random, sample);
        for (int again = 0; again < 4; ++again) {
            compareAt(field, pattern, anywhere(),
                      random.oneIn(2) ? adSearchForward : adSearchBackward);
        }
        compareAt(field, pattern, 1, adSearchForward);
        compareAt(field, pattern, 5000, adSearchBackward);
    }
    EXPECT_GT(found_, 200);
    EXPECT_GT(missed_, 50);
}

TEST_F(TextFind, MeetsEveryMatchOnceAndInOrder) {
    for (const std::u16string_view sort : {u"", u"Key DESC"}) {
        rows.setSort(sort);
        std::vector<int> found;
        for (rows.find(u"Plain Like '*retry*'"); !rows.eof();
             rows.find(u"Plain Like '*RETRY*'", 1)) {
            found.push_back(rows.absolutePosition());
        }
        std::vector<int> expected;
        const sql::LikePattern pattern{u"*retry*"};
        for (int position = 1; position <= rows.recordCount(); ++position) {
            if (plainFind(3, pattern, position, adSearchForward) != position) continue;
            expected.push_back(position);
        }
        EXPECT_EQ(found, expected);
        EXPECT_GT(found.size(), 500u);
    }
}

TEST_F(TextFind, ClonesWithOtherOrdersShareWhatIsKnown) {
    rows.moveLast();
    const auto view = rows.clone();
    view->setSort(u"Key ASC");
    view->find(u"Trace Like '*k*lvin*'");
    rows.find(u"Trace Like '*k*lvin*'", 0, adSearchBackward);
    const sql::LikePattern pattern{u"*k*lvin*"};
    EXPECT_EQ(rows.absolutePosition(), plainFind(2, pattern, 5000, adSearchBackward));
}

TEST_F(TextFind, RowsThatComeLaterAreSearchedToo) {
    TestConnection traces{fixture::traceDatabase({.rows = 6000})};
    traces.gate->holdAt(traces.placeAt(0.5));
    auto pump = std::make_shared<HandPump>();
    Recordset loading{pump};
    openTraces(loading, traces.connection);
    traces.gate->waitUntilHeld();
    const std::uint32_t early = loading.rowCount();
    loading.find(u"Trace Like '*nothing says this*'");
    EXPECT_TRUE(loading.eof());
    traces.gate->release();
    ASSERT_TRUE(pump->runUntil([&] { return loading.rowCount() == 6000; }, kPatience));
    std::u16string last;
    loading.textAt(5999, 8, last);
    loading.setAbsolutePosition(static_cast<int>(early));
    loading.find(u"Trace Like '*" + last.substr(0, 20) + u"*'", 0);
    EXPECT_FALSE(loading.eof());
}

TEST_F(TextFind, ARunnerDoesTheWork) {
    int ran = 0;
    database.connection.setRunner([&](const std::function<void()>& work) {
        ++ran;
        std::thread{work}.join();
    });
    rows.find(u"Trace Like '*nothing says this*'");
    EXPECT_TRUE(rows.eof());
    EXPECT_EQ(ran, 1);
    rows.moveFirst();
    rows.find(u"Id > 7");
    EXPECT_EQ(ran, 1) << "what needs no text is decided at once";
}

TEST_F(TextFind, ARecordsetThatIsClosedMeanwhileIsSaidToBe) {
    for (const bool whole : {false, true}) {
        Recordset other;
        if (database.connection.state() == adStateClosed) return;
        other.open(u"SELECT * FROM Lines", database.connection);
        database.connection.setRunner([&](const std::function<void()>& work) {
            std::thread worker{work};
            whole ? database.connection.close() : other.close();
            worker.join();
        });
        EXPECT_EQ(errorNumber([&] { other.find(u"Trace Like '*nothing says this*'"); }), 3704);
        EXPECT_EQ(other.state(), adStateClosed);
    }
}

/// The page that would be read last fails, so a search that went on would come across it.
TEST_F(TextFind, ACancelledSearchStopsOnTheWay) {
    const auto pages = database.connection.database()->table(u"Lines")->dataPages();
    const auto placeOf = [&](std::size_t page) {
        return std::uint64_t{jet::raw(pages[page])} * jet::kPageSize;
    };
    for (const std::u16string_view sort : {u"", u"Key ASC"}) {
        rows.setSort(sort);
        rows.setAbsolutePosition(2);
        database.gate->holdAt(placeOf(pages.size() / 4));
        database.gate->failAt(placeOf(pages.size() - 1));
        database.connection.setRunner([&](const std::function<void()>& work) {
            auto done = std::async(std::launch::async, work);
            database.gate->waitUntilHeld();
            database.connection.cancel();
            database.gate->release();
            done.get();
        });
        EXPECT_EQ(errorNumber([&] { rows.find(u"Trace Like '*nothing says this*'"); }), 3712);
        EXPECT_EQ(rows.absolutePosition(), 2);

        database.gate->failAt(std::numeric_limits<std::uint64_t>::max());
        database.connection.setRunner(nullptr);
        compareAt(u"Trace", u"*nothing says this*", 2, adSearchForward);
        compareAt(u"Trace", u"*retry*k*", 2, adSearchForward);
    }
}

TEST_F(TextFind, CancellingWithoutASearchIsForgotten) {
    database.connection.cancel();
    compareAt(u"Trace", u"*retry*", 1, adSearchForward);
}

TEST_F(TextFind, AFailureOfTheStorageIsToldAndTheNextSearchWorks) {
    const auto table = database.connection.database()->table(u"Lines");
    const auto pages = table->dataPages();
    rows.setSort(u"Key ASC");
    database.gate->failAt(std::uint64_t{jet::raw(pages[pages.size() / 2])} * jet::kPageSize);
    EXPECT_EQ(errorNumber([&] { rows.find(u"Trace Like '*nothing says this*'"); }), kErrorFile);
    EXPECT_EQ(rows.absolutePosition(), 1);
    database.gate->failAt(std::numeric_limits<std::uint64_t>::max());
    rows.find(u"Trace Like '*nothing says this*'");
    EXPECT_TRUE(rows.eof());
}

/// Another program takes away what a search has seen already.
TEST_F(TextFind, RowsThatAreGoneAreNotFound) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"Lines",
                                    .columns = {fixture::column(u"Id", jet::ColumnType::Long),
                                                fixture::memoColumn(u"Trace")}});
    std::vector<jet::RowId> ids;
    for (std::int32_t i = 0; i < 400; ++i) {
        ids.push_back(table.insert({i, std::u16string(60, u'-') + (i % 100 == 50 ? u"hit" : u"")}));
    }
    const fixture::ByteVector before = builder.bytes();
    const fixture::TemporaryFolder folder;
    const auto path = folder.write("lines.mdb", before);
    Connection connection;
    connection.open(u"Data Source='" + path.u16string() + u"'");
    Recordset lines;
    lines.open(u"SELECT * FROM Lines", connection);
    lines.find(u"Trace Like '*hit*'");
    EXPECT_EQ(lines.absolutePosition(), 51);
    fixture::ByteVector after = before;
    fixture::poke16(after, fixture::slotOffset(ids[150]), 0xC000);
    folder.write("lines.mdb", after);
    connection.database()->cache().clear();
    lines.find(u"Trace Like '*hit*'", 1);
    EXPECT_EQ(lines.absolutePosition(), 251);
}

TEST_F(TextFind, DamagedPagesAreSurvived) {
    fixture::Random random{5};
    for (int round = 0; round < 12; ++round) {
        fixture::ByteVector file = content();
        const auto table = database.connection.database()->table(u"Lines");
        auto storage = std::make_unique<jet::MemoryStorage>(file);
        jet::MemoryStorage& disk = *storage;
        Connection connection;
        connection.open(jet::Database::open(std::move(storage)));
        Recordset lines;
        lines.open(u"SELECT * FROM Lines", connection);
        // Behind the reader's back, so that rows which were sound are met in ruins.
        for (int i = 0; i < 2000; ++i) {
            const auto first = 40 * jet::kPageSize;
            const std::uint8_t rubbish = static_cast<std::uint8_t>(random.below(256));
            disk.writeAt(first + random.next() % (file.size() - first), {&rubbish, 1});
        }
        connection.database()->cache().clear();
        lines.setSort(round % 2 == 0 ? u"" : u"Key ASC");
        int found = 0;
        for (lines.find(u"Trace Like '*error*'"); !lines.eof();
             lines.find(u"Trace Like '*error*'", 1)) {
            ++found;
        }
        EXPECT_GT(found, 100);
    }
}

TEST_F(TextFind, AChangeOnTheConnectionIsSeen) {
    const fixture::TemporaryFolder folder;
    const auto path = folder.write("lines.mdb", content());
    Connection connection;
    connection.open(u"Data Source='" + path.u16string() + u"'");
    Recordset lines;
    lines.open(u"SELECT * FROM Lines", connection);
    lines.find(u"Plain Like '*brand new*'");
    EXPECT_TRUE(lines.eof());
    connection.execute(u"UPDATE Lines SET Plain = 'brand new' WHERE Id = 3000");
    lines.moveFirst();
    lines.find(u"Plain Like '*brand new*'");
    EXPECT_EQ(lines.absolutePosition(), 3001);
}

}  // namespace
