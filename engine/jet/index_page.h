// One page of an index tree. The layout is in format/index_page.h.
//
//   const jet::IndexPage node{pages.page(number), number, definition.page};
//   if (!node.isLeaf()) use(node.child(node.lowerBound(key)));
//
// A view that is valid as long as the bytes of the page; any thread may read it.
#pragma once

#include "engine/jet/format/index_page.h"
#include "engine/jet/format/types.h"

#include <compare>
#include <cstddef>
#include <vector>

namespace jet {

/// A key as stored in the tree, to be compared byte by byte.
using Key = std::vector<std::uint8_t>;

/// An entry of a leaf, or that of a page above without its child, taken apart.
/// Requires: at least a row id.
Bytes keyOf(Bytes entry);
RowId rowOf(Bytes entry);

class IndexPage {
public:
    /// A leaf without entries.
    IndexPage() = default;

    /// Decodes the page and checks type, owner, bitmap, prefix and strictly ascending entries.
    /// `page` must stay alive. Throws Error{Damaged}.
    IndexPage(Bytes page, PageNumber number, PageNumber owner);

    bool isLeaf() const { return leaf_; }
    PageNumber number() const { return number_; }
    PageNumber next() const { return next_; }

    std::size_t size() const { return ends_.size(); }

    /// Sets `entry` to the entry with its prefix: key and row id. Requires: index < size().
    void read(std::size_t index, Key& entry) const;

    /// The first entry that is not less than `key`; size() if all are.
    std::size_t lowerBound(Bytes key) const;

    /// The page below entry `index`, or behind the last entry if there is no such entry.
    /// Requires: an intermediate page. Throws Error{Damaged} if it has no child at all.
    PageNumber child(std::size_t index) const;

private:
    void readBitmap(Bytes bitmap);
    void checkEntries() const;
    std::size_t childBytes() const { return leaf_ ? 0 : format::index_page::kChildSize; }
    Bytes stored(std::size_t index) const;
    Bytes behindPrefix(std::size_t index) const;

    Bytes area_;
    std::vector<std::uint16_t> ends_;  ///< ascending offsets into area_, one an entry
    std::size_t prefix_ = 0;           ///< not longer than the first entry
    PageNumber number_ = kNoPage;
    PageNumber next_ = kNoPage;
    PageNumber tail_ = kNoPage;
    bool leaf_ = true;
};

}  // namespace jet
