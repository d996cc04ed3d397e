// Statements taken back, storages that fail at the worst moment, readers beside a writer.
#include "engine/jet/pager.h"

#include "engine/jet/format/page.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/faulty_disk.h"
#include "tests/support/sparse_storage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace jet {
namespace {

using fixture::FaultyDisk;
using fixture::Random;
using ByteVector = std::vector<std::uint8_t>;

constexpr std::uint32_t kPages = 40;

ByteVector contentOf(const Storage& storage) {
    ByteVector content(static_cast<std::size_t>(storage.size()));
    EXPECT_EQ(storage.readAt(0, content), content.size());
    return content;
}

void fill(Pager& pager, std::uint32_t page, unsigned value) {
    pager.edit(PageNumber{page})->fill(static_cast<std::uint8_t>(value));
}

/// Fills pages `first` to `last` and appends `added` ones.
void change(Pager& pager, std::uint32_t first, std::uint32_t last, unsigned value,
            std::uint32_t added) {
    for (std::uint32_t page = first; page <= last; ++page) fill(pager, page, value + page);
    for (std::uint32_t i = 0; i < added; ++i) fill(pager, raw(pager.append()), value);
}

TEST(Pager, AStatementIsTakenBackAfterItsPagesWereWritten) {
    for (const std::size_t capacity : {1u, 2u, 4u, 16u, 1000u}) {
        FaultyDisk disk{numberedPages(kPages)};
        Pager pager{disk.open(), capacity};
        pager.begin();
        change(pager, 1, 30, 100, 10);
        pager.end();
        const ByteVector first = contentOf(pager);
        pager.begin();
        change(pager, 5, kPages + 5, 50, 7);
        change(pager, 3, 20, 70, 0);
        pager.undo();
        EXPECT_EQ(contentOf(pager), first) << capacity;
        pager.commit();
        EXPECT_EQ(disk.database(), first) << capacity;
        EXPECT_FALSE(disk.hasJournal());
    }
}

TEST(Pager, TheFirstStatementIsTakenBackWithoutATrace) {
    for (const std::size_t capacity : {2u, 1000u}) {
        FaultyDisk disk{numberedPages(kPages)};
        Pager pager{disk.open(), capacity};
        pager.begin();
        change(pager, 1, 30, 100, 10);
        EXPECT_TRUE(disk.hasJournal());
        pager.undo();
        EXPECT_FALSE(disk.hasJournal());
        EXPECT_FALSE(pager.hasChanges());
        EXPECT_EQ(disk.database(), numberedPages(kPages));
        EXPECT_EQ(contentOf(pager), numberedPages(kPages));
    }
}

TEST(Pager, AStatementThatChangesNothingMakesNoJournal) {
    FaultyDisk disk{numberedPages(kPages)};
    Pager pager{disk.open()};
    pager.begin();
    EXPECT_EQ((*pager.page(PageNumber{3}))[0], 3);
    pager.end();
    EXPECT_EQ(disk.operations(), 0u);
    EXPECT_FALSE(pager.hasChanges());
}

/// Statements of random edits, ended or taken back, against plain bytes.
TEST(Pager, RandomStatementsAgreeWithPlainBytes) {
    Random random{11};
    for (int round = 0; round < 60; ++round) {
        FaultyDisk disk{numberedPages(kPages)};
        ByteVector model = disk.database();
        Pager pager{disk.open(), random.between(1, 12)};
        for (int statement = 0; statement < 12; ++statement) {
            ByteVector changed = model;
            pager.begin();
            for (std::uint32_t i = 0, count = random.below(40); i < count; ++i) {
                const auto pages = static_cast<std::uint32_t>(changed.size() / kPageSize);
                const bool append = random.oneIn(5);
                const std::uint32_t page =
                    append ? raw(pager.append()) : random.between(1, pages - 1);
                if (append) changed.resize(changed.size() + kPageSize);
                const PageEdit edit = pager.edit(PageNumber{page});
                const std::size_t at = random.below(kPageSize);
                const auto value = static_cast<std::uint8_t>(random.next());
                (*edit)[at] = value;
                changed[page * kPageSize + at] = value;
            }
            if (random.oneIn(3)) {
                pager.undo();
            } else {
                pager.end();
                model = changed;
            }
            ASSERT_EQ(contentOf(pager), model) << round << ", " << statement;
            if (!random.oneIn(4)) continue;
            pager.commit();
            ASSERT_EQ(disk.database(), model) << round << ", " << statement;
        }
    }
}

/// A pager on a disk that fails, and what it must hold.
struct Attempt {
    FaultyDisk disk{numberedPages(kPages)};
    Pager pager;
    ByteVector expected = numberedPages(kPages);  ///< what can be read
    ByteVector durable = numberedPages(kPages);   ///< what is in the file if all is taken back

