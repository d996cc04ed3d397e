// Journals as a crash may leave them, and as they should not be.
#include "engine/jet/journal.h"

#include "engine/jet/database.h"
#include "engine/jet/write/new_database.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/expected.h"
#include "tests/support/faulty_disk.h"

#include <gtest/gtest.h>

namespace jet {
namespace {

using fixture::FaultyDisk;
using ByteVector = std::vector<std::uint8_t>;

constexpr std::uint32_t kPages = 100;
constexpr std::uint32_t kSaved = 6;  ///< pages 10 to 15 are in the journal
constexpr std::uint32_t kSafe = 4;   ///< the first four of them before the crash
constexpr std::uint64_t kRecord = 16 + kPageSize;

/// A file whose change was cut short: four pages overwritten, two appended.
class Crashed {
public:
    explicit Crashed(ByteVector content = numberedPages(kPages)) : disk{std::move(content)} {
        original = disk.database();
        auto file = disk.open();
        const auto pageCount = file->pageCount();
        Journal journal{file->createJournal(), pageCount, fingerprintOf(*file, pageCount)};
        for (std::uint32_t page = 10; page < 10 + kSaved; ++page) {
            ByteVector bytes(kPageSize);
            file->readPages(PageNumber{page}, bytes);
            journal.append(Journal::Kind::Transaction, PageNumber{page}, bytes);
        }
        journal.sync();
        file->writeAt(10 * kPageSize, ByteVector(kSafe * kPageSize, 0xEE));
        file->writeAt(std::uint64_t{pageCount} * kPageSize, ByteVector(2 * kPageSize, 0xEE));
        crashed = disk.database();
    }

    void recover() { jet::recover(*disk.open()); }

    ByteVector journal() {
        const auto file = disk.open()->openJournal();
        ByteVector bytes(static_cast<std::size_t>(file->size()));
        file->readAt(0, bytes);
        return bytes;
    }

    void setJournal(const ByteVector& bytes) {
        const auto file = disk.open()->createJournal();
        file->writeAt(0, bytes);
    }

