// Adds and removes entries of one index tree, or rebuilds the tree.
//
//   jet::IndexWriter index{pager, allocator, definition, 0};
//   index.insert(key, row);
//   index.finish();
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/table_definition.h"
#include "engine/jet/write/index_node.h"
#include "engine/jet/write/key_sorter.h"
#include "engine/jet/write/page_allocator.h"
#include "engine/jet/write/usage_map_writer.h"

#include <optional>

namespace jet {

class IndexWriter {
public:
    /// Two entries must fit on a page.
    static constexpr std::size_t kMaxKeyBytes = 1800;

    /// Throws Error{Damaged}.
    IndexWriter(Pager& pager, PageAllocator& allocator, const TableDefinition& definition,
                std::size_t physical);

    const PhysicalIndex& index() const { return index_; }

    /// Throws Error: DuplicateKey if the index is unique and contains the key (keys of only Nulls
    /// may repeat), ValueTooLarge for a key that is too long, Damaged, FileFull; as Pager::edit.
    void insert(const Key& key, RowId row);

    /// Throws Error{Damaged} if there is no such entry; as Pager::edit.
    void remove(const Key& key, RowId row);

    /// Rebuilds the tree from the sorter's keys. Throws as insert.
    void rebuild(KeySorter& keys);

    /// Writes the map of the tree's pages.
    void finish() { map_.save(allocator_); }

    /// The statistics of the index: see PhysicalIndex.
    std::uint32_t entriesAtBuild() const { return index_.entriesAtBuild; }
    std::uint32_t distinctKeys() const { return index_.distinctKeys; }

private:
    /// What a change in a page means for its parent.
    struct Outcome {
        struct Split {
            PageNumber lower = kNoPage;  ///< a new page with the lower part of the entries
            Key last;                    ///< the last entry at or below it
        };
        std::optional<Split> split;
        std::optional<Key> last;  ///< the last entry at or below the page, if it is another now
        bool empty = false;       ///< the page is gone
    };

    IndexNode load(PageNumber number) const;
    void write(const IndexNode& node);
    Outcome insertBelow(PageNumber number, const Key& entry, int depth);
    Outcome removeBelow(PageNumber number, const Key& entry, int depth);
    void takeUp(IndexNode& node, std::size_t at, Outcome below, Outcome& outcome);
    void store(IndexNode& node, bool appended, Outcome& outcome);
    std::size_t splitPoint(const IndexNode& node, bool appended) const;
    Outcome::Split split(IndexNode& node, bool appended);
    void unlink(const IndexNode& node);
    void growRoot(const Outcome::Split& split);
    bool holds(const Key& key) const;
    void requireShort(const Key& key) const;
    [[noreturn]] void throwDuplicate() const;

    Pager& pager_;
    PageAllocator& allocator_;
    PageNumber owner_;
    PhysicalIndex index_;
    UsageMapWriter map_;
};

/// Whether a key of this index consists of Nulls only.
bool isNullKey(const Key& key, const PhysicalIndex& index);

}  // namespace jet
