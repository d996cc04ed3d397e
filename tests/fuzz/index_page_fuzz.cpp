// Index pages of any content: what is accepted is in order, and is found again.
#include "engine/jet/index_page.h"
#include "tests/fuzz/small_pages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kEntries = 480;
    constexpr std::uint8_t kLeaf = 4;
    fuzz::Input input{data, size};
    std::vector<std::uint8_t> page(jet::kPageSize);
    const jet::Bytes front = input.take(64);
    std::copy(front.begin(), front.end(), page.begin());
    const jet::Bytes entries = input.take(jet::kPageSize - kEntries);
    std::copy(entries.begin(), entries.end(), page.begin() + kEntries);
    page[0] = static_cast<std::uint8_t>(kLeaf - page[0] % 2);
    std::fill_n(page.begin() + 4, 4, std::uint8_t{0});
    try {
        const jet::IndexPage index{page, jet::PageNumber{1}, jet::kNoPage};
        jet::Key entry;
        jet::Key before;
        for (std::size_t i = 0; i < index.size(); ++i) {
            index.read(i, entry);
            fuzz::require(i == 0 || before < entry, "entries ascend");
            fuzz::require(index.lowerBound(entry) == i, "an entry is found where it stands");
            before = entry;
        }
        if (!index.isLeaf()) index.child(index.size() / 2);
    } catch (const jet::Error& error) {
        fuzz::require(error.fault() == jet::Fault::Damaged, "pages are damaged at worst");
    }
    return 0;
}
