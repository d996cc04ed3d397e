// Journals as a crash may leave them, and as they should not be.
#include "engine/jet/journal.h"

#include "engine/jet/database.h"
#include "engine/jet/write/new_database.h"
#include "engine/jet/write/schema.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/write/crashed.h"
#include "tests/support/expected.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace jet {
namespace {

using fixture::FaultyDisk;
using testing::HasSubstr;
using ByteVector = std::vector<std::uint8_t>;

constexpr std::uint64_t kRecord = Crashed::kRecord;

/// The change is taken back, and nothing is left of it.
void expectTakenBack(Crashed& file, const std::string& what = {}) {
    const Recovery found = file.recover();
    EXPECT_EQ(file.disk.database(), file.original) << what;
    EXPECT_FALSE(file.disk.hasJournal()) << what;
    EXPECT_EQ(found.pagesPutBack, Crashed::kSafe) << what;
    EXPECT_EQ(found.pagesLaidOver, 0u) << what;
    EXPECT_EQ(found.obstacle, "") << what;
}

void write(Storage& file) {
    file.lock();
    recoverLocked(file);
}

/// Neither the file nor its journal is touched, by opening or by writing; returns the reason.
std::string expectLeftAlone(Crashed& file, bool incomplete, const std::string& what = {}) {
    const ByteVector journal = file.journal();
    const ByteVector content = file.disk.database();
    const Recovery found = file.recover();
    EXPECT_EQ(found.pagesPutBack, 0u) << what;
    EXPECT_EQ(found.incomplete, incomplete) << what;
    EXPECT_THAT(found.obstacle, HasSubstr("-journal")) << what;
    Pager pager{file.disk.open()};
    const std::string message = expectFault(Fault::JournalInTheWay, [&] { pager.begin(); });
    EXPECT_THAT(message, HasSubstr(found.obstacle)) << what;
    EXPECT_EQ(file.disk.database(), content) << what;
    EXPECT_EQ(file.journal(), journal) << what;
    return found.obstacle;
}

/// The file is as it should be; the next change makes way for its own journal.
void expectWithoutMeaning(Crashed& file, const std::string& what = {}) {
    const ByteVector content = file.disk.database();
    const Recovery found = file.recover();
    EXPECT_EQ(found.pagesPutBack, 0u) << what;
    EXPECT_EQ(found.obstacle, "") << what;
    write(*file.disk.open());
    EXPECT_FALSE(file.disk.hasJournal()) << what;
    EXPECT_EQ(file.disk.database(), content) << what;
}

TEST(Journal, AChangeThatWasCutShortIsTakenBack) {
    Crashed file;
    expectTakenBack(file);
}

TEST(Journal, AFileThatWasRecoveredIsOpenToOthers) {
    const fixture::TemporaryFolder folder;
    constexpr std::uint32_t kPages = Crashed::kPages;
    const auto path = folder.write("crashed.mdb", numberedPages(kPages));
    {
        const auto writer = openFile(path);
        writer->lock();
        Journal journal{writer->createJournal(), kPages, fingerprintOf(*writer, kPages)};
        journal.append(Journal::Kind::Transaction, PageNumber{10}, ByteVector(kPageSize, 10));
        journal.sync();
        writer->writeAt(10 * kPageSize, ByteVector(kPageSize, 0xEE));
    }
    Recovery recovery;
    const auto file = recover(openFile(path), recovery);
    ByteVector page(kPageSize);
    EXPECT_NO_THROW(openFile(path)->readPages(PageNumber{10}, page));
    EXPECT_EQ(page, ByteVector(kPageSize, 10));
}

// What stands behind the records that the head counts belongs to pages that were not overwritten
// yet.
TEST(Journal, CutShortBehindWhatWasSafe) {
    const std::size_t whole = Crashed{}.journal().size();
    ASSERT_EQ(whole, Journal::kFirstRecord + Crashed::kSaved * kRecord);
    for (std::size_t length = Crashed::kSafeEnd; length <= whole; length += 509) {
        Crashed file;
        file.changeJournal([&](ByteVector& journal) { journal.resize(length); });
        expectTakenBack(file, std::to_string(length));
    }
}

TEST(Journal, ARecordThatArrivedInPart) {
    Crashed file;
    file.changeJournal([](ByteVector& journal) { journal[Crashed::kSafeEnd + 700] ^= 1; });
    expectTakenBack(file);
}

TEST(Journal, GarbageAtItsEnd) {
    Crashed file;
    file.changeJournal(
        [](ByteVector& journal) { journal.insert(journal.end(), 3 * kRecord + 17, 0x5A); });
    expectTakenBack(file);
}

// Half a recovery would be no better than none.
TEST(Journal, CutOffWhereItWasSafe) {
    for (std::size_t length = 48; length < Crashed::kSafeEnd; length += 511) {
        Crashed file;
        file.changeJournal([&](ByteVector& journal) { journal.resize(length); });
        const std::string reason = expectLeftAlone(file, true, std::to_string(length));
        const std::string records = std::to_string((length - 48) / kRecord);
        EXPECT_THAT(reason, HasSubstr("the first " + records + " of its 4 records")) << length;
    }
}

TEST(Journal, DamagedWhereItWasSafe) {
    for (std::size_t at = 48; at < Crashed::kSafeEnd; at += 321) {
        Crashed file;
        file.changeJournal([&](ByteVector& journal) { journal[at] ^= 1; });
        expectLeftAlone(file, true, std::to_string(at));
    }
}

TEST(Journal, DamagedInItsHead) {
    for (std::size_t at = 0; at < Journal::kFirstRecord; ++at) {
        Crashed file;
        file.changeJournal([&](ByteVector& journal) { journal[at] ^= 2; });
        const bool isOurs = at >= 8;
        const std::string reason = expectLeftAlone(file, isOurs, std::to_string(at));
        EXPECT_EQ(reason.find("another version") != std::string::npos, at >= 8 && at < 12) << at;
    }
}

TEST(Journal, CutOffInItsHead) {
    for (std::size_t length = 1; length < Journal::kFirstRecord; ++length) {
        Crashed file;
        file.changeJournal([&](ByteVector& journal) { journal.resize(length); });
        expectLeftAlone(file, length >= 12, std::to_string(length));
    }
}

// The power failed before the head was durable, so the file was not written to.
TEST(Journal, ThatWasNotBegun) {
    for (const std::size_t length : {0u, 1u, 47u, 48u}) {
        Crashed file;
        file.setJournal(ByteVector(length));
        expectWithoutMeaning(file, std::to_string(length));
    }
    Crashed file;
    file.setJournal(ByteVector(49));
    expectLeftAlone(file, false);
}

// Records were being written, but no page of the file; or all of it is complete.
TEST(Journal, ThatCountsNoRecords) {
    for (const std::size_t length : {48u, 49u, 4000u, 10000u, 24720u}) {
        const ByteVector content = numberedPages(Crashed::kPages);
        FaultyDisk disk{content};
        {
            auto file = disk.open();
            Journal journal{file->createJournal(), Crashed::kPages,
                            fingerprintOf(*file, Crashed::kPages)};
        }
        Crashed file;
        ByteVector journal = file.journal();
        const auto head = disk.open()->openJournal();
        head->readAt(0, std::span{journal}.first(48));
        journal.resize(length);
        file.setJournal(journal);
        expectWithoutMeaning(file, std::to_string(length));
    }
}

TEST(Journal, MeansNothingAfterTheCommitPoint) {
    Crashed file;
    file.disk.open()->removeJournal();
    {
        auto storage = file.disk.open();
        Journal journal{storage->createJournal(), 3, 0};
        journal.append(Journal::Kind::Transaction, PageNumber{1}, ByteVector(kPageSize));
        journal.sync();
        journal.invalidate();
    }
    EXPECT_GT(file.journal().size(), kRecord);
    expectWithoutMeaning(file);
}

// All files that were made of one template have the same header.
TEST(Journal, OfAFileInWhosePlaceAnotherWasPut) {
    const ByteVector journal = Crashed{}.journal();
    constexpr std::uint32_t kPages = Crashed::kPages;
    for (const std::uint32_t pages : {kPages - 50, kPages - 1, kPages, kPages + 1, kPages + 50}) {
        ByteVector other = numberedPages(pages);
        for (std::size_t at = kPageSize; at < other.size(); at += 100) other[at] ^= 0x40;
        Crashed file;
        file.disk = FaultyDisk{other};
        file.setJournal(journal);
        const std::string reason = expectLeftAlone(file, false, std::to_string(pages));
        EXPECT_THAT(reason, HasSubstr("another database")) << pages;
    }
}

// The backup that somebody put in its place is the file as it was.
TEST(Journal, OfAFileInWhosePlaceItsBackupWasPut) {
    Crashed file;
    const ByteVector journal = file.journal();
    file.disk = FaultyDisk{file.original};
    file.setJournal(journal);
    expectTakenBack(file);
}

TEST(Journal, ThatIsSomethingElse) {
    for (const std::string text : {"Dear diary", "VORELLE", "VORELLEJournal of 1921"}) {
        Crashed file;
        file.setJournal({text.begin(), text.end()});
        expectLeftAlone(file, text.size() > 12 && text.starts_with("VORELLEJ"), text);
    }
}

/// A database whose change was cut short.
Crashed crashedDatabase() { return Crashed{emptyDatabase(Date{42000})}; }

// It can be read as it was before the change.
TEST(Journal, AFileThatMayNotBeWritten) {
    for (const Fault fault : {Fault::ReadOnly, Fault::InUse}) {
        Crashed file = crashedDatabase();
        file.disk.refuseLock(fault);
        const auto database = Database::open(file.disk.open());
        ByteVector content(static_cast<std::size_t>(database->storage().size()));
        EXPECT_EQ(database->storage().readAt(0, content), content.size());
        EXPECT_EQ(content, file.original);
        EXPECT_FALSE(database->catalog().empty());
        EXPECT_EQ(database->recovery().pagesPutBack, 0u);
        EXPECT_EQ(database->recovery().pagesLaidOver, Crashed::kSafe);
        EXPECT_THAT(database->recovery().obstacle, HasSubstr("The disk refuses that."));
        const std::string message = expectFault(fault, [&] {
            database->write([](WriteContext& context) {
                createTable(context, u"T", {{.name = u"X", .type = ColumnType::Long}});
            });
        });
        EXPECT_EQ(message, database->recovery().obstacle);
        EXPECT_EQ(file.disk.database(), file.crashed);
        EXPECT_TRUE(file.disk.hasJournal());
    }
}

// Reads of any length and place agree with the file that was put back.
TEST(Journal, LaidOverTheFile) {
    Crashed file;
    file.disk.refuseLock(Fault::ReadOnly);
    Recovery recovery;
    const auto view = jet::recover(file.disk.open(), recovery);
    ASSERT_EQ(view->size(), file.original.size());
    for (std::size_t offset = 8 * kPageSize; offset < 16 * kPageSize; offset += 1021) {
        for (const std::size_t length : {1u, 100u, 4096u, 5000u, 30000u}) {
            ByteVector read(length);
            ASSERT_EQ(view->readAt(offset, read), length);
            const auto begin = file.original.begin() + static_cast<std::ptrdiff_t>(offset);
            ASSERT_TRUE(std::equal(read.begin(), read.end(), begin)) << offset << ", " << length;
        }
    }
    ByteVector beyond(2 * kPageSize);
    EXPECT_EQ(view->readAt(file.original.size() - 10, beyond), 10u);
    EXPECT_EQ(view->readAt(file.original.size(), beyond), 0u);
}

// The file can be written, but the journal not removed: as good as a file that cannot be written.
TEST(Journal, ThatCannotBeRemoved) {
    Crashed file = crashedDatabase();
    const std::uint64_t operations = [&] {
        FaultyDisk copy{file.crashed};
        copy.open()->createJournal()->writeAt(0, file.journal());
        const std::uint64_t before = copy.operations();
        Recovery recovery;
        jet::recover(copy.open(), recovery);
        return copy.operations() - before;
    }();
    file.disk.failOnceAfter(operations - 1, Fault::WriteFailed);
    const auto database = Database::open(file.disk.open());
    EXPECT_TRUE(file.disk.hasJournal());
    EXPECT_EQ(file.disk.database(), file.original);
    EXPECT_FALSE(database->catalog().empty());
    EXPECT_THAT(database->recovery().obstacle, HasSubstr("The disk fails, once."));
}

// Somebody else died in the middle of a change after this one had opened the file.
TEST(Journal, AStatementBeginsWithRecovery) {
    Crashed file;
    Pager pager{file.disk.open()};
    pager.begin();
    EXPECT_EQ((*pager.page(PageNumber{10}))[0], 10);
    EXPECT_EQ(pager.pageCount(), Crashed::kPages);
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
