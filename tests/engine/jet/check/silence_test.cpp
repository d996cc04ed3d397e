// One defect is one finding: what is lost with it, or cannot be known because of it, is not
// reported too. And what every finding says of its table.
#include "tests/engine/jet/check/check_support.h"

namespace jet {
namespace {

using fixture::get;
using fixture::pageOffset;
using fixture::poke16;
using fixture::poke32;

constexpr PageNumber kCatalog{2};
constexpr PageNumber kCatalogRows{14};
constexpr PageNumber kRightsRows{15};

/// The row of an object in the catalog, whose rows stand on one page.
RowId catalogRow(const CheckSample& sample, std::uint32_t id) {
    for (unsigned slot = 0;; ++slot) {
        const RowId row{kCatalogRows, slot};
        const std::size_t at = fixture::rowOffset(sample.file, row) + 2;
        if (get<std::uint32_t>(sample.file, at) == id) return row;
    }
}

// ---- The catalog --------------------------------------------------------------------------------

// Without a column of the catalog no table is known, and no page can be said to be nobody's.
TEST(CheckSilence, ACatalogWithoutAColumn) {
    constexpr std::size_t kFlags = 4;  // columns stand in the order of their names
    CheckSample sample;
    const DefinitionOffsets offsets{sample.file, kCatalog};
    ASSERT_EQ(sample.file[offsets.columnName(kFlags)], 'F');
    sample.file[offsets.columnName(kFlags)] = 'X';
    expectFinding(sample.file, {Rule::Catalog, kCatalog});
}

TEST(CheckSilence, ACatalogWhosePageIsLost) {
    CheckSample sample;
    poke32(sample.file, pageOffset(kCatalogRows) + 4, 77);
    expectFinding(sample.file, {Rule::PageOwner, kCatalogRows});
}

TEST(CheckSilence, ACatalogOfWhichARecordIsLost) {
    const CheckSample sound;
    for (const std::uint32_t id : {raw(sound.empty.definitionPage()), raw(kCatalog)}) {
        CheckSample damaged;
        const RowId row = catalogRow(damaged, id);
        poke16(damaged.file, fixture::rowOffset(damaged.file, row), 0xFFFF);
        expectFinding(damaged.file, {Rule::Record, row});
    }
}

TEST(CheckSilence, RightsWhosePageIsLost) {
    CheckSample sample;
    poke32(sample.file, pageOffset(kRightsRows) + 4, 77);
    expectFinding(sample.file, {Rule::PageOwner, kRightsRows});
}

// The engine needs no right to its own tables.
TEST(CheckSilence, ASystemTableWithoutRights) {
    CheckSample sample;
    constexpr std::uint32_t kQueries = 4;
    std::vector<Expected> expected;
    const unsigned count = get<std::uint16_t>(sample.file, pageOffset(kRightsRows) + 12);
    for (unsigned slot = 0; slot < count; ++slot) {
        const std::size_t at = fixture::rowOffset(sample.file, {kRightsRows, slot}) + 2;
        if (get<std::uint32_t>(sample.file, at) != kQueries) continue;
        poke32(sample.file, at, kQueries + 1000);
        expected.emplace_back(Rule::IndexKey, RowId{kRightsRows, slot});
    }
    EXPECT_FALSE(expected.empty());
    expectFindings(sample.file, expected);
}

// ---- Indexes ------------------------------------------------------------------------------------

TEST(CheckSilence, APageOfAnIndexThatIsLost) {
    const CheckSample sound;
    for (const PageNumber page : {sound.leaf(3), sound.leaf(10)}) {  // a leaf, and one above
        CheckSample sample;
        sample.file[pageOffset(page)] = 9;
        expectFinding(sample.file, {Rule::PageType, page});
    }
}

TEST(CheckIndexTree, LevelBelowAnother) {
    CheckSample sample;
    const PageNumber parent = sample.leaf(10);
    sample.file[sample.at(parent, 26)] = 2;
    expectAmong(sample.file, warning({Rule::IndexPage, parent}));
}

TEST(CheckDefinition, AnIndexWithoutColumns) {
    CheckSample sample;
    for (std::size_t i = 0; i < 10; ++i) {
        poke16(sample.file, sample.emptyOffsets().physicalIndex(1) + 4 + 3 * i, 0xFFFF);
    }
    expectFinding(sample.file, {Rule::IndexDefinition, sample.empty.definitionPage()});
}

// ---- Long values --------------------------------------------------------------------------------

TEST(CheckSilence, APageOfLongValuesThatIsLost) {
    const CheckSample sound;
    for (const std::size_t n : {CheckSample::kSingle, CheckSample::kChain}) {
        CheckSample sample;
        const PageNumber page = sample.notePart(n).page();
        poke32(sample.file, pageOffset(page) + 4, 77);
        expectFinding(sample.file, {Rule::PageOwner, page});
    }
}

TEST(CheckSilence, LongValuesWhoseMapIsLost) {
    CheckSample sample;
    const RowId map = sample.table.parts().longValueMaps.begin()->second.owned;
    sample.file[fixture::rowOffset(sample.file, map)] = 7;
    const auto found = findingsIn(sample.file);
    EXPECT_THAT(found, testing::Contains(Expected{Rule::UsageMap, map}));
    EXPECT_THAT(found,
                testing::Not(testing::Contains(testing::Field(&Expected::rule, Rule::OrphanPage))));
}

TEST(CheckSilence, LongValuesOfARecordThatIsLost) {
    CheckSample sample;
    constexpr std::size_t n = CheckSample::kSingle;
    poke16(sample.file, sample.record(n), 0xFFFF);
    expectFinding(sample.file, {Rule::Record, sample.ids[n]});
}

TEST(CheckLongValue, APartThatIsMarkedAsMoved) {
    for (const unsigned mark : {0x4000u, 0x8000u}) {
        CheckSample sample;
        constexpr std::size_t n = CheckSample::kSingle;
        const std::size_t slot = fixture::slotOffset(sample.notePart(n));
        poke16(sample.file, slot,
               static_cast<std::uint16_t>(get<std::uint16_t>(sample.file, slot) | mark));
        expectFinding(sample.file, {Rule::LongValue, sample.ids[n]});
    }
}

TEST(CheckLongValue, AFieldOfNoBytesIsSound) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({.name = u"A", .columns = {fixture::memoColumn(u"M")}});
    table.insert({fixture::longValue(fixture::stored({}), fixture::LongForm::HandMade)});
    expectClean(builder.bytes());
}

// ---- Usage maps ---------------------------------------------------------------------------------

TEST(CheckPages, APageOfUsageMaps) {
    const CheckSample sound;
    const RowId owned = sound.table.parts().maps.owned;
    CheckSample freeBytes;
    poke16(freeBytes.file, pageOffset(owned.page()) + 2, 17);
    expectFinding(freeBytes.file, {Rule::DataPage, owned.page()});

    CheckSample header;  // is nobody's to give away
    header.setBit(owned, kNoPage, true);
    expectFinding(header.file, {Rule::UsageMap, owned});

    for (const unsigned mark : {0x4000u, 0x8000u}) {
        CheckSample sample;
        const std::size_t slot = fixture::slotOffset(owned);
        poke16(sample.file, slot,
               static_cast<std::uint16_t>(get<std::uint16_t>(sample.file, slot) | mark));
        expectFinding(sample.file, {Rule::UsageMap, owned});
    }
}

TEST(CheckPages, TheTableOfAFinding) {
    CheckSample orphan;
    const PageNumber page{static_cast<std::uint32_t>(orphan.file.size() / kPageSize)};
    orphan.file.resize(orphan.file.size() + kPageSize);
    orphan.setBit(CheckSample::freePages(), page, false);
    ASSERT_EQ(checkBytes(orphan.file).findings.size(), 1u);
    EXPECT_EQ(checkBytes(orphan.file).findings[0].table, "");

    CheckSample rights;
    const std::uint32_t id = raw(rights.empty.definitionPage());
    for (unsigned slot = 0; slot < 20; ++slot) {
        const std::size_t at = fixture::rowOffset(rights.file, {kRightsRows, slot}) + 2;
        if (get<std::uint32_t>(rights.file, at) == id) poke32(rights.file, at, id + 1000);
    }
    std::size_t found = 0;
    for (const Finding& finding : checkBytes(rights.file).findings) {
        if (finding.rule == Rule::AccessRights) ++found;
        EXPECT_EQ(finding.table, finding.rule == Rule::AccessRights ? "Empty" : "MSysACEs");
    }
    EXPECT_EQ(found, 1u);
}

}  // namespace
}  // namespace jet
