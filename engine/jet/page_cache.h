// A bounded cache of recently read pages, shared by all readers of one database.
//
//   jet::PageCache cache{storage};
//   jet::PageReader pages{storage, cache};
//   const jet::Bytes header = pages.page(jet::PageNumber{0});
//
// Any thread may use the cache; a PageReader belongs to one thread.
#pragma once

#include "engine/jet/losses.h"
#include "engine/jet/storage.h"

#include <array>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace jet {

using Page = std::array<std::uint8_t, kPageSize>;
using PagePtr = std::shared_ptr<const Page>;

/// A least-recently-used cache in front of a storage. Any thread may call it. A page stays valid as
/// long as its pointer exists, even if the cache drops it.
class PageCache {
public:
    /// 1,024 pages: 4 MiB, several screens of a grid with a page for each text.
    static constexpr std::size_t kDefaultPages = 1024;

    explicit PageCache(const Storage& storage, std::size_t capacity = kDefaultPages)
        : storage_{storage}, capacity_{capacity} {}

    /// Throws Error: Damaged for page 0 or a page beyond the end of the file; else as the storage.
    PagePtr get(PageNumber number);

    /// Drops all pages, so that changes by other programs become visible.
    void clear();

    /// Drops one page that is about to change.
    void forget(PageNumber number);

private:
    struct Entry {
        PageNumber number;
        PagePtr page;
    };

    const Storage& storage_;
    const std::size_t capacity_;
    std::mutex mutex_;
    std::uint64_t forgotten_ = 0;  ///< how often pages have been dropped
    std::list<Entry> byUse_;       ///< latest first
    std::unordered_map<std::uint32_t, std::list<Entry>::iterator> byNumber_;
};

/// One thread's view of the pages: remembers the last page it returned, and can hold a stretch of
/// the file in one block so that a scan need not ask the cache for each page.
class PageReader {
public:
    PageReader(const Storage& storage, PageCache& cache) : storage_{&storage}, cache_{&cache} {}

    /// The page's 4096 bytes, valid until the next call of any member; those of a page in the
    /// loaded block, until the next loadBlock. Throws as PageCache::get.
    Bytes page(PageNumber number);

    /// Reads `count` pages from `first` on with one call to the storage; page() uses them until the
    /// next loadBlock. Throws as Storage::readPages.
    void loadBlock(PageNumber first, std::size_t count);

    /// Also uses the block that `lender` has loaded; null ends that. Pages from there are valid as
    /// long as the lender's.
    void borrowBlock(const PageReader* lender) { lender_ = lender; }

    const Storage& storage() const { return *storage_; }

    /// Keeps a hint at damage that what was read has survived, for whoever counts the losses; one
    /// hint a row.
    void doubt(RowId row, std::string why) {
        if (!doubted_.insert(row.packed()).second) return;
        doubts_.add({Loss::Kind::Hints, row.page(), Loss::kNoSlot, std::move(why)});
    }
    bool hasDoubts() const { return doubts_.hints != 0; }

    /// The hints since the last call.
    Losses takeDoubts() { return std::exchange(doubts_, {}); }

private:
    /// Empty if the page is not in the loaded block.
    Bytes pageOfBlock(PageNumber number) const {
        // One unsigned comparison covers both ends of the block.
        const std::uint32_t inBlock = raw(number) - blockFirst_;
        if (inBlock >= blockCount_) return {};
        return Bytes{block_}.subspan(inBlock * kPageSize, kPageSize);
    }

    const Storage* storage_;
    PageCache* cache_;
    const PageReader* lender_ = nullptr;
    std::vector<std::uint8_t> block_;
    std::uint32_t blockFirst_ = 0;
    std::uint32_t blockCount_ = 0;
    PageNumber heldNumber_ = kNoPage;
    PagePtr held_;
    Losses doubts_;  ///< not yet taken
    std::unordered_set<std::uint32_t> doubted_;
};

}  // namespace jet
