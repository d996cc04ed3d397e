// The rows of a client cursor: the location of each row in the file, and its small columns. Long
// texts and rare types stay in the file.
//
//   std::vector<jet::LostField> lost;
//   store.append(scan.rowId(), scan.record(), lost);
//   store.publish();
//   for (std::uint32_t row = 0; row < store.count(); ++row) use(store.rowId(row));
//
// One thread writes; any thread may read the rows below count().
//
// Rows are collected in groups of 1,024. A group is packed when it is full, or earlier if its first
// rows are published before; a packed group never changes, but is replaced by a fuller one. So
// readers need no locks.
#pragma once

#include "engine/ado/dictionary.h"
#include "engine/ado/packed_column.h"
#include "engine/ado/stable_array.h"
#include "engine/jet/table.h"

#include <atomic>
#include <memory>
#include <vector>

namespace ado {

class RowStore {
public:
    static constexpr std::uint32_t kGroupRows = 1024;

    /// `expectedRows` may be wrong; it limits the size of the dictionaries.
    RowStore(std::vector<const jet::Column*> columns, std::uint64_t expectedRows);
    ~RowStore();

    // ---- The writing thread ----

    /// Adds a row; readers see it after publish() or when its group is full. Fields that cannot be
    /// read are added to `lost`, and Null in the store.
    void append(jet::RowId id, const jet::Record& record, std::vector<jet::LostField>& lost);

    /// Makes every row added visible to readers.
    void publish();

    /// Publishes once the rows in the group have doubled, so that publishing often is cheap.
    void publishIfDoubled();

    /// Publishes the last rows and frees what only writing needs.
    void finish();

    std::uint32_t appended() const { return groupStart_ + staged_; }

    // ---- Any thread ----

    std::uint32_t count() const { return count_.load(std::memory_order_acquire); }

    // Requires of all below: row < a count() that the calling thread has seen.

    jet::RowId rowId(std::uint32_t row) const {
        const RowGroup& group = groupOf(row);
        return jet::RowId::fromPacked(
            static_cast<std::uint32_t>(group.columns[0].whole(row % kGroupRows)));
    }

    /// The packed row ids of the row's group; the row is at index row % kGroupRows.
    const PackedColumn& packedIds(std::uint32_t row) const { return groupOf(row).columns[0]; }

    /// The packed column of the row's group; the row is at index row % kGroupRows. Unit None if the
    /// values of these rows stay in the file.
    const PackedColumn& packed(std::uint32_t row, std::size_t column) const {
        return groupOf(row).columns[column + 1];
    }

    /// Of a text column: its whole numbers are codes of this dictionary. Null for other columns.
    const Dictionary* dictionary(std::size_t column) const {
        return columns_[column].dictionary.get();
    }

    /// Whether a Null in the store may stand for a value that could not be read.
    bool hasUnreadable(std::size_t column) const {
        return columns_[column].unreadable.load(std::memory_order_acquire);
    }

    const jet::Column& stored(std::size_t column) const { return *columns_[column].stored; }
    std::size_t columnCount() const { return columns_.size(); }

    /// Memory in use. Requires: writing has ended.
    std::size_t byteCount() const;

private:
    /// Column 0 is the row ids, column n + 1 the store's column n.
    struct RowGroup {
        std::vector<PackedColumn> columns;
        std::unique_ptr<std::uint8_t[]> bytes;
        std::size_t byteCount = 0;
    };

    /// Values of the group that is being filled.
    struct Staged {
        std::vector<std::int64_t> values;
        std::vector<std::uint8_t> nulls;
    };

    struct StoreColumn {
        const jet::Column* stored = nullptr;
        Scale scale = Scale::Whole;
        std::atomic<bool> unreadable = false;
        bool kept = false;  ///< read and written by the writing thread only
        std::unique_ptr<Dictionary> dictionary;
        Staged staged;
    };

    const RowGroup& groupOf(std::uint32_t row) const {
        return *groups_[row / kGroupRows].load(std::memory_order_acquire);
    }

    void stage(StoreColumn& column, const jet::Record& record);
    void stageText(StoreColumn& column, jet::Bytes stored);
    std::unique_ptr<RowGroup> packGroup();

    std::vector<StoreColumn> columns_;
    Staged rowIds_;
    const std::uint64_t expectedRows_;
    std::uint32_t groupStart_ = 0;  ///< rows in the full groups
    std::uint32_t staged_ = 0;      ///< rows in the group that is being filled

    StableArray<std::atomic<const RowGroup*>> groups_;
    std::vector<std::unique_ptr<const RowGroup>> owned_;  ///< also those replaced by fuller ones
    std::atomic<std::uint32_t> count_{0};
};

}  // namespace ado
