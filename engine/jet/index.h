// Index trees: traversal in key order, and searching for a key.
//
//   jet::IndexCursor cursor{table->pageReader(), definition, physicalIndex};
//   for (cursor.seek(key); cursor.valid(); cursor.next()) use(cursor.key(), cursor.rowId());
//
// A cursor belongs to one thread, and the database must stay open as long as it is used. Keys are
// made by engine/jet/index_key.h.
#pragma once

#include "engine/jet/index_page.h"
#include "engine/jet/page_cache.h"
#include "engine/jet/table_definition.h"

#include <utility>

namespace jet {

/// Walks the entries of one tree in key order. Every member throws Error{Damaged} where the tree
/// contradicts itself, and the cursor then is invalid; it ends in every tree.
class IndexCursor {
public:
    IndexCursor(PageReader pages, const TableDefinition& definition, const PhysicalIndex& index)
        : pages_{std::move(pages)}, owner_{definition.page}, root_{index.root} {}

    /// Moves to the first entry.
    void first() { seek({}); }

    /// Moves to the first entry whose key is not less than `key`. A key of only the first columns
    /// finds the first entry that begins with it.
    void seek(Bytes key);

    /// Requires: valid().
    void next();

    /// Whether the cursor is on an entry.
    bool valid() const { return position_ < leaf_.size(); }

    /// Requires: valid(). The key's bytes are valid until the cursor moves.
    Bytes key() const { return keyOf(entry_); }
    RowId rowId() const { return rowOf(entry_); }

private:
    IndexPage load(PageNumber number);
    void settle();
    [[noreturn]] void throwOutOfOrder();

    PageReader pages_;
    PageNumber owner_;
    PageNumber root_;
    IndexPage leaf_;  ///< the page the cursor is on, held by pages_
    std::size_t position_ = 0;
    Key entry_;                     ///< the entry at position_, with its prefix
    std::uint32_t leavesSeen_ = 0;  ///< since the last seek
};

}  // namespace jet
