// Pages laid out by a test, and a reader on them.
//
//   jet::MemoryPages pages{file.bytes()};
//   jet::PageReader reader = pages.reader();
#pragma once

#include "engine/jet/page_cache.h"
#include "tests/support/page_file.h"

#include <utility>

namespace jet {

class MemoryPages {
public:
    explicit MemoryPages(std::vector<std::uint8_t> content)
        : storage_{std::move(content)}, cache_{storage_} {}

    PageReader reader() { return {storage_, cache_}; }
    const Storage& storage() const { return storage_; }

private:
    MemoryStorage storage_;
    PageCache cache_;
};

/// A file of `count` pages; page n is filled with the byte n.
inline std::vector<std::uint8_t> numberedPages(std::size_t count) {
    std::vector<std::uint8_t> content(count * kPageSize);
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<std::uint8_t>(i / kPageSize);
    }
    return content;
}

/// A place in the bytes of a file.
inline std::span<std::uint8_t> pageOf(std::vector<std::uint8_t>& content, PageNumber page) {
    return std::span{content}.subspan(std::size_t{raw(page)} * kPageSize, kPageSize);
}

}  // namespace jet
