// One page of an index tree.
//
// Page layout (type 3 intermediate, 4 leaf):
//
//   offset  size  meaning
//   2       2     free bytes of the entry area
//   4       4     page of the table's definition
//   12      4     previous page of the level, 0 = none
//   16      4     next page of the level, 0 = none
//   20      4     intermediate: child page behind the last entry
//   24      2     prefix length
//   26      1     level, 0 = leaf
//   27      453   bitmap: bit k set = an entry ends at offset k of the entry area
//   480     3616  entries
//
// A leaf's entry is a key, the row's page (3 bytes, big-endian) and its slot. An intermediate page
// repeats the last entry of each child and adds the child's page (4 bytes, big-endian); its last
// child has no entry. The first entry stands whole; all others leave out the prefix, the first
// bytes that they share with it. The child's page is no part of what is shared or compared.
#pragma once

#include "engine/jet/format/types.h"

#include <compare>
#include <cstddef>
#include <vector>

namespace jet {

/// A key as it stands in the tree, to be compared byte by byte.
using Key = std::vector<std::uint8_t>;

class IndexPage {
public:
    /// Bytes of an entry behind the key.
    static constexpr std::size_t kRowIdBytes = 4;

    /// A leaf without entries.
    IndexPage() = default;

    /// Takes the page apart and checks all of it: kind, owner, bitmap, prefix, strictly ascending
    /// entries. `page` must stay alive. Throws Error{Damaged}.
    IndexPage(Bytes page, PageNumber number, PageNumber owner);

    bool isLeaf() const { return leaf_; }
    PageNumber number() const { return number_; }
    PageNumber next() const { return next_; }

    std::size_t size() const { return ends_.size(); }

    /// Replaces `entry` by the whole entry: key and row id. Requires: index < size().
    void read(std::size_t index, Key& entry) const;

    /// The first entry that is not less than `key`; size() if all are.
    std::size_t lowerBound(Bytes key) const;

    /// The page below entry `index`, or behind the last entry if there is no such entry.
    /// Requires: an intermediate page. Throws Error{Damaged} if it has no child at all.
    PageNumber child(std::size_t index) const;

private:
    void readBitmap(Bytes bitmap);
    void checkEntries() const;
    std::size_t childBytes() const { return leaf_ ? 0 : 4; }
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
