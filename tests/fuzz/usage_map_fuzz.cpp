// Usage maps of any content: the pages come ascending, and none is the header or beyond the format.
#include "engine/jet/format/page.h"
#include "engine/jet/header.h"
#include "engine/jet/usage_map.h"
#include "tests/fuzz/small_pages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input{data, size};
    const auto bitmapPage = input.next<std::uint8_t>();
    fuzz::SmallPages content{input, 4};
    content.setOwner(0);
    jet::MemoryStorage storage = std::move(content).storage();
    // One page may be a bitmap, which rows of maps can refer to.
    std::vector<std::uint8_t> bytes(storage.size());
    storage.readAt(0, bytes);
    if (bitmapPage % 4 != 0)
        bytes[std::size_t{bitmapPage} % 4 * jet::kPageSize] =
            static_cast<std::uint8_t>(jet::format::PageType::Bitmap);
    storage = jet::MemoryStorage{std::move(bytes)};

    jet::PageCache cache{storage};
    jet::PageReader pages{storage, cache};
    for (std::uint32_t slot = 0; slot < 4; ++slot) {
        try {
            const auto set = jet::readUsageMap(pages, jet::RowId{jet::PageNumber{1}, slot});
            fuzz::require(std::is_sorted(set.begin(), set.end()), "pages ascend");
            fuzz::require(std::adjacent_find(set.begin(), set.end()) == set.end(), "no page twice");
            fuzz::require(set.empty() || (set.front() != jet::kNoPage &&
                                          raw(set.back()) < jet::format::page::kMaxCount),
                          "pages that a file can have");
        } catch (const jet::Error& error) {
            fuzz::require(error.fault() == jet::Fault::Damaged, "maps are damaged at worst");
        }
    }
    fuzz::require(jet::missingPages(pages) <= jet::format::page::kMaxCount,
                  "no more pages are missing than a file can have");
    return 0;
}
