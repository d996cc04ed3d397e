// Data pages of any content: their slots, the records in them, and where pointer rows lead.
#include "engine/jet/data_page.h"
#include "engine/jet/record.h"
#include "tests/fuzz/small_pages.h"

namespace {

constexpr std::uint32_t kOwner = 7;

void readPage(jet::PageReader& pages, jet::PageReader& moved, jet::PageNumber number) {
    const jet::Bytes bytes = pages.page(number);
    const jet::DataPage page{bytes, number};
    for (unsigned i = 0; i < page.slotCount(); ++i) {
        const auto slot = page.slot(i);
        if (!slot || slot->deleted) continue;
        fuzz::require(fuzz::isWithin(slot->bytes, bytes), "a row lies on its page");
        try {
            const jet::Record record{
                slot->pointer ? jet::followPointer(moved, slot->bytes, page.owner()) : slot->bytes,
                number};
            jet::Column column;
            column.id = static_cast<std::uint16_t>(i);
            column.variableIndex = column.id;
            record.field(column);
        } catch (const jet::Error& error) {
            fuzz::require(error.fault() == jet::Fault::Damaged, "rows are damaged at worst");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input{data, size};
    const bool wellFormed = input.next<std::uint8_t>() % 4 != 0;
    fuzz::SmallPages content{input, 4};
    if (wellFormed) content.setOwner(kOwner);
    const jet::MemoryStorage storage = std::move(content).storage();
    jet::PageCache cache{storage};
    jet::PageReader pages{storage, cache};
    jet::PageReader moved{storage, cache};
    for (std::uint32_t page = 1; page < 4; ++page) {
        try {
            readPage(pages, moved, jet::PageNumber{page});
        } catch (const jet::Error& error) {
            fuzz::require(error.fault() == jet::Fault::Damaged, "pages are damaged at worst");
        }
    }
    return 0;
}
