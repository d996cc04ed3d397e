// The checker on pages of rows, records and long values.
#include "tests/engine/jet/check/check_support.h"

namespace jet {
namespace {

using fixture::get;
using fixture::pageOffset;
using fixture::poke;
using fixture::poke16;
using fixture::poke32;
using fixture::slotOffset;

constexpr std::size_t kPlain = CheckSample::kPlain;

/// Changes one slot word and expects that this row is found wrong.
template <typename Change>
void expectSlot(std::size_t n, Change change) {
    CheckSample sample;
    const std::size_t at = slotOffset(sample.ids[n]);
    const unsigned word = get<std::uint16_t>(sample.file, at);
    poke16(sample.file, at, static_cast<std::uint16_t>(change(word)));
    expectFinding(sample.file, {Rule::DataPage, sample.ids[n]});
}

TEST(CheckDataPage, Slots) {
    expectSlot(10, [](unsigned word) { return word | 0x2000u; });
    expectSlot(10, [](unsigned) { return 0x0008u; });
    expectSlot(10, [](unsigned) { return 0x1FFFu; });
}

TEST(CheckDataPage, FreeBytes) {
    CheckSample sample;
    const PageNumber page = sample.ids[0].page();
    poke16(sample.file, pageOffset(page) + 2, 17);
    expectFinding(sample.file, {Rule::DataPage, page});
}

TEST(CheckDataPage, SlotCount) {
    for (const std::uint16_t count : {std::uint16_t{256}, std::uint16_t{0xFFFF}}) {
        CheckSample sample;
        const PageNumber page = sample.ids[0].page();
        poke16(sample.file, pageOffset(page) + 12, count);
        expectFinding(sample.file, {Rule::DataPage, page});
    }
}

TEST(CheckDataPage, DeletedRows) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"A", .columns = {fixture::textColumn(u"T", 50)}});
    table.insert({u"the first"});
    const RowId row = table.insert({u"the second"});
    table.setStoredRowCount(1);
    auto file = builder.bytes();
    const auto word = get<std::uint16_t>(file, slotOffset(row));
    poke16(file, slotOffset(row), static_cast<std::uint16_t>(word | 0xC000u));
    expectFinding(file, warning({Rule::DataPage, row}));
}

TEST(CheckMovedRecord, LeadsNowhere) {
    CheckSample sample;
    const RowId home = sample.ids[CheckSample::kMoved];
    const RowId target = sample.movedTo(CheckSample::kMoved);
    poke32(sample.file, sample.record(CheckSample::kMoved), RowId{target.page(), 200}.packed());
    expectFindings(sample.file, {{Rule::MovedRecord, home}, {Rule::OrphanRecord, target}});
}

TEST(CheckMovedRecord, LeadsToARowOfItsOwn) {
    CheckSample sample;
    poke32(sample.file, sample.record(CheckSample::kMoved), sample.ids[kPlain].packed());
    expectFindings(sample.file, {{Rule::MovedRecord, sample.ids[CheckSample::kMoved]},
                                 {Rule::OrphanRecord, CheckSample{}.movedTo(CheckSample::kMoved)}});
}

TEST(CheckMovedRecord, LeadsToAPointer) {
    CheckSample sample;
    const RowId target = sample.movedTo(CheckSample::kMoved);
    poke32(sample.file, sample.record(CheckSample::kMoved),
           sample.ids[CheckSample::kOtherMoved].packed());
    expectFindings(sample.file, {{Rule::MovedRecord, sample.ids[CheckSample::kMoved]},
                                 {Rule::OrphanRecord, target}});
}

TEST(CheckMovedRecord, TwoRowsWithOneRecord) {
    CheckSample sample;
    const RowId lost = sample.movedTo(CheckSample::kOtherMoved);
    poke32(sample.file, sample.record(CheckSample::kOtherMoved),
           sample.movedTo(CheckSample::kMoved).packed());
    // Which of the two rows is the wrong one cannot be told.
    const auto found = findingsIn(sample.file);
    EXPECT_THAT(found, testing::Contains(Expected{Rule::OrphanRecord, lost}));
    EXPECT_THAT(found, testing::Contains(testing::Field(&Expected::rule, Rule::MovedRecord)));
}

TEST(CheckMovedRecord, Orphan) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"A", .columns = {fixture::textColumn(u"T", 50)}});
    table.insert({u"a row"});
    const RowId orphan = table.insertOrphan({u"none"});
    expectFinding(builder.bytes(), {Rule::OrphanRecord, orphan});
}

