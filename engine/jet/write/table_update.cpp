// Changes of many rows at once: each page is laid out once, and only those rows leave it that have
// to.
#include "engine/jet/bytes.h"
#include "engine/jet/database.h"
#include "engine/jet/write/table_writer.h"

#include <algorithm>
#include <numeric>

namespace jet {
namespace {

/// More changed keys than this are not worth changing one by one.
constexpr std::size_t kMaxKeyChanges = 1000;

}  // namespace

std::uint64_t TableWriter::updateRows(const RowChange& change) {
    // A record that moves must not take the room of rows that are still to grow.
    newPagesOnly_ = true;
    target_ = kNoPage;
    std::uint64_t changed = 0;
    for (const PageNumber number : owned_.pages()) changed += updatePage(number, change);
    newPagesOnly_ = false;
    changeKeys();
    return changed;
}

std::uint64_t TableWriter::updatePage(PageNumber number, const RowChange& change) {
    const PagePtr source = context_.pager.page(number);
    if (DataPage{*source, number}.owner() != raw(definition_.page)) {
        throwDamaged(number, "a page of the table belongs to something else");
    }
    PageLayout layout{*source, number};
    std::vector<RowId> movedRows;
    std::uint64_t changed = 0;
    pageRecords_.clear();
    for (unsigned slot = 0; slot < layout.rows.size(); ++slot) {
        PageLayout::Row& row = layout.rows[slot];
        const RowId id{number, slot};
        if (row.flags == format::data_page::kPointer) movedRows.push_back(id);
        if (row.flags != 0) continue;
        const Record record{row.bytes, number};
        if (!changeRow(id, record, change)) continue;
        row.bytes = pageRecords_.emplace_back(record_);
        ++changed;
    }
    if (changed != 0) {
        if (!layout.fits()) moveOut(layout);
        if (!layout.fits()) throwDamaged(number, "a page has no room for its row pointers");
        const PageEdit page = context_.pager.edit(number);
        layout.writeTo(*page);
        noteRoom(number, *page);
    }
    return changed + updateMovedRows(movedRows, change);
}

/// Makes the changed record of one row, in record_; false if it stays as it is.
bool TableWriter::changeRow(RowId id, const Record& record, const RowChange& change) {
    Assignments changes;
    PageReader pages = freshReader();
    if (!change(record, pages, changes)) return false;
    takeFields(record);
    noteKeys(changes, id, false);
    applyChanges(changes);
    noteKeys(changes, id, true);
    encodeRecord();
    return true;
}

/// The longest records leave: so the fewest have to.
void TableWriter::moveOut(PageLayout& layout) {
    std::vector<std::size_t> bySize(layout.rows.size());
    std::iota(bySize.begin(), bySize.end(), std::size_t{0});
    std::ranges::stable_sort(bySize, [&](std::size_t left, std::size_t right) {
        return layout.rows[left].bytes.size() > layout.rows[right].bytes.size();
    });
    for (const std::size_t slot : bySize) {
        if (layout.fits()) return;
        PageLayout::Row& row = layout.rows[slot];
        if (row.flags != 0) continue;
        const RowId target = place(row.bytes, format::data_page::kMoved);
        auto& stored = pageRecords_.emplace_back(format::data_page::kTarget.end());
        store(stored, format::data_page::kTarget, target);
        row = {format::data_page::kPointer, stored};
    }
}

/// Rows whose records had moved before.
std::uint64_t TableWriter::updateMovedRows(std::span<const RowId> rows, const RowChange& change) {
    std::uint64_t changed = 0;
    for (const RowId id : rows) {
        const Place place = locate(id);
        const PagePtr page = context_.pager.page(place.record.page());
        const auto slot = DataPage{*page, place.record.page()}.slot(place.record.slot());
        const Record record{slot->bytes, place.record.page()};
        if (!changeRow(id, record, change)) continue;
        replaceRecord(place, record_);
        ++changed;
    }
    return changed;
}

/// Keeps the key that the row in hand has before and after it is changed.
void TableWriter::noteKeys(std::span<const Assignment> changes, RowId row, bool after) {
    for (Index& index : indexes_) {
        if (index.rebuild || !affects(index, changes)) continue;
        if (!after) {
            index.changes.push_back({.before = keyOf(index), .after = {}, .row = row});
            continue;
        }
        KeyChange& noted = index.changes.back();
        noted.after = keyOf(index);
        if (noted.before == noted.after) index.changes.pop_back();
        index.rebuild = index.changes.size() > kMaxKeyChanges;
    }
}

/// First all old keys go, then the new ones come: on the way from one to the other two rows may
/// have the same key.
void TableWriter::changeKeys() {
    for (Index& index : indexes_) {
        if (index.rebuild) {
            rebuildIndex(index);
        } else {
            for (const KeyChange& noted : index.changes) {
                if (noted.before) index.writer.remove(*noted.before, noted.row);
            }
            for (const KeyChange& noted : index.changes) {
                if (noted.after) index.writer.insert(*noted.after, noted.row);
            }
        }
        index.changes.clear();
        index.rebuild = false;
    }
}

void TableWriter::rebuildIndex(Index& index) {
    const Table table{context_.database.shared_from_this(), definition_};
    const std::vector<PageNumber> pages = owned_.pages();
    TableScan scan{table, pages};
    KeySorter keys;
    index.keys->collect(scan, keys);
    index.writer.rebuild(keys);
}

}  // namespace jet
