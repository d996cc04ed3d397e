#include "engine/jet/index_page.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/page.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace jet {
namespace {

namespace layout = format::index_page;

std::strong_ordering compareBytes(Bytes left, Bytes right) {
    const std::size_t common = std::min(left.size(), right.size());
    const int order = common == 0 ? 0 : std::memcmp(left.data(), right.data(), common);
    return order != 0 ? order <=> 0 : left.size() <=> right.size();
}

}  // namespace

Bytes keyOf(Bytes entry) { return entry.first(entry.size() - layout::kRowIdSize); }

RowId rowOf(Bytes entry) {
    const Bytes stored = entry.last(layout::kRowIdSize);
    return RowId{PageNumber{loadBigEndian(stored.first(layout::kRowPageSize))}, stored.back()};
}

IndexPage::IndexPage(Bytes page, PageNumber number, PageNumber owner)
    : area_{page.subspan(layout::kEntries)}, number_{number} {
    const auto type = load(page, format::page::kType);
    if (type != format::PageType::Leaf && type != format::PageType::Intermediate) {
        throwDamaged(number, "a page of an index has the type of something else");
    }
    if (load(page, layout::kOwner) != raw(owner)) {
        throwDamaged(number, "a page of an index belongs to another table");
    }
    leaf_ = type == format::PageType::Leaf;
    next_ = load(page, layout::kNext);
    tail_ = leaf_ ? kNoPage : load(page, layout::kTail);
    prefix_ = load(page, layout::kPrefix);
    readBitmap(page.subspan(layout::kBitmap, layout::kBitmapSize));
    checkEntries();
}

void IndexPage::readBitmap(Bytes bitmap) {
    for (std::size_t byte = 0; byte < bitmap.size(); ++byte) {
        for (unsigned bits = bitmap[byte]; bits != 0; bits &= bits - 1) {
            const auto bit = static_cast<std::size_t>(std::countr_zero(bits));
            ends_.push_back(static_cast<std::uint16_t>(8 * byte + bit));
        }
    }
    if (!ends_.empty() && ends_.back() > area_.size()) {
        throwDamaged(number_, "an index entry runs past its page");
    }
}

void IndexPage::checkEntries() const {
    if (ends_.empty()) return;
    if (prefix_ + childBytes() > ends_.front()) {
        throwDamaged(number_, "the prefix of an index page is longer than its first entry");
    }
    for (std::size_t i = 0; i < size(); ++i) {
        const std::size_t whole = stored(i).size() + (i == 0 ? 0 : prefix_);
        if (whole < layout::kMinEntrySize + childBytes() || stored(i).size() < childBytes()) {
            throwDamaged(number_, "an index entry is too short");
        }
        if (i > 0 && compareBytes(behindPrefix(i - 1), behindPrefix(i)) >= 0) {
            throwDamaged(number_, "index entries are out of order");
        }
    }
}

/// An entry as stored on the page.
Bytes IndexPage::stored(std::size_t index) const {
    const std::size_t start = index == 0 ? 0 : ends_[index - 1];
    return area_.subspan(start, ends_[index] - start);
}

/// What tells the entries of this page apart: no prefix, no child.
Bytes IndexPage::behindPrefix(std::size_t index) const {
    const Bytes entry = stored(index);
    const std::size_t skipped = index == 0 ? prefix_ : 0;
    return entry.subspan(skipped, entry.size() - skipped - childBytes());
}

void IndexPage::read(std::size_t index, Key& entry) const {
    const Bytes prefix = area_.first(prefix_);
    const Bytes rest = behindPrefix(index);
    entry.assign(prefix.begin(), prefix.end());
    entry.insert(entry.end(), rest.begin(), rest.end());
}

std::size_t IndexPage::lowerBound(Bytes key) const {
    if (ends_.empty()) return 0;
    const Bytes prefix = area_.first(prefix_);
    const std::size_t shared = std::min(prefix_, key.size());
    const auto order = compareBytes(prefix.first(shared), key.first(shared));
    if (order != 0) return order > 0 ? 0 : size();

    const Bytes rest = key.subspan(shared);
    std::size_t low = 0;
    std::size_t high = size();
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (compareBytes(behindPrefix(middle), rest) < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

PageNumber IndexPage::child(std::size_t index) const {
    if (index >= size()) {
        if (tail_ != kNoPage) return tail_;
        if (ends_.empty()) throwDamaged(number_, "an index page has no pages below it");
        index = size() - 1;
    }
    return PageNumber{loadBigEndian(stored(index).last(layout::kChildSize))};
}

}  // namespace jet