// --- Records -----------------------------------------------------------------------------------

/// Changes the file at a place given from the front or the end of a record, and expects that this
/// record is found wrong.
template <typename Damage>
void expectRecord(Damage damage) {
    CheckSample sample;
    damage(sample.file, sample.record(kPlain), sample.recordEnd(kPlain));
    expectFinding(sample.file, {Rule::Record, sample.ids[kPlain]});
}

using File = fixture::ByteVector;

/// A record of five columns, two of them variable: from the end a byte for the mask, the number of
/// variable columns, the places of Name and Note, the end of Note.
TEST(CheckRecord, Parts) {
    expectRecord([](File& f, std::size_t begin, std::size_t) { poke16(f, begin, 6); });
    expectRecord([](File& f, std::size_t begin, std::size_t) { poke16(f, begin, 0xFFFF); });
    expectRecord([](File& f, std::size_t, std::size_t end) { poke16(f, end - 3, 3); });
    expectRecord([](File& f, std::size_t, std::size_t end) { poke16(f, end - 3, 0xFFFF); });
    expectRecord([](File& f, std::size_t, std::size_t end) {
        poke16(f, end - 5, static_cast<std::uint16_t>(get<std::uint16_t>(f, end - 5) + 1));
    });
    expectRecord([](File& f, std::size_t, std::size_t end) { poke16(f, end - 7, 3); });
    expectRecord([](File& f, std::size_t, std::size_t end) {
        poke16(f, end - 9, static_cast<std::uint16_t>(get<std::uint16_t>(f, end - 9) + 1));
    });
}

TEST(CheckRecord, CutShort) {
    fixture::FixtureBuilder builder;
    auto& table =
        builder.addTable({.name = u"A", .columns = {fixture::column(u"N", ColumnType::Double)}});
    const RowId above = table.insert({1.0});
    const RowId row = table.insert({2.0});
    auto file = builder.bytes();
    // The row above now reaches into the row.
    const auto begin = get<std::uint16_t>(file, slotOffset(row));
    poke16(file, slotOffset(above), static_cast<std::uint16_t>(begin + 5));
    poke16(file, pageOffset(row.page()) + begin, 1);
    expectAmong(file, {Rule::Record, row});
}

TEST(CheckRecord, Values) {
    const auto expectValue = [](fixture::ColumnSpec column, fixture::ByteVector stored,
                                bool right) {
        fixture::FixtureBuilder builder;
        auto& table = builder.addTable({.name = u"A", .columns = {std::move(column)}});
        const RowId row = table.insert({fixture::stored(std::move(stored))});
        const File& file = builder.bytes();
        right ? expectClean(file) : expectFinding(file, {Rule::Record, row});
    };
    const auto text = fixture::textColumn(u"T", 3);
    expectValue(text, {'a', 0, 'b', 0, 'c', 0}, true);
    expectValue(text, {'a', 0, 'b'}, false);
    expectValue(text, {'a', 0, 'b', 0, 'c', 0, 'd', 0}, false);
    expectValue(text, {0xFF, 0xFE, 'a', 'b', 'c'}, true);
    expectValue(text, {0xFF, 0xFE, 'a', 'b', 'c', 'd'}, false);
    expectValue(text, {0xFF, 0xFE, 'a', 0, 0x24, 0x04, 0, 'c'}, true);
    expectValue(text, {0xFF, 0xFE, 'a', 0, 0x24, 0x04, 0, 'c', 'd'}, false);
    expectValue(text, {}, true);
    expectValue(fixture::binaryColumn(u"B", 4), {1, 2, 3, 4}, true);
    expectValue(fixture::binaryColumn(u"B", 4), {1, 2, 3, 4, 5}, false);
    fixture::ColumnSpec number = fixture::column(u"N", ColumnType::Long);
    number.fixed = false;
    expectValue(number, {1, 2, 3, 4}, true);
    expectValue(number, {1, 2, 3, 4, 5}, false);
    expectValue(number, {1, 2, 3}, false);
}

