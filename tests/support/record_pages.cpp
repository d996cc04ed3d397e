#include "tests/support/record_pages.h"

#include <algorithm>
#include <stdexcept>

namespace fixture {

namespace {

// A page leaves the map of pages with room below the first figure and returns above the second.
constexpr std::size_t kMinRoom = 50;
constexpr std::size_t kRoomAgain = 100;

}  // namespace

DataPageImage::DataPageImage(std::uint32_t owner, std::uint32_t stamp) {
    image_[0] = 1;
    image_[1] = 1;
    put(image_, 2, static_cast<std::uint16_t>(jet::kPageSize - 14));
    put(image_, 4, owner);
    put(image_, 8, stamp);
}

bool DataPageImage::hasRoomFor(std::size_t length) const {
    return slotCount() < kMaxSlots && freeBytes() >= length + 2;
}

std::size_t DataPageImage::rowEnd(unsigned slot) const {
    return slot == 0 ? jet::kPageSize : rowBegin(slot - 1);
}

unsigned DataPageImage::append(ByteView row, std::uint16_t flags) {
    const unsigned slot = slotCount();
    const std::size_t begin = rowEnd(slot) - row.size();
    std::copy(row.begin(), row.end(), image_.begin() + static_cast<std::ptrdiff_t>(begin));
    put(image_, 14 + 2 * slot, static_cast<std::uint16_t>(begin | flags));
    put(image_, 12, static_cast<std::uint16_t>(slot + 1));
    put(image_, 2, static_cast<std::uint16_t>(freeBytes() - row.size() - 2));
    return slot;
}

void DataPageImage::remove(unsigned slot) {
    const std::size_t begin = rowBegin(slot);
    const std::size_t end = rowEnd(slot);
    const std::size_t length = end - begin;
    const std::size_t lowest = rowBegin(slotCount() - 1);
    std::memmove(image_.data() + lowest + length, image_.data() + lowest, begin - lowest);
    std::memset(image_.data() + lowest, 0, length);
    put(image_, 14 + 2 * slot, static_cast<std::uint16_t>(end | kSlotDeleted));
    for (unsigned later = slot + 1; later < slotCount(); ++later) {
        put(image_, 14 + 2 * later, static_cast<std::uint16_t>(slotWord(later) + length));
    }
    put(image_, 2, static_cast<std::uint16_t>(freeBytes() + length));
}

void DataPageImage::redirect(unsigned slot, jet::RowId target) {
    if (rowEnd(slot) - rowBegin(slot) < 4) throw std::length_error{"no room for a pointer"};
    put(image_, rowBegin(slot), target.packed());
    put(image_, 14 + 2 * slot, static_cast<std::uint16_t>(rowBegin(slot) | kSlotPointer));
}

jet::RowId RecordPages::append(ByteView row, std::uint16_t flags) {
    if (row.size() > kMaxRowBytes) throw std::length_error{"a row is longer than a page"};
    if (!open_ || !open_->hasRoomFor(row.size())) startNewPage();
    return {openPage_, open_->append(row, flags)};
}

jet::PageNumber RecordPages::allocateAlone() {
    const jet::PageNumber page = file_.allocate();
    pages_.push_back(page);
    return page;
}

void RecordPages::writeAlone(jet::PageNumber page, ByteView row, std::uint32_t stamp) {
    DataPageImage image{owner_, stamp};
    image.append(row, 0);
    file_.write(page, image.image());
}

void RecordPages::startNewPage() {
    finish();
    openPage_ = file_.allocate();
    pages_.push_back(openPage_);
    open_.emplace(owner_);
}

template <typename Change>
void RecordPages::modify(jet::PageNumber number, Change change) {
    if (number == openPage_) {
        change(*open_);
        return;
    }
    DataPageImage page{file_.read(number)};
    change(page);
    file_.write(number, page.image());
    if (page.freeBytes() >= kRoomAgain && page.slotCount() < kMaxSlots) emptied_.insert(number);
}

void RecordPages::remove(jet::RowId row) {
    modify(row.page(), [row](DataPageImage& page) { page.remove(row.slot()); });
}

void RecordPages::redirect(jet::RowId row, jet::RowId target) {
    modify(row.page(), [row, target](DataPageImage& page) { page.redirect(row.slot(), target); });
}

DataPageImage RecordPages::page(jet::PageNumber number) {
    return number == openPage_ ? *open_ : DataPageImage{file_.read(number)};
}

void RecordPages::finish() {
    if (open_) file_.write(openPage_, open_->image());
}

std::vector<jet::PageNumber> RecordPages::pagesWithRoom() const {
    std::set<jet::PageNumber> found = emptied_;
    if (open_ && open_->freeBytes() >= kMinRoom && open_->slotCount() < kMaxSlots) {
        found.insert(openPage_);
    }
    return {found.begin(), found.end()};
}

}  // namespace fixture
