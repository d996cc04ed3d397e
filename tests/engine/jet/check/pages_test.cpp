// The checker on pages as such: the file, its maps, and whose each page is.
#include "engine/jet/database.h"
#include "engine/jet/format/page.h"
#include "tests/engine/jet/check/check_support.h"
#include "tests/engine/jet/faults.h"
#include "tests/support/sparse_storage.h"

namespace jet {
namespace {

using fixture::pageOffset;
using fixture::poke32;

TEST(CheckPages, CountsWhatItLookedAt) {
    const CheckSample sample;
    const CheckReport report = checkBytes(sample.file);
    EXPECT_TRUE(report.sound());
    EXPECT_THAT(report.findings, testing::IsEmpty());
    EXPECT_EQ(report.tables, 6u);
    EXPECT_EQ(report.pages, sample.file.size() / kPageSize);
    EXPECT_EQ(report.rows, 8u + 2 + 16 + 4 + 39);
    EXPECT_EQ(report.longValues, 5u);
    EXPECT_EQ(report.indexes, 7u + 5);
    // Six of the rows have no Count.
    EXPECT_EQ(report.entries, 2u * 10 + 20 + 33 + 39 + 39);
}

TEST(CheckPages, ChecksAnOpenDatabase) {
    CheckSample sample;
    poke32(sample.file, sample.offsets().header(16), 41);
    const auto database = Database::open(std::make_unique<MemoryStorage>(sample.file));
    const CheckReport report = check(*database);
    ASSERT_EQ(report.findings.size(), 1u);
    EXPECT_EQ(report.findings[0].rule, Rule::RowCount);
    EXPECT_EQ(report.findings[0].table, "Rows");
}

TEST(CheckPages, RefusesWhatIsNoDatabase) {
    expectFault(Fault::NotADatabase, [] { checkBytes(fixture::pngFile()); });
    expectFault(Fault::OlderFormat, [] { checkBytes(fixture::olderDatabase()); });
    expectFault(Fault::NotADatabase, [] { checkBytes({}); });
    CheckSample sample;
    fixture::truncate(sample.file, 2 * kPageSize);
    expectFault(Fault::Truncated, [&] { checkBytes(sample.file); });
}

TEST(CheckPages, FileLength) {
    CheckSample sample;
    sample.file.resize(sample.file.size() + 100);
    expectFinding(sample.file, {Rule::FileLength, kNoPage});

    CheckSample cut;
    fixture::truncate(cut.file, cut.file.size() - kPageSize);
    expectAmong(cut.file, {Rule::FileLength, kNoPage});
}

TEST(CheckPages, AFileLargerThanTheFormatAllows) {
    const CheckSample sample;
    fixture::SparseStorage storage{sample.file};
    storage.writeAt(std::uint64_t{format::page::kMaxCount} * kPageSize,
                    fixture::ByteVector(kPageSize, 1));
    const CheckReport report = check(storage);
    ASSERT_FALSE(report.findings.empty());
    EXPECT_EQ(report.findings[0].rule, Rule::FileLength);
    EXPECT_EQ(report.findings[0].message, "the file is too large");
}

TEST(CheckPages, Header) {
    for (const std::size_t at : {0u, 2u, 0x98u, 0x9Du, 0xA0u, 0x400u, 0xDFFu}) {
        CheckSample sample;
        sample.file[at] ^= 0x10;
        expectFinding(sample.file, {Rule::Header, kNoPage});
    }
    CheckSample sample;
    sample.file[0xE10] ^= 0x10;  // counts the commits of some user
    expectClean(sample.file);
}

TEST(CheckPages, PageReference) {
    CheckSample sample;
    poke32(sample.file, sample.offsets().physicalIndex(2) + 38, 5000);
    expectFinding(sample.file, {Rule::PageReference, PageNumber{5000}});
}

TEST(CheckPages, PageType) {
    const CheckSample sound;
    for (const PageNumber page :
         {sound.table.dataPages()[1], sound.notePart(CheckSample::kSingle).page(), sound.leaf(2),
          sound.root(), PageNumber{6}}) {
        CheckSample sample;
        sample.file[pageOffset(page) + 1] = 0;
        expectFinding(sample.file, {Rule::PageType, page});
        sample.file[pageOffset(page) + 1] = 1;
        sample.file[pageOffset(page)] = 9;
        expectAmong(sample.file, {Rule::PageType, page});
    }
}

/// What is lost with a page of rows is not reported row by row.
TEST(CheckPages, APageThatIsLostIsOneFinding) {
    CheckSample sample;
    const PageNumber page = sample.table.dataPages()[1];
    sample.file[pageOffset(page)] = 9;
    expectFinding(sample.file, {Rule::PageType, page});
}

TEST(CheckPages, PageOwner) {
    const CheckSample sound;
    for (const PageNumber page : {sound.table.dataPages()[0], PageNumber{1}, PageNumber{6},
                                  sound.notePart(CheckSample::kChain).page(), sound.leaf(1)}) {
        CheckSample sample;
        poke32(sample.file, pageOffset(page) + 4, 77);
        expectAmong(sample.file, {Rule::PageOwner, page});
    }
    CheckSample sample;
    const PageNumber page = sample.table.dataPages()[0];
    poke32(sample.file, pageOffset(page) + 4, 77);
    expectFinding(sample.file, {Rule::PageOwner, page});
}

TEST(CheckPages, PageListedAsFree) {
    const CheckSample sound;
    for (const PageNumber page :
         {PageNumber{1}, PageNumber{6}, sound.definition(), sound.table.dataPages()[0],
          sound.leaf(0), sound.notePart(CheckSample::kSingle).page()}) {
        CheckSample sample;
        sample.setBit(CheckSample::freePages(), page, true);
        expectFinding(sample.file, {Rule::PageOwnership, page});
    }
}

TEST(CheckPages, PageOfTwoOwners) {
    CheckSample sample;
    const auto roots = sample.offsets();
    poke32(sample.file, roots.physicalIndex(1) + 38, raw(sample.root()));
    // One index is left without its tree; the other one's is still whole.
    EXPECT_THAT(findingsIn(sample.file),
                testing::Contains(Expected{Rule::PageOwnership, sample.root()}));

    CheckSample maps;
    const PageNumber foreign = maps.leaf(0);
    maps.setBit(maps.table.parts().maps.owned, foreign, true);
    expectAmong(maps.file, {Rule::PageOwnership, foreign});

    CheckSample shared;
    const PageNumber rows = shared.table.dataPages()[0];
    shared.setBit(shared.empty.parts().maps.owned, rows, true);
    expectFinding(shared.file, {Rule::PageOwnership, rows});
}

TEST(CheckPages, OrphanPage) {
    CheckSample sample;
    const PageNumber page{static_cast<std::uint32_t>(sample.file.size() / kPageSize)};
    sample.file.resize(sample.file.size() + kPageSize);
    expectClean(sample.file);  // the map lists it as free
    sample.setBit(CheckSample::freePages(), page, false);
    expectFinding(sample.file, warning({Rule::OrphanPage, page}));
}

TEST(CheckPages, UsageMap) {
    const CheckSample sound;
    const RowId owned = sound.table.parts().maps.owned;
    {
        CheckSample sample;
        sample.file[fixture::rowOffset(sample.file, owned)] = 7;
        expectFinding(sample.file, {Rule::UsageMap, owned});
    }
    {
        CheckSample sample;
        sample.setBit(owned, PageNumber{500}, true);
        expectFinding(sample.file, {Rule::UsageMap, owned});
    }
    {
        CheckSample sample;
        poke32(sample.file, sample.offsets().header(59), owned.packed());
        expectFinding(sample.file, {Rule::UsageMap, owned});
    }
    {
        CheckSample sample;
        poke32(sample.file, sample.offsets().header(55), RowId{owned.page(), 200}.packed());
        expectFinding(sample.file, {Rule::UsageMap, RowId{owned.page(), 200}});
    }
    {
        CheckSample sample;
        sample.file[fixture::rowOffset(sample.file, CheckSample::freePages())] = 7;
        expectFinding(sample.file, {Rule::UsageMap, CheckSample::freePages()});
    }
}

TEST(CheckPages, FreeMap) {
    CheckSample sample;
    sample.setBit(sample.table.parts().maps.free, sample.leaf(0), true);
    expectFinding(sample.file, {Rule::FreeMap, sample.leaf(0)});

    CheckSample notes;
    const auto maps = notes.table.parts().longValueMaps.begin()->second;
    notes.setBit(maps.free, notes.leaf(0), true);
    expectFinding(notes.file, {Rule::FreeMap, notes.leaf(0)});
}

TEST(CheckPages, KeepsSomeFindingsAndCountsAll) {
    CheckSample sample;
    constexpr std::size_t kPages = 3000;
    const auto first = static_cast<std::uint32_t>(sample.file.size() / kPageSize);
    sample.file.resize(sample.file.size() + kPages * kPageSize);
    // As many pages as the map covers are in use.
    for (std::uint32_t page = first; page < 512; ++page) {
        sample.setBit(CheckSample::freePages(), PageNumber{page}, false);
    }
    const CheckReport report = checkBytes(sample.file);
    EXPECT_EQ(report.warnings, 512u - first);
    EXPECT_EQ(report.errors, 0u);
    EXPECT_LE(report.findings.size(), 2 * CheckReport::kMaxKept);
}

}  // namespace
}  // namespace jet