    explicit Attempt(std::size_t capacity) : pager{disk.open(), capacity} {}

    /// Returns whether it succeeded.
    bool statement(std::uint32_t first, unsigned value) {
        pager.begin();
        try {
            change(pager, first, first + 15, value, 6);
        } catch (const Error&) {
            pager.undo();
            return false;
        }
        pager.end();
        expected = contentOf(pager);
        return true;
    }

    bool commit() {
        try {
            pager.commit();
        } catch (const Error&) {
            expected = durable;
            return false;
        }
        durable = expected;
        return true;
    }

    void expectIntact() const {
        EXPECT_EQ(contentOf(pager), expected);
        if (!pager.hasChanges()) {
            EXPECT_EQ(disk.database(), expected);
        }
    }
};

// Whatever operation fails once: the statement, or all that was not durable, is taken back, and
// the next one works.
TEST(Pager, OneFailureAtEveryOperation) {
    for (const Fault fault : {Fault::DiskFull, Fault::WriteFailed}) {
        for (const std::size_t capacity : {2u, 5u, 1000u}) {
            for (std::uint64_t operation = 0;; ++operation) {
                SCOPED_TRACE(std::to_string(capacity) + ", " + std::to_string(operation));
                Attempt attempt{capacity};
                attempt.disk.failOnceAfter(operation, fault);
                attempt.statement(1, 100);
                attempt.expectIntact();
                attempt.statement(10, 60);
                attempt.expectIntact();
                attempt.commit();
                attempt.expectIntact();
                if (attempt.disk.operations() <= operation) break;
                ASSERT_TRUE(attempt.statement(4, 30));
                ASSERT_TRUE(attempt.commit());
                attempt.expectIntact();
                EXPECT_FALSE(attempt.disk.hasJournal());
                if (HasFailure()) return;
            }
        }
    }
}

// A disk that is full stays full: taking back needs no room.
TEST(Pager, AFullDisk) {
    for (const std::size_t capacity : {2u, 5u, 1000u}) {
        for (std::uint64_t room = 0; room < 120; ++room) {
            SCOPED_TRACE(std::to_string(capacity) + ", " + std::to_string(room));
            Attempt attempt{capacity};
            attempt.disk.setRoom(attempt.disk.used() + room * 1000);
            attempt.statement(1, 100);
            attempt.expectIntact();
            attempt.statement(10, 60);
            attempt.expectIntact();
            attempt.statement(20, 80);
            attempt.expectIntact();
            attempt.commit();
            attempt.expectIntact();
            attempt.disk.setRoom(~std::uint64_t{0} / 2);
            ASSERT_TRUE(attempt.statement(4, 30));
            ASSERT_TRUE(attempt.commit());
            attempt.expectIntact();
            EXPECT_FALSE(attempt.disk.hasJournal());
            if (HasFailure()) return;
        }
    }
}

// Two pages always change together.
TEST(Pager, ReadersSeeWholeStatements) {
    FaultyDisk disk{ByteVector(kPages * kPageSize)};
    Pager pager{disk.open(), 3};
    PageCache cache{pager, 8};
    pager.setListener(
        [&](PageNumber number) { number == kNoPage ? cache.clear() : cache.forget(number); });
    std::atomic<bool> done = false;
    std::atomic<unsigned> torn = 0;
    std::atomic<unsigned> reads = 0;
    std::vector<std::thread> readers;
    for (std::uint32_t n = 0; n < 2; ++n) {
        readers.emplace_back([&, n] {
            ByteVector pages(2 * kPageSize);
            while (!done || reads < 100) {
                pager.readPages(PageNumber{1 + n}, pages);
                const bool same =
                    std::all_of(pages.begin(), pages.end(), [&](auto b) { return b == pages[0]; });
                if (!same) ++torn;
                const PagePtr page = cache.get(PageNumber{3 + n});
                if ((*page)[0] != (*page)[kPageSize - 1]) ++torn;
                ++reads;
            }
        });
    }
    for (unsigned i = 0; i < 300; ++i) {
        pager.begin();
        for (std::uint32_t page = 1; page < 8; ++page) fill(pager, page, i);
        if (i % 7 == 3) {
            pager.undo();
        } else {
            pager.end();
        }
        if (i % 5 == 0) pager.commit();
    }
    done = true;
    for (std::thread& reader : readers) reader.join();
    EXPECT_EQ(torn, 0u);
    EXPECT_GE(reads, 100u);
    pager.commit();
    EXPECT_EQ((*cache.get(PageNumber{3}))[9], static_cast<std::uint8_t>(299));
}

/// A pager whose changes a cache hears of.
struct CachedPager {
    FaultyDisk disk{numberedPages(kPages)};
    Pager pager{disk.open()};
    PageCache cache{pager};