    FaultyDisk disk;
    ByteVector original;
    ByteVector crashed;
};

TEST(Journal, AChangeThatWasCutShortIsTakenBack) {
    Crashed file;
    file.recover();
    EXPECT_EQ(file.disk.database(), file.original);
    EXPECT_FALSE(file.disk.hasJournal());
}

TEST(Journal, AFileThatWasRecoveredIsOpenToOthers) {
    const fixture::TemporaryFolder folder;
    const auto path = folder.write("crashed.mdb", numberedPages(kPages));
    {
        const auto writer = openFile(path);
        writer->lock();
        Journal journal{writer->createJournal(), kPages, fingerprintOf(*writer, kPages)};
        journal.append(Journal::Kind::Transaction, PageNumber{10}, ByteVector(kPageSize, 10));
        journal.sync();
        writer->writeAt(10 * kPageSize, ByteVector(kPageSize, 0xEE));
    }
    const auto file = openFile(path);
    recover(*file);
    ByteVector page(kPageSize);
    EXPECT_NO_THROW(openFile(path)->readPages(PageNumber{10}, page));
    EXPECT_EQ(page, ByteVector(kPageSize, 10));
}

// What stands behind the last sync belongs to pages that were not overwritten yet.
TEST(Journal, CutShortBehindWhatWasSafe) {
    const ByteVector whole = Crashed{}.journal();
    ASSERT_EQ(whole.size(), Journal::kFirstRecord + kSaved * kRecord);
    for (std::size_t length = Journal::kFirstRecord + kSafe * kRecord; length <= whole.size();
         length += 509) {
        Crashed file;
        ByteVector journal = file.journal();
        journal.resize(length);
        file.setJournal(journal);
        file.recover();
        EXPECT_EQ(file.disk.database(), file.original) << length;
    }
}

TEST(Journal, ARecordThatArrivedInPart) {
    Crashed file;
    ByteVector journal = file.journal();
    journal[Journal::kFirstRecord + kSafe * kRecord + 700] ^= 1;
    file.setJournal(journal);
    file.recover();
    EXPECT_EQ(file.disk.database(), file.original);
}

TEST(Journal, GarbageAtItsEnd) {
    Crashed file;
    ByteVector journal = file.journal();
    journal.insert(journal.end(), 3 * kRecord + 17, 0x5A);
    file.setJournal(journal);
    file.recover();
    EXPECT_EQ(file.disk.database(), file.original);
}

// Where even that is lost which was said to be safe, half a recovery would be no better than none.
TEST(Journal, DamagedWhereItWasSafe) {
    // The sample of pages has every page of a small file.
    Crashed file{numberedPages(30)};
    ByteVector journal = file.journal();
    journal[Journal::kFirstRecord + kRecord + 100] ^= 1;
    file.setJournal(journal);
    file.recover();
    EXPECT_EQ(file.disk.database(), file.crashed);
}

TEST(Journal, HeadsThatAreNotValid) {
    for (std::size_t offset = 0; offset < Journal::kFirstRecord; ++offset) {
        Crashed file;
        ByteVector journal = file.journal();
        journal[offset] ^= 2;  // at offset 8: another version
        file.setJournal(journal);
        file.recover();
        EXPECT_EQ(file.disk.database(), file.crashed) << offset;
    }
    for (const std::size_t length : {0u, 1u, 39u}) {
        Crashed file;
        ByteVector journal = file.journal();
        journal.resize(length);
        file.setJournal(journal);
        file.recover();
        EXPECT_EQ(file.disk.database(), file.crashed) << length;
    }
}

// All files that were made of one template have the same header.
TEST(Journal, OfAFileInWhosePlaceAnotherWasPut) {
    const ByteVector journal = Crashed{}.journal();
    for (const std::uint32_t pages : {kPages - 50, kPages - 1, kPages, kPages + 1, kPages + 50}) {
        ByteVector other = numberedPages(pages);
        for (std::size_t at = kPageSize; at < other.size(); at += 100) other[at] ^= 0x40;
        FaultyDisk disk{other};
        disk.open()->createJournal()->writeAt(0, journal);
        recover(*disk.open());
        EXPECT_EQ(disk.database(), other) << pages;
    }
}

// The backup that somebody put in its place is the file as it was.
TEST(Journal, OfAFileInWhosePlaceItsBackupWasPut) {
    Crashed file;
    FaultyDisk disk{file.original};
    disk.open()->createJournal()->writeAt(0, file.journal());
    recover(*disk.open());
    EXPECT_EQ(disk.database(), file.original);
}

TEST(Journal, AFileThatMayNotBeWritten) {
    for (const Fault fault : {Fault::ReadOnly, Fault::InUse}) {
        Crashed file{[] {
            ByteVector content = emptyDatabase(Date{42000});
            return content;
        }()};
        file.disk.refuseLock(fault);
        expectFault(fault, [&] { Database::open(file.disk.open()); });
        EXPECT_EQ(file.disk.database(), file.crashed);
        EXPECT_TRUE(file.disk.hasJournal());
    }
}

// Somebody else died in the middle of a change after this one had opened the file.
TEST(Journal, AStatementBeginsWithRecovery) {
    Crashed file;
    Pager pager{file.disk.open()};
    pager.begin();
    EXPECT_EQ((*pager.page(PageNumber{10}))[0], 10);
    EXPECT_EQ(pager.pageCount(), kPages);
    pager.edit(PageNumber{20})->fill(21);
    pager.end();
    pager.commit();
    ByteVector expected = file.original;
    std::ranges::fill(pageOf(expected, PageNumber{20}), std::uint8_t{21});
    EXPECT_EQ(file.disk.database(), expected);
    EXPECT_FALSE(file.disk.hasJournal());
}

TEST(Journal, IsReplayedFromMemoryAndFromItsFile) {
    MemoryStorage file{numberedPages(2)};
    Journal journal{file.createJournal(), 2, 0};
    std::vector<std::uint32_t> pages;
    const auto note = [&](Journal::Kind, PageNumber number, Bytes bytes) {
        pages.push_back(raw(number));
        EXPECT_EQ(bytes[0], static_cast<std::uint8_t>(raw(number)));
    };
    std::uint64_t third = 0;
    for (std::uint32_t n = 0; n < 600; ++n) {  // more than are held back
        if (n == 3) third = journal.end();
        journal.append(Journal::Kind::Statement, PageNumber{n},
                       ByteVector(kPageSize, static_cast<std::uint8_t>(n)));
    }
    journal.replay(third, note);
    ASSERT_EQ(pages.size(), 597u);
    EXPECT_EQ(pages.front(), 3u);
    EXPECT_EQ(pages.back(), 599u);
    file.openJournal()->writeAt(third + 100, ByteVector(4, 0xAB));
    expectFault(Fault::ReadFailed, [&] { journal.replay(third, note); });
}

}  // namespace
}  // namespace jet
