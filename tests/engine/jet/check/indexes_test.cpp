// The checker on indexes: pages, trees, and entries against rows.
#include "tests/engine/jet/check/check_support.h"

#include <algorithm>

namespace jet {
namespace {

using fixture::get;
using fixture::pageOffset;
using fixture::poke;
using fixture::poke16;
using fixture::poke32;

constexpr std::size_t kArea = 480;
constexpr std::size_t kPrevious = 12;
constexpr std::size_t kNext = 16;
constexpr std::size_t kTail = 20;
constexpr std::size_t kPrefix = 24;
constexpr std::size_t kLevel = 26;

/// A leaf in the middle of three levels.
PageNumber someLeaf(const CheckSample& sample) { return sample.leaf(3); }

TEST(CheckIndexPage, Layout) {
    CheckSample freeBytes;
    poke16(freeBytes.file, freeBytes.at(someLeaf(freeBytes), 2), 5);
    expectFinding(freeBytes.file, {Rule::IndexPage, someLeaf(freeBytes)});

    CheckSample prefix;
    poke16(prefix.file, prefix.at(someLeaf(prefix), kPrefix), 4000);
    expectFinding(prefix.file, {Rule::IndexPage, someLeaf(prefix)});

    CheckSample bitmap;
    bitmap.file[bitmap.at(someLeaf(bitmap), 479)] = 0x80;  // behind the page
    expectFinding(bitmap.file, {Rule::IndexPage, someLeaf(bitmap)});

    CheckSample child;
    poke32(child.file, child.at(someLeaf(child), kTail), 3);
    expectFinding(child.file, {Rule::IndexPage, someLeaf(child)});
}

TEST(CheckIndexPage, Order) {
    CheckSample sample;
    // The weight of the second letter in the first entry.
    poke(sample.file, sample.at(someLeaf(sample), kArea + 2), {0xFF});
    expectFinding(sample.file, {Rule::IndexPage, someLeaf(sample)});
}

TEST(CheckIndexPage, Level) {
    CheckSample sample;
    sample.file[sample.at(someLeaf(sample), kLevel)] = 1;
    expectFinding(sample.file, warning({Rule::IndexPage, someLeaf(sample)}));

    CheckSample root;
    root.file[root.at(root.root(), kLevel)] = 0;  // as some writers leave it
    expectFinding(root.file, warning({Rule::IndexPage, root.root()}));
}

TEST(CheckIndexTree, HasThreeLevels) {
    const CheckSample sample;
    EXPECT_EQ(sample.table.index(u"byName").depth(), 3u);
    EXPECT_EQ(sample.file[sample.at(sample.leaf(9), 0)], 4);
    EXPECT_EQ(sample.file[sample.at(sample.leaf(10), 0)], 3);
}

TEST(CheckIndexTree, LeafLinks) {
    CheckSample previous;
    poke32(previous.file, previous.at(someLeaf(previous), kPrevious), raw(previous.leaf(0)));
    expectFinding(previous.file, {Rule::IndexTree, someLeaf(previous)});

    CheckSample next;
    poke32(next.file, next.at(someLeaf(next), kNext), 0);
    expectFinding(next.file, {Rule::IndexTree, someLeaf(next)});

    CheckSample last;
    poke32(last.file, last.at(last.leaf(9), kNext), raw(last.leaf(2)));
    expectFinding(last.file, {Rule::IndexTree, last.leaf(9)});
}

TEST(CheckIndexTree, LinksAboveTheLeaves) {
    CheckSample sample;
    const PageNumber parent = sample.leaf(10);
    poke32(sample.file, sample.at(parent, kNext), 0);
    expectFinding(sample.file, warning({Rule::IndexTree, parent}));
}

TEST(CheckIndexTree, NoTail) {
    CheckSample sample;
    poke32(sample.file, sample.at(sample.root(), kTail), 0);
    const auto found = findingsIn(sample.file);
    EXPECT_THAT(found, testing::Contains(Expected{Rule::IndexTree, sample.root()}));
}

TEST(CheckIndexTree, EntryAboveIsNotTheLastBelow) {
    CheckSample sample;
    const PageNumber parent = sample.leaf(10);
    // The slot in the row id of the first entry, in front of the four bytes of the child.
    std::size_t end = 0;
    for (std::size_t bit = 1; end == 0; ++bit) {
        const std::uint8_t byte = sample.file[sample.at(parent, 27 + bit / 8)];
        if (((byte >> (bit % 8)) & 1u) != 0) end = bit;
    }
    ++sample.file[sample.at(parent, kArea + end - 5)];
    expectFinding(sample.file, {Rule::IndexTree, parent});
}

TEST(CheckIndexTree, APageTwice) {
    CheckSample sample;
    const PageNumber parent = sample.leaf(10);
    poke32(sample.file, sample.at(parent, kTail), raw(sample.leaf(0)));
    expectFinding(sample.file, {Rule::PageOwnership, sample.leaf(0)});

    CheckSample ring;
    poke32(ring.file, ring.at(parent, kTail), raw(ring.root()));
    expectFinding(ring.file, {Rule::PageOwnership, ring.root()});
}

TEST(CheckIndexTree, LeafOfAnotherDepth) {
    CheckSample sample;
    // The root's last child becomes a leaf of the level below it.
    poke32(sample.file, sample.at(sample.root(), kTail), raw(sample.leaf(9)));
    const auto found = findingsIn(sample.file);
    EXPECT_THAT(found, testing::Contains(Expected{Rule::IndexTree, sample.leaf(9)}));
}

TEST(CheckIndexTree, Map) {
    const CheckSample sound;
    const RowId map =
        RowId::fromPacked(get<std::uint32_t>(sound.file, sound.offsets().physicalIndex(2) + 34));
    CheckSample missing;
    missing.setBit(map, someLeaf(missing), false);
    expectFinding(missing.file, {Rule::IndexTree, someLeaf(missing)});

    CheckSample more;
    const PageNumber page{static_cast<std::uint32_t>(more.file.size() / kPageSize)};
    more.file.resize(more.file.size() + kPageSize);
    more.setBit(CheckSample::freePages(), page, false);
    more.setBit(map, page, true);
    expectFinding(more.file, {Rule::IndexTree, page});

    CheckSample foreign;
    foreign.setBit(map, foreign.table.dataPages()[0], true);
    expectFinding(foreign.file, {Rule::PageOwnership, foreign.table.dataPages()[0]});
}

// --- Entries -----------------------------------------------------------------------------------

/// A table with one index; tests insert what does not suit it.
struct IndexSample {
    fixture::FixtureBuilder builder;
    fixture::TableBuilder& table;

