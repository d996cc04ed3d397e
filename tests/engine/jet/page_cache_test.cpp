#include "engine/jet/page_cache.h"

#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace jet {
namespace {

using testing::Each;

/// Counts what is asked of it.
class CountingStorage : public MemoryStorage {
public:
    using MemoryStorage::MemoryStorage;

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        ++reads;
        return MemoryStorage::readAt(offset, buffer);
    }

    mutable std::atomic<unsigned> reads = 0;
};

TEST(PageCache, ReadsAPageOnce) {
    const CountingStorage storage{numberedPages(4)};
    PageCache cache{storage};
    EXPECT_THAT(*cache.get(PageNumber{3}), Each(3));
    EXPECT_THAT(*cache.get(PageNumber{3}), Each(3));
    EXPECT_EQ(storage.reads, 1u);
}

TEST(PageCache, DropsThePageThatWasUsedLeastLately) {
    const CountingStorage storage{numberedPages(4)};
    PageCache cache{storage, 2};
    cache.get(PageNumber{1});
    cache.get(PageNumber{2});
    cache.get(PageNumber{1});
    cache.get(PageNumber{3});  // page 2 goes
    EXPECT_EQ(storage.reads, 3u);
    cache.get(PageNumber{1});
    EXPECT_EQ(storage.reads, 3u);
    cache.get(PageNumber{2});
    EXPECT_EQ(storage.reads, 4u);
}

TEST(PageCache, APageOutlivesItsPlaceInTheCache) {
    const MemoryStorage storage{numberedPages(8)};
    PageCache cache{storage, 1};
    const PagePtr held = cache.get(PageNumber{1});
    for (std::uint32_t page = 2; page < 8; ++page) cache.get(PageNumber{page});
    EXPECT_THAT(*held, Each(1));
}

TEST(PageCache, RefusesTheHeaderPageAndPagesBehindTheEnd) {
    const MemoryStorage storage{numberedPages(4)};
    PageCache cache{storage};
    expectFault(Fault::Damaged, [&] { cache.get(kNoPage); });
    expectFault(Fault::Damaged, [&] { cache.get(PageNumber{4}); });
    expectFault(Fault::Damaged, [&] { cache.get(PageNumber{0xFFFFFFFF}); });
}

/// Grows, as a file does that another program writes to.
class GrowingStorage : public Storage {
public:
    std::uint64_t size() const override { return pages * kPageSize; }
    std::size_t readAt(std::uint64_t, std::span<std::uint8_t> buffer) const override {
        std::fill(buffer.begin(), buffer.end(), content);
        return buffer.size();
    }

    std::uint64_t pages = 2;
    std::uint8_t content = 1;
};

TEST(PageCache, FindsPagesThatWereAppended) {
    GrowingStorage storage;
    PageCache cache{storage};
    expectFault(Fault::Damaged, [&] { cache.get(PageNumber{2}); });
    storage.pages = 3;
    EXPECT_THAT(*cache.get(PageNumber{2}), Each(1));
}

TEST(PageCache, ForgetsPagesWhenTold) {
    GrowingStorage storage;
    PageCache cache{storage};
    const PagePtr before = cache.get(PageNumber{1});
    storage.content = 2;
    EXPECT_THAT(*cache.get(PageNumber{1}), Each(1));
    cache.clear();
    EXPECT_THAT(*cache.get(PageNumber{1}), Each(2));
    EXPECT_THAT(*before, Each(1));
}

/// Lets something happen while a page is being read, as another thread may.
class InterruptedStorage : public MemoryStorage {
public:
    using MemoryStorage::MemoryStorage;

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        ++reads;
        const std::size_t got = MemoryStorage::readAt(offset, buffer);
        if (const auto happen = std::exchange(meanwhile, nullptr)) happen();
        return got;
    }

    mutable std::function<void()> meanwhile;
    mutable unsigned reads = 0;
};

// Such a page may be old already.
TEST(PageCache, DoesNotKeepAPageThatWasForgottenWhileItWasRead) {
    InterruptedStorage storage{numberedPages(4)};
    PageCache cache{storage};
    const std::vector<std::function<void()>> forgets{[&] { cache.clear(); },
                                                     [&] { cache.forget(PageNumber{2}); }};
    std::uint8_t content = 50;
    for (const auto& forget : forgets) {
        cache.clear();
        const std::vector<std::uint8_t> changed(kPageSize, ++content);
        storage.meanwhile = [&] {
            storage.writeAt(2 * kPageSize, changed);
            forget();
        };
        EXPECT_THAT(*cache.get(PageNumber{2}), testing::Not(Each(content)));
        EXPECT_THAT(*cache.get(PageNumber{2}), Each(content));
    }
}

