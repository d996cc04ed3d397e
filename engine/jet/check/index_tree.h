// Checks of an index as a tree: each page, and how the pages relate to each other.
//
//   IndexTreeCheck tree{context, definition, number, entries, name};
//   if (tree.run()) entries.finish();
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/index_entries.h"

namespace jet::checking {

class IndexTreeCheck {
public:
    /// `number` is the place of the index in the definition. All must stay alive.
    IndexTreeCheck(Context& context, const TableDefinition& definition, std::size_t number,
                   EntryCheck& entries, const std::string& name);

    /// Walks the tree from its root and compares its pages with its map; returns whether all
    /// entries could be read.
    bool run();

private:
    /// What the parent says about a page.
    struct Position {
        int depth = 1;
        std::optional<unsigned> level;  ///< above the leaves; the root's own page says it
        PageNumber previous = kNoPage;  ///< on an intermediate level: under the same parent
        PageNumber next = kNoPage;
    };

    bool visit(PageNumber number, const Position& position);
    bool visitLeaf(Bytes bytes, const IndexPage& page);
    bool visitChildren(Bytes bytes, const IndexPage& page, const Position& position);
    void checkLayout(Bytes bytes, PageNumber number, const Position& position);
    void checkMap();
    void fail(PageNumber page, const std::string& message);

    Context& context_;
    const TableDefinition& definition_;
    const PhysicalIndex& index_;
    Owner owner_;
    EntryCheck& entries_;
    const std::string& name_;
    PageReader pages_;
    std::vector<PageNumber> visited_;
    PageNumber lastLeaf_ = kNoPage;
    PageNumber expectedLeaf_ = kNoPage;  ///< that the last leaf names as the next one
    int leafDepth_ = 0;
    Key lastEntry_;
    bool complete_ = true;
};

/// The name of the index, for findings.
std::string indexName(const TableDefinition& definition, std::size_t number);

}  // namespace jet::checking