    CachedPager() {
        pager.setListener([this](PageNumber number) {
            number == kNoPage ? cache.clear() : cache.forget(number);
        });
    }

    /// Changes page 3 in a statement of its own, and reads it before the statement ends.
    void change(unsigned value) {
        pager.begin();
        fill(pager, 3, value);
        EXPECT_EQ(content(), value);
        pager.end();
    }

    unsigned content() { return (*cache.get(PageNumber{3}))[0]; }
};

TEST(Pager, WhatWasReadInAStatementIsForgottenWhenItIsTakenBack) {
    CachedPager file;
    for (const unsigned before : {3u, 60u}) {  // the first statement of a change, and a later one
        file.pager.begin();
        fill(file.pager, 3, 50);
        EXPECT_EQ(file.content(), 50u);
        file.pager.undo();
        EXPECT_EQ(file.content(), before);
        file.change(60);
    }
}

TEST(Pager, WhatWasReadIsForgottenWhenItCannotBeCommitted) {
    CachedPager file;
    file.change(50);
    file.disk.failOnceAfter(0, Fault::WriteFailed);
    expectFault(Fault::WriteFailed, [&] { file.pager.commit(); });
    EXPECT_EQ(file.content(), 3u);
}

TEST(Pager, TheLargestFile) {
    Pager pager{std::make_unique<fixture::SparseStorage>(format::page::kMaxCount - 3)};
    pager.begin();
    EXPECT_EQ(raw(pager.append()), format::page::kMaxCount - 3);
    pager.end();
    pager.begin();
    pager.edit(PageNumber{7})->fill(7);
    EXPECT_EQ(raw(pager.append()), format::page::kMaxCount - 2);
    EXPECT_EQ(raw(pager.append()), format::page::kMaxCount - 1);
    expectFault(Fault::FileFull, [&] { pager.append(); });
    pager.undo();
    EXPECT_EQ(pager.pageCount(), format::page::kMaxCount - 2);
    pager.commit();
    EXPECT_EQ(pager.pageCount(), format::page::kMaxCount - 2);
    EXPECT_EQ((*pager.page(PageNumber{7}))[0], 0);
}

TEST(Pager, PagesOutsideTheFileAreRefused) {
    Pager pager{std::make_unique<MemoryStorage>(numberedPages(4))};
    pager.begin();
    expectFault(Fault::Damaged, [&] { pager.edit(PageNumber{4}); });
    expectFault(Fault::Damaged, [&] { pager.edit(kNoPage); });
    expectFault(Fault::Damaged, [&] { pager.page(PageNumber{0xFFFFFFFF}); });
    pager.undo();
}

TEST(Pager, AStatementThatMayNotBegin) {
    FaultyDisk disk{numberedPages(4)};
    for (const Fault fault : {Fault::ReadOnly, Fault::InUse}) {
        disk.refuseLock(fault);
        Pager pager{disk.open()};
        expectFault(fault, [&] { pager.begin(); });
        EXPECT_EQ(contentOf(pager), numberedPages(4));
        EXPECT_EQ(disk.operations(), 0u);
    }
}

/// A storage that another program writes to between two statements.
TEST(Pager, WhatOthersWroteIsSeenByTheNextStatement) {
    FaultyDisk disk{numberedPages(8)};
    Pager pager{disk.open()};
    bool cleared = false;
    pager.setListener([&](PageNumber number) { cleared = cleared || number == kNoPage; });
    pager.begin();
    EXPECT_TRUE(cleared);
    fill(pager, 2, 20);
    pager.end();
    cleared = false;
    pager.begin();
    EXPECT_FALSE(cleared);  // nobody else could write
    pager.end();
    pager.commit();
    disk.open()->writeAt(3 * kPageSize, ByteVector(kPageSize, 33));
    pager.begin();
    EXPECT_TRUE(cleared);
    EXPECT_EQ((*pager.page(PageNumber{3}))[0], 33);
    pager.end();
}

}  // namespace
}  // namespace jet