/// Records that were written before some columns came or went.
TEST(CheckRecord, OldRecordsAreSound) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"A",
                                    .columns = {fixture::column(u"N", ColumnType::Long),
                                                fixture::column(u"M", ColumnType::Long)}});
    table.insert({1, 2});
    table.addColumn(fixture::textColumn(u"T", 20));
    table.insert({3, 4, u"text"});
    table.addColumn(fixture::memoColumn(u"L"));
    table.addColumn(fixture::column(u"D", ColumnType::Date));
    table.insert({5, 6, u"text", std::u16string(400, u'm'), Date{3.5}});
    table.dropColumn(u"M");
    table.insert({7, u"text"});
    table.dropColumn(u"D");
    table.insert({8, u"text"});
    table.dropColumn(u"L");
    table.dropColumn(u"T");
    table.insert({9});
    expectClean(builder.bytes());
}

// --- Long values -------------------------------------------------------------------------------

template <typename Damage>
void expectNote(std::size_t n, Damage damage) {
    CheckSample sample;
    damage(sample, sample.note(n));
    expectFinding(sample.file, {Rule::LongValue, sample.ids[n]});
}

TEST(CheckLongValue, Inline) {
    expectNote(5, [](CheckSample& s, std::size_t at) { --s.file[at]; });
    expectNote(5, [](CheckSample& s, std::size_t at) { ++s.file[at]; });
}

TEST(CheckLongValue, Single) {
    constexpr std::size_t n = CheckSample::kSingle;
    expectNote(n, [](CheckSample& s, std::size_t at) { s.file[at] ^= 2; });
    CheckSample sample;
    const RowId part = sample.notePart(n);
    poke32(sample.file, sample.note(n) + 4, RowId{part.page(), 77}.packed());
    expectFinding(sample.file, {Rule::LongValue, sample.ids[n]});
}

TEST(CheckLongValue, PartOfAnotherPage) {
    constexpr std::size_t n = CheckSample::kSingle;
    for (const std::uint32_t page : {0x00FFFFFFu, 5000u, 2u, 1u}) {
        expectNote(n, [page](CheckSample& s, std::size_t at) {
            poke32(s.file, at + 4, RowId{PageNumber{page}, 0}.packed());
        });
    }
}

TEST(CheckLongValue, PartOfTwo) {
    CheckSample sample;
    poke32(sample.file, sample.note(CheckSample::kOtherSingle) + 4,
           sample.notePart(CheckSample::kSingle).packed());
    expectFinding(sample.file, {Rule::LongValue, sample.ids[CheckSample::kOtherSingle]});
}

TEST(CheckLongValue, Chain) {
    constexpr std::size_t n = CheckSample::kChain;
    expectNote(n, [](CheckSample& s, std::size_t at) { s.file[at] ^= 2; });      // length
    expectNote(n, [](CheckSample& s, std::size_t at) { s.file[at + 8] ^= 7; });  // stamp
    expectNote(n, [](CheckSample& s, std::size_t) { fixture::loopChain(s.file, s.notePart(n)); });
    expectNote(n, [](CheckSample& s, std::size_t) {  // ends early
        poke32(s.file, fixture::rowOffset(s.file, s.notePart(n)), 0);
    });
}

TEST(CheckLongValue, HeadCutShort) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"A", .columns = {fixture::memoColumn(u"M")}});
    const RowId row = table.insert(
        {fixture::longValue(fixture::stored({4, 0, 0, 0x80}), fixture::LongForm::HandMade)});
    expectFinding(builder.bytes(), {Rule::Record, row});
}

TEST(CheckLongValue, HalfACharacter) {
    for (const auto form :
         {fixture::LongForm::Inline, fixture::LongForm::Single, fixture::LongForm::Chain}) {
        fixture::FixtureBuilder builder;
        auto& table = builder.addTable({.name = u"A", .columns = {fixture::memoColumn(u"M")}});
        const RowId row = table.insert({fixture::longValue(fixture::stored({'a', 0, 'b'}), form)});
        table.insert({fixture::longValue(fixture::stored({0xFF, 0xFE, 'b'}), form)});
        expectFinding(builder.bytes(), {Rule::LongValue, row});
    }
}

TEST(CheckLongValue, Unused) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"A", .columns = {fixture::memoColumn(u"M")}});
    table.insert({std::u16string(100, u'a')});
    const RowId row = table.insert({std::u16string(200, u'b')});
    table.deleteRow(row);
    const File& file = builder.bytes();
    expectFinding(file, warning({Rule::UnusedLongValue, RowId{table.longValuePages(u"M")[0], 1}}));
}

}  // namespace
}  // namespace jet
