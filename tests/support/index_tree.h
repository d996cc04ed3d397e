// Index trees, built from sorted entries in one go: leaves from left to right, then the levels
// above them up to the root, whose page is given.
//
//   fixture::IndexTreeBuilder tree{file, root, definitionPage};
//   for (const auto& [key, row] : sorted) tree.add(key, row);
//   tree.finish();
#pragma once

#include "tests/support/page_file.h"

#include <limits>

namespace fixture {

class IndexTreeBuilder {
public:
    /// `entriesPerPage` bounds the entries of a page from above, which makes deep trees of few
    /// entries; at least 2.
    IndexTreeBuilder(PageFile& file, jet::PageNumber root, jet::PageNumber definition,
                     std::size_t entriesPerPage = std::numeric_limits<std::size_t>::max());

    /// Requires: entries come in ascending order of key and row.
    void add(ByteView key, jet::RowId row);

    void finish();

    /// The root first, then the others; complete after finish().
    const std::vector<jet::PageNumber>& pages() const { return pages_; }

    /// How many levels the finished tree has.
    std::size_t depth() const { return levels_.size(); }

private:
    /// A page of the tree as its parent sees it.
    struct Node {
        jet::PageNumber page = jet::kNoPage;
        ByteVector lastEntry{};
        std::size_t firstChild = 0;  ///< on the level below
        std::size_t childCount = 0;
    };

    using Level = std::vector<Node>;

    bool fitsOpenLeaf(ByteView entry);
    void compressOpenLeaf();
    void closeLeaf();
    jet::PageNumber allocate();
    Level groupUnderParents(const Level& children);
    void writeParents(std::size_t level);
    void writeParent(const Node& node, std::size_t level, jet::PageNumber previous,
                     jet::PageNumber next);

    PageFile& file_;
    jet::PageNumber root_;
    jet::PageNumber definition_;
    std::size_t entriesPerPage_;
    std::vector<jet::PageNumber> pages_;

    // The leaf being filled.
    std::vector<ByteVector> entries_;
    std::size_t used_ = 0;    ///< bytes of the entry area, with the prefix left out
    std::size_t prefix_ = 0;  ///< bytes that all entries share and only the first one has

    // The leaf before it, complete but for the number of its next page.
    PageImage closed_{};
    std::vector<Level> levels_;  ///< leaves first
};

}  // namespace fixture
