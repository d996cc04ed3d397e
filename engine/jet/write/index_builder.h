// Builds an index tree from sorted entries, packed like the original engine's: leaves from left to
// right, then the levels above from the bottom up; the root keeps its page.
//
//   jet::IndexBuilder builder{pager, allocator, owner, root, map};
//   builder.add(key, row);                       // ascending
//   builder.finish();
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/write/index_node.h"
#include "engine/jet/write/page_allocator.h"
#include "engine/jet/write/usage_map_writer.h"

namespace jet {

class IndexBuilder {
public:
    /// All pages of the tree are added to `map`, except the root, which it contains.
    IndexBuilder(Pager& pager, PageAllocator& allocator, PageNumber owner, PageNumber root,
                 UsageMapWriter& map)
        : pager_{pager}, allocator_{allocator}, owner_{owner}, root_{root}, map_{map} {}

    /// Requires: ascending by key, then by row. Throws as Pager::edit, Error{FileFull}.
    void add(Bytes key, RowId row);

    void finish();

private:
    /// What the parent stores about a page.
    struct Child {
        PageNumber number = kNoPage;
        Key last{};             ///< the last entry at or below it
        std::size_t first = 0;  ///< its own first child, on the level below
        std::size_t count = 0;
    };
    using Level = std::vector<Child>;

    bool takes(std::size_t entrySize) const;
    void compress();
    void closeLeaf(bool last);
    PageNumber allocate();
    Level group(const Level& children);
    void writeParents(std::size_t level);

    Pager& pager_;
    PageAllocator& allocator_;
    PageNumber owner_;
    PageNumber root_;
    UsageMapWriter& map_;

    IndexNode leaf_;          ///< being filled; its number is known once a leaf is before it
    std::size_t used_ = 0;    ///< bytes of its entries as they will be stored
    std::size_t prefix_ = 0;  ///< bytes that they leave out
    Key entry_;
    std::vector<Level> levels_;  ///< leaves first
};

}  // namespace jet
