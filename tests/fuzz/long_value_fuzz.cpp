// Long values whose header and pages are of any content.
#include "engine/jet/data_page.h"
#include "engine/jet/value.h"
#include "tests/fuzz/small_pages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input{data, size};
    const jet::Bytes header = input.take(input.next<std::uint8_t>() % 64);
    fuzz::SmallPages content{input, 5};
    content.setOwner(jet::format::data_page::kLongValueOwner);
    const jet::MemoryStorage storage = std::move(content).storage();
    jet::PageCache cache{storage};
    jet::PageReader pages{storage, cache};
    jet::Binary scratch;
    try {
        const jet::Bytes value = jet::readLongValue(pages, header, jet::PageNumber{1}, scratch);
        fuzz::require(value.size() <= storage.size() + jet::kPageSize,
                      "no more than the file holds");
        // Touches every byte, so that a view that no longer holds is seen.
        unsigned sum = 0;
        for (const std::uint8_t byte : value) sum += byte;
        fuzz::require(sum <= 255 * value.size(), "bytes are bytes");
    } catch (const jet::Error& error) {
        fuzz::require(error.fault() == jet::Fault::Damaged, "values are damaged at worst");
    }
    return 0;
}
