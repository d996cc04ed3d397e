// One index of a table: the entries its rows give, and the tree made of them in the end.
#pragma once

#include "tests/support/cell.h"
#include "tests/support/index_tree.h"
#include "tests/support/table_layout.h"

#include <string>
#include <unordered_map>

namespace fixture {

struct IndexColumnSpec {
    std::u16string name;
    bool ascending = true;
};

struct IndexSpec {
    std::u16string name;
    std::vector<IndexColumnSpec> columns;
    bool unique = false;
    bool ignoreNulls = false;
    bool required = false;
    bool primary = false;  ///< goes with unique and, in tables of users, with required
    std::size_t entriesPerPage = std::numeric_limits<std::size_t>::max();  ///< see IndexTreeBuilder
};

class TableIndex {
public:
    /// Allocates the root.
    TableIndex(IndexSpec spec, PageFile& file, jet::PageNumber definition);

    /// Adds the entry of a row whose fields stand in the order of `layout`.
    void add(const TableLayout& layout, const Row& row, jet::RowId id);
    void remove(jet::RowId id);

    void build();

    const IndexSpec& spec() const { return spec_; }
    jet::PageNumber root() const { return root_; }
    std::size_t entryCount() const { return entries_.size(); }
    std::size_t distinctKeys() const { return ids_.size(); }

    /// Complete after build(): the pages with the root first, and the levels.
    const std::vector<jet::PageNumber>& pages() const { return pages_; }
    std::size_t depth() const { return depth_; }

private:
    // Keys repeat in millions of rows, so an entry is the number of a key and a row.
    struct Entry {
        std::uint32_t key;
        jet::RowId row;
    };

    std::uint32_t intern(const ByteVector& key);
    std::vector<std::uint32_t> rankKeys() const;

    IndexSpec spec_;
    PageFile& file_;
    jet::PageNumber definition_;
    jet::PageNumber root_;
    std::unordered_map<std::string, std::uint32_t> ids_;
    std::vector<const std::string*> keys_;  ///< by id; they live in ids_
    std::vector<Entry> entries_;
    std::vector<jet::PageNumber> pages_;
    std::size_t depth_ = 1;
    ByteVector key_;       ///< of the row being added
    std::string keyText_;  ///< the same, to look it up
};

}  // namespace fixture
