// One page of an index tree, decoded into entries that can be changed.
//
//   jet::IndexNode node{*pager.page(number), number, owner};
//   node.entries.insert(node.entries.begin() + at, {entry, kNoPage});
//   if (node.fits()) node.writeTo(*pager.edit(number), owner);
//
// The layout is in format/index_page.h. One thread, that of the statement.
#pragma once

#include "engine/jet/index_page.h"
#include "engine/jet/page_cache.h"

#include <vector>

namespace jet {

struct IndexNode {
    struct Entry {
        Key bytes;  ///< key and row id
        PageNumber child = kNoPage;
    };

    /// An empty leaf.
    IndexNode() = default;

    /// Throws Error{Damaged}.
    IndexNode(const Page& page, PageNumber number, PageNumber owner);

    bool isLeaf() const { return level == 0; }

    /// Bytes of an entry that are not in Entry::bytes.
    std::size_t childSize() const { return isLeaf() ? 0 : format::index_page::kChildSize; }

    /// The first entry that is not less than `entry`.
    std::size_t lowerBound(Bytes entry) const;

    /// The page below entry `index`, or the tail if there is no such entry.
    PageNumber child(std::size_t index) const {
        return index < entries.size() ? entries[index].child : tail;
    }

    /// Bytes that the entries take on a page.
    std::size_t size() const { return size(0, entries.size()); }
    bool fits() const { return size() <= format::index_page::kCapacity; }

    /// Whether the entries from `begin` to before `end` would fit onto a page.
    bool fits(std::size_t begin, std::size_t end) const {
        return size(begin, end) <= format::index_page::kCapacity;
    }

    /// Throws Error{Damaged} if it does not fit: a page above the leaves may have been packed by
    /// another engine.
    void writeTo(Page& page, PageNumber owner) const;

    PageNumber number = kNoPage;
    PageNumber previous = kNoPage;  ///< on its level
    PageNumber next = kNoPage;
    PageNumber tail = kNoPage;  ///< of an intermediate page: the child behind the last entry
    unsigned level = 0;
    std::vector<Entry> entries;

private:
    std::size_t plainSize(std::size_t begin, std::size_t end) const;
    std::size_t prefix(std::size_t begin, std::size_t end) const;
    std::size_t size(std::size_t begin, std::size_t end) const;
};

/// The length of the common prefix.
std::size_t commonPrefix(Bytes left, Bytes right);

/// Replaces `out` by an entry as stored in a leaf: the key, the page (big-endian), the slot.
void makeEntry(Bytes key, RowId row, Key& out);

}  // namespace jet
