#include "engine/jet/check/pages.h"

#include "engine/jet/bytes.h"
#include "engine/jet/data_page.h"
#include "engine/jet/format/header_page.h"

#include <algorithm>
#include <array>

namespace jet::checking {
namespace {

namespace layout = format::data_page;

/// One after the other: where the rows of a page begin, and how they are marked.
class SlotCheck {
public:
    SlotCheck(Context& context, Bytes page, PageNumber number)
        : report_{context.report},
          page_{page},
          number_{number},
          count_{load(page, layout::kSlotCount)} {}

    bool run() {
        if (count_ > layout::kMaxSlotsWritten) {
            report_.error(Rule::DataPage, number_,
                          "there are " + std::to_string(count_) + " slots");
            return false;
        }
        for (unsigned slot = 0; slot < count_; ++slot) checkSlot(slot);
        if (sound_) checkFreeBytes();
        return sound_;
    }

private:
    void checkSlot(unsigned slot) {
        const auto word = load(page_, layout::slot(slot));
        const std::size_t offset = word & layout::kOffsetMask;
        const RowId row{number_, slot};
        if ((word & ~(layout::kFlagMask | layout::kOffsetMask)) != 0)
            fail(row, "the slot has an unknown mark");
        if (offset > end_ || offset < layout::slotsEnd(count_)) {
            return fail(row, "the row lies outside its place on the page");
        }
        if ((word & layout::kFlagMask) == layout::kDeleted && offset != end_) {
            report_.warning(Rule::DataPage, row, "a deleted row keeps its bytes");
        }
        end_ = offset;
    }

    void checkFreeBytes() {
        const std::size_t expected = end_ - layout::slotsEnd(count_);
        const auto stored = load(page_, format::page::kFreeBytes);
        if (stored == expected) return;
        report_.error(Rule::DataPage, number_,
                      std::to_string(expected) + " bytes are free, but the page says " +
                          std::to_string(stored));
    }

    void fail(RowId row, const char* message) {
        report_.error(Rule::DataPage, row, message);
        sound_ = false;
    }

    Reporter& report_;
    Bytes page_;
    PageNumber number_;
    unsigned count_;
    std::size_t end_ = kPageSize;  ///< of the next row
    bool sound_ = true;
};

}  // namespace

void checkHeaderPage(Context& context) {
    namespace header = format::header_page;
    std::array<std::uint8_t, kPageSize> page{};
    context.storage.readPages(kNoPage, page);
    context.owners.claim(kNoPage, {OwnerKind::Header});
    const auto expect = [&](bool right, const char* message) {
        if (!right) context.report.error(Rule::Header, kNoPage, message);
    };
    expect(load(page, header::kStart) == header::kStartValue, "the page's type is wrong");
    expect(load(page, header::kMagic) == header::kMagicValue,
           "the constant behind the header is wrong");
    expect(load(page, header::kVersionText) == header::kVersionTextValue,
           "the version's text is not 4.0");
    expect(std::all_of(page.begin() + header::kZeros, page.begin() + header::kCommits,
                       [](std::uint8_t byte) { return byte == 0; }),
           "bytes that no writer uses are not zero");
}

std::optional<Bytes> takePage(Context& context, PageReader& pages, PageNumber number,
                              const Owner& owner, std::initializer_list<PageType> types) {
    if (!context.inFile(number)) {
        context.report.error(Rule::PageReference, number,
                             "the page lies outside the file, but belongs to " + describe(owner));
        return std::nullopt;
    }
    const bool again = context.owners.of(number) == owner;  // several maps share a page
    if (const auto other = context.owners.claim(number, owner)) {
        context.report.error(
            Rule::PageOwnership, number,
            "the page belongs to " + describe(*other) + " and to " + describe(owner));
        return std::nullopt;
    }
    const Bytes page = pages.page(number);
    const PageType type = load(page, format::page::kType);
    const std::uint8_t mark = load(page, format::page::kMark);
    const bool expected = std::find(types.begin(), types.end(), type) != types.end();
    if (!again && (!expected || mark != format::page::kInUse)) {
        context.report.error(Rule::PageType, number,
                             "a page of type " + std::to_string(static_cast<unsigned>(type)) +
                                 ", " + std::to_string(mark) + " is no page of " + describe(owner));
    }
    if (!expected) return std::nullopt;
    return page;
}

bool checkDataPage(Context& context, Bytes page, PageNumber number) {
    return SlotCheck{context, page, number}.run();
}

bool checkPageOwner(Context& context, Bytes page, PageNumber number, std::uint32_t owner) {
    const std::uint32_t stored = load(page, layout::kOwner);
    if (stored == owner) return true;
    context.report.error(
        Rule::PageOwner, number,
        "the page names " + std::to_string(stored) + " as its owner, not " + std::to_string(owner));
    return false;
}

}  // namespace jet::checking
