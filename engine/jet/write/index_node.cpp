#include "engine/jet/write/index_node.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/page.h"

#include <algorithm>

namespace jet {

namespace layout = format::index_page;

std::size_t commonPrefix(Bytes left, Bytes right) {
    return static_cast<std::size_t>(std::ranges::mismatch(left, right).in1 - left.begin());
}

void makeEntry(Bytes key, RowId row, Key& out) {
    out.assign(key.begin(), key.end());
    appendBigEndian(out, raw(row.page()), layout::kRowPageSize);
    appendBigEndian(out, row.slot(), layout::kRowSlotSize);
}

IndexNode::IndexNode(const Page& page, PageNumber pageNumber, PageNumber owner)
    : number{pageNumber},
      previous{load(page, layout::kPrevious)},
      next{load(page, layout::kNext)},
      tail{load(page, layout::kTail)} {
    const IndexPage source{page, pageNumber, owner};
    // Pages found in the wild may lack the level of anything above a leaf.
    level = source.isLeaf() ? 0u : std::max(1u, unsigned{load(page, layout::kLevel)});
    if (source.isLeaf()) tail = kNoPage;
    entries.resize(source.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        source.read(i, entries[i].bytes);
        if (!source.isLeaf()) entries[i].child = source.child(i);
    }
    // Every child may have an entry; the last one is the tail all the same.
    if (!source.isLeaf() && tail == kNoPage && !entries.empty()) {
        tail = entries.back().child;
        entries.pop_back();
    }
    if (!source.isLeaf() && tail == kNoPage) {
        throwDamaged(pageNumber, "an index page has no pages below it");
    }
}

std::size_t IndexNode::lowerBound(Bytes entry) const {
    const auto found =
        std::lower_bound(entries.begin(), entries.end(), entry, [](const Entry& left, Bytes right) {
            return std::lexicographical_compare(left.bytes.begin(), left.bytes.end(), right.begin(),
                                                right.end());
        });
    return static_cast<std::size_t>(found - entries.begin());
}

std::size_t IndexNode::plainSize(std::size_t begin, std::size_t end) const {
    std::size_t size = 0;
    for (std::size_t i = begin; i < end; ++i) {
        size += entries[i].bytes.size() + childSize();
    }
    return size;
}

/// Bytes that all entries but the first leave out. Only leaves are compressed, as the original
/// engine does, and only when they have to be.
std::size_t IndexNode::prefix(std::size_t begin, std::size_t end) const {
    if (!isLeaf() || plainSize(begin, end) <= layout::kCapacity) return 0;
    return commonPrefix(entries[begin].bytes, entries[end - 1].bytes);
}

std::size_t IndexNode::size(std::size_t begin, std::size_t end) const {
    const std::size_t shared = prefix(begin, end);
    const std::size_t plain = plainSize(begin, end);
    return shared == 0 ? plain : plain - shared * (end - begin - 1);
}

void IndexNode::writeTo(Page& page, PageNumber owner) const {
    if (!fits()) throwDamaged(number, "an index page is fuller than this engine can write it");
    page.fill(0);
    const auto type = isLeaf() ? format::PageType::Leaf : format::PageType::Intermediate;
    const std::size_t shared = prefix(0, entries.size());
    store(page, format::page::kType, type);
    store(page, format::page::kMark, format::page::kInUse);
    store(page, format::page::kFreeBytes, static_cast<std::uint16_t>(layout::kCapacity - size()));
    store(page, layout::kOwner, raw(owner));
    store(page, layout::kPrevious, previous);
    store(page, layout::kNext, next);
    store(page, layout::kTail, tail);
    store(page, layout::kPrefix, static_cast<std::uint16_t>(shared));
    store(page, layout::kLevel, static_cast<std::uint8_t>(level));
    std::size_t end = 0;
    Key stored;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const Bytes bytes = Bytes{entries[i].bytes}.subspan(i == 0 ? 0 : shared);
        stored.assign(bytes.begin(), bytes.end());
        appendBigEndian(stored, raw(entries[i].child), childSize());
        std::copy(stored.begin(), stored.end(),
                  page.begin() + static_cast<std::ptrdiff_t>(layout::kEntries + end));
        end += stored.size();
        std::uint8_t& bits = page[layout::kBitmap + end / 8];
        bits = static_cast<std::uint8_t>(bits | 1u << (end % 8));
    }
}

}  // namespace jet