// Two threads may read one page at the same time; it takes one place.
TEST(PageCache, APageThatWasReadTwiceAtOnceTakesOnePlace) {
    InterruptedStorage storage{numberedPages(4)};
    PageCache cache{storage, 2};
    storage.meanwhile = [&] { cache.get(PageNumber{1}); };
    cache.get(PageNumber{1});
    EXPECT_EQ(storage.reads, 2u);
    cache.get(PageNumber{2});
    cache.get(PageNumber{1});
    EXPECT_EQ(storage.reads, 3u);
}

TEST(PageCache, ServesSeveralThreads) {
    const MemoryStorage storage{numberedPages(64)};
    PageCache cache{storage, 8};
    std::atomic<unsigned> wrong = 0;
    std::vector<std::thread> threads;
    for (unsigned first = 0; first < 4; ++first) {
        threads.emplace_back([&, first] {
            for (unsigned i = 0; i < 5000; ++i) {
                const unsigned page = 1 + (first * 7 + i * i) % 63;
                const PagePtr held = cache.get(PageNumber{page});
                if ((*held)[0] != page || (*held)[kPageSize - 1] != page) ++wrong;
                if (i % 500 == 0) cache.clear();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0u);
}

TEST(PageReader, ServesPagesFromItsBlock) {
    const CountingStorage storage{numberedPages(10)};
    PageCache cache{storage};
    PageReader reader{storage, cache};
    reader.loadBlock(PageNumber{3}, 4);
    EXPECT_EQ(storage.reads, 1u);
    for (std::uint32_t page = 3; page < 7; ++page)
        EXPECT_THAT(reader.page(PageNumber{page}), Each(page));
    EXPECT_EQ(storage.reads, 1u);
    EXPECT_THAT(reader.page(PageNumber{2}), Each(2));
    EXPECT_THAT(reader.page(PageNumber{7}), Each(7));
    EXPECT_EQ(storage.reads, 3u);
}

TEST(PageReader, PagesOfTheBlockHoldWhileOthersAreRead) {
    MemoryPages pages{numberedPages(10)};
    PageReader reader = pages.reader();
    reader.loadBlock(PageNumber{2}, 2);
    const Bytes inBlock = reader.page(PageNumber{2});
    reader.page(PageNumber{8});
    reader.page(PageNumber{9});
    EXPECT_THAT(inBlock, Each(2));
}

TEST(PageReader, ABlockMustLieInTheFile) {
    MemoryPages pages{numberedPages(4)};
    PageReader reader = pages.reader();
    expectFault(Fault::Truncated, [&] { reader.loadBlock(PageNumber{3}, 2); });
    // What was half loaded is not served.
    EXPECT_THAT(reader.page(PageNumber{3}), Each(3));
}

TEST(PageReader, ServesPagesFromABlockThatItBorrows) {
    const CountingStorage storage{numberedPages(10)};
    PageCache cache{storage};
    PageReader lender{storage, cache};
    PageReader borrower{storage, cache};
    lender.loadBlock(PageNumber{3}, 2);
    borrower.borrowBlock(&lender);
    EXPECT_THAT(borrower.page(PageNumber{4}), Each(4));
    EXPECT_EQ(storage.reads, 1u);
    borrower.borrowBlock(nullptr);
    EXPECT_THAT(borrower.page(PageNumber{4}), Each(4));
    EXPECT_EQ(storage.reads, 2u);
}

TEST(PageReader, HoldsThePageThatItGaveLast) {
    const CountingStorage storage{numberedPages(10)};
    PageCache cache{storage};
    PageReader reader{storage, cache};
    const Bytes first = reader.page(PageNumber{4});
    cache.clear();
    EXPECT_EQ(reader.page(PageNumber{4}).data(), first.data());
    EXPECT_EQ(storage.reads, 1u);
}

TEST(PageReader, NoBlockHoldsTheHeaderPage) {
    MemoryPages pages{numberedPages(4)};
    PageReader reader = pages.reader();
    expectFault(Fault::Damaged, [&] { reader.page(kNoPage); });
}

}  // namespace
}  // namespace jet