    explicit IndexSample(fixture::IndexSpec index)
        : table{builder.addTable(
              {.name = u"A",
               .columns = {fixture::column(u"N", ColumnType::Long), fixture::textColumn(u"T", 50)},
               .indexes = {std::move(index)}})} {}

    PageNumber root() const { return table.index(u"i").root(); }
};

fixture::IndexSpec onNumber() { return {.name = u"i", .columns = {{u"N"}}}; }

TEST(CheckIndexEntries, RowThatDoesNotExist) {
    IndexSample sample{onNumber()};
    std::vector<RowId> ids;
    for (int n = 0; n < 5; ++n) ids.push_back(sample.table.insert({n, u"t"}));
    auto file = sample.builder.bytes();
    // Entries of nine bytes: flag, number, page, slot.
    file[pageOffset(sample.root()) + kArea + 9 * 3 - 1] = 200;
    expectFindings(file, {{Rule::IndexEntries, sample.root()}, {Rule::IndexEntries, ids[2]}});
}

TEST(CheckIndexEntries, RowWithTwoEntries) {
    IndexSample sample{onNumber()};
    std::vector<RowId> ids;
    for (int n = 0; n < 5; ++n) ids.push_back(sample.table.insert({n, u"t"}));
    auto file = sample.builder.bytes();
    file[pageOffset(sample.root()) + kArea + 9 * 3 - 1] = 3;
    // The first of the two has another key than the row.
    expectFindings(
        file,
        {{Rule::IndexKey, ids[3]}, {Rule::IndexEntries, ids[3]}, {Rule::IndexEntries, ids[2]}});
}

// The same entry at the end of one leaf and at the beginning of the next.
TEST(CheckIndexTree, AnEntryOnTwoLeaves) {
    auto spec = onNumber();
    spec.entriesPerPage = 4;
    IndexSample sample{spec};
    std::vector<RowId> ids;
    for (int n = 0; n < 8; ++n) ids.push_back(sample.table.insert({n, u"t"}));
    auto file = sample.builder.bytes();
    const PageNumber left = sample.table.index(u"i").pages()[1];
    const PageNumber right = sample.table.index(u"i").pages()[2];
    const auto area = [&](PageNumber page) {
        return file.begin() + static_cast<std::ptrdiff_t>(pageOffset(page) + kArea);
    };
    std::copy_n(area(left) + 3 * 9, 9, area(right));  // entries of nine bytes
    expectFindings(
        file,
        {{Rule::IndexTree, right}, {Rule::IndexEntries, ids[3]}, {Rule::IndexEntries, ids[4]}});
}

TEST(CheckIndexEntries, DeletedRow) {
    CheckSample sample;
    const RowId row = sample.ids[39];  // the last one of its page but for the moved record
    const std::size_t slot = fixture::slotOffset(row);
    const auto word = get<std::uint16_t>(sample.file, slot);
    poke16(sample.file, slot, static_cast<std::uint16_t>(word | 0xC000));
    const auto found = findingsIn(sample.file);
    const auto entries = std::count_if(found.begin(), found.end(), [](const Expected& finding) {
        return finding.rule == Rule::IndexEntries && !finding.row;
    });
    EXPECT_EQ(entries, 3);  // one in each index
    EXPECT_THAT(found, testing::Contains(Expected{Rule::RowCount, sample.definition()}));
}

TEST(CheckIndexEntries, NullsThatAreLeftOut) {
    auto spec = onNumber();
    spec.ignoreNulls = true;
    IndexSample left{spec};
    left.table.insert({1, u"t"});
    left.table.insert({fixture::kNull, u"t"});
    auto file = left.builder.bytes();
    expectClean(file);
    // The same entries, but the index now wants them all.
    const DefinitionOffsets offsets{file, left.table.definitionPage()};
    file[offsets.physicalIndex(0) + 46] = 0x80;
    expectFinding(file, {Rule::IndexEntries, RowId{left.table.dataPages()[0], 1}});

    IndexSample kept{onNumber()};
    kept.table.insert({1, u"t"});
    const RowId row = kept.table.insert({fixture::kNull, u"t"});
    file = kept.builder.bytes();
    expectClean(file);
    file[offsets.physicalIndex(0) + 46] = 0x82;
    expectFinding(file, {Rule::IndexEntries, row});
}

TEST(CheckIndexEntries, Key) {
    CheckSample sample;
    const RowId row = sample.ids[CheckSample::kPlain];
    // Count stands behind Id in the fixed part.
    poke16(sample.file, sample.record(CheckSample::kPlain) + 6, 77);
    expectFinding(sample.file, {Rule::IndexKey, row});

    CheckSample text;
    const RowId named = text.ids[CheckSample::kPlain];
    text.file[text.record(CheckSample::kPlain) + 8] = 'z';
    expectFinding(text.file, {Rule::IndexKey, named});
    text.file[text.record(CheckSample::kPlain) + 8] = 'N';  // another case, the same key
    expectClean(text.file);
}

TEST(CheckIndexEntries, KeysOfAllTypes) {
    fixture::FixtureBuilder builder;
    fixture::TableSpec spec{
        .name = u"A",
        .columns = {
            fixture::column(u"Byte", ColumnType::Byte),
            fixture::column(u"Integer", ColumnType::Integer),
            fixture::column(u"Currency", ColumnType::Currency),
            fixture::column(u"Single", ColumnType::Single),
            fixture::column(u"Double", ColumnType::Double),
            fixture::column(u"Date", ColumnType::Date),
            fixture::column(u"Boolean", ColumnType::Boolean), fixture::binaryColumn(u"Binary", 40),
            fixture::column(u"Guid", ColumnType::Guid), fixture::numericColumn(u"Numeric", 18, 2),
            fixture::memoColumn(u"Memo"), fixture::fixedTextColumn(u"Char", 8)}};
    for (const auto& column : spec.columns) {
        spec.indexes.push_back({.name = u"up " + column.name, .columns = {{column.name}}});
        spec.indexes.push_back({.name = u"down " + column.name, .columns = {{column.name, false}}});
    }
    // Two for each column are sorted by name in the definition.
    auto& table = builder.addTable(spec);
    for (int n = -20; n < 20; ++n) {
        Guid guid;
        guid.bytes[5] = static_cast<std::uint8_t>(n);
        const auto times = static_cast<std::size_t>(n + 20);
        table.insert({n + 30, n, Currency{n * 10000}, static_cast<float>(n), n * 1.5,
                      Date{n + 0.25}, n % 3 == 0, Binary(times, 7), guid,
                      Numeric{.negative = n < 0, .scale = 2, .magnitude = {0, 0, 1, 77}},
                      std::u16string(10 * times, u'm'), u"char"});
        table.insert({});
    }
    const CheckReport report = checkBytes(builder.bytes());
    EXPECT_THAT(report.findings, testing::IsEmpty());
    EXPECT_EQ(report.entries, 24u * 80 + 2 * 9 + 18);
}

/// Weights of other orders are not known; rows and order are checked all the same.
TEST(CheckIndexEntries, OtherCollation) {
    IndexSample sample{{.name = u"i", .columns = {{u"T"}}}};
    for (const char16_t* text : {u"a", u"b", u"c"}) sample.table.insert({1, text});
    auto file = sample.builder.bytes();
    const DefinitionOffsets offsets{file, sample.table.definitionPage()};
    poke16(file, offsets.column(1) + 11, 0x0804);
    expectClean(file);
    const std::size_t lastKey = pageOffset(sample.root()) + kArea + 2 * 8 + 1;
    ++file[lastKey];
    expectClean(file);  // still in order
    file[lastKey] = 0x01;
    expectFinding(file, {Rule::IndexPage, sample.root()});
}

TEST(CheckUniqueKey, TwoRows) {
    auto spec = onNumber();
    spec.unique = true;
    IndexSample sample{spec};
    sample.table.insert({1, u"t"});
    const RowId row = sample.table.insert({1, u"t"});
    sample.table.insert({fixture::kNull, u"t"});
    sample.table.insert({fixture::kNull, u"t"});  // nulls are no keys
    expectFinding(sample.builder.bytes(), {Rule::UniqueKey, row});
}

TEST(CheckRequiredKey, Null) {
    auto spec = onNumber();
    spec.required = true;
    IndexSample sample{spec};
    sample.table.insert({1, u"t"});
    const RowId row = sample.table.insert({fixture::kNull, u"t"});
    expectFinding(sample.builder.bytes(), {Rule::RequiredKey, row});
}

TEST(CheckIndexCounters, FewerThanKeys) {
    CheckSample sample;
    const std::size_t distinct = sample.offsets().counter(1) + 4;
    poke32(sample.file, distinct, get<std::uint32_t>(sample.file, distinct) + 1);
    expectClean(sample.file);  // the key of a row that was deleted
    poke32(sample.file, distinct, 5);
    expectFinding(sample.file, warning({Rule::IndexCounters, sample.definition()}));
}

}  // namespace
}  // namespace jet
