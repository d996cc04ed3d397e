#include "engine/jet/table.h"

#include "engine/jet/database.h"
#include "engine/jet/definition_search.h"
#include "engine/jet/text.h"
#include "engine/jet/usage_map.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace jet {
namespace {

/// 256 KiB at a time: large enough that a disk or a share streams, small enough for the
/// processor's caches.
constexpr std::size_t kBlockPages = 64;

/// Other pages between those of the table are read along while they are not more than three in
/// four: one call for the block is cheaper than a call a page, and the table's long values are
/// mostly between its rows.
constexpr std::size_t kSparsest = 4;

}  // namespace

std::vector<PageNumber> Table::dataPages(Losses& losses) const {
    database_->cache().clear();
    PageReader reader = pageReader();
    try {
        if (definition_.ownedMap.page() == kNoPage && definition_.rowCount > 0) {
            throwDamaged(definition_.page, "the list of a table's pages is missing");
        }
        return readUsageMap(reader, definition_.ownedMap);
    } catch (const Error& error) {
        if (!isDamage(error)) throw;
        Loss loss{Loss::Kind::Definitions, definition_.page, Loss::kNoSlot, error.what()};
        database_->noteLoss(loss);
        losses.add(std::move(loss));
        return findDataPages(reader, definition_.page);
    }
}

std::vector<RowId> Table::recordsWithoutPointer(std::span<const PageNumber> list) const {
    PageReader pages = pageReader();
    std::unordered_set<std::uint32_t> targets;
    std::vector<RowId> moved;
    for (const PageNumber number : list) {
        try {
            const DataPage page{pages.page(number), number};
            if (page.owner() != raw(definition_.page)) continue;
            for (unsigned i = 0; i < page.slotCount(); ++i) {
                const auto slot = page.slot(i);
                if (!slot || slot->deleted) continue;
                if (slot->moved) moved.push_back({number, i});
                const bool leads =
                    slot->pointer && slot->bytes.size() >= format::data_page::kTarget.end();
                if (leads) targets.insert(load(slot->bytes, format::data_page::kTarget).packed());
            }
        } catch (const Error& error) {
            if (!isDamage(error)) throw;
        }
    }
    std::erase_if(moved, [&](RowId row) { return targets.contains(row.packed()); });
    return moved;
}

void Table::compareRowCount(std::uint64_t found, Losses& losses) const {
    if (found >= definition_.rowCount || database_->storage().isOpenElsewhere()) return;
    // Rows may have been deleted since the definition was read.
    Page page;
    database_->storage().readPages(definition_.page, page);
    const std::uint32_t counted = load(page, format::table_definition::kRowCount);
    if (found >= counted) return;
    Loss hint{Loss::Kind::Hints, definition_.page, Loss::kNoSlot,
              "the own count of the table " + toUtf8(definition_.name) + " is " +
                  std::to_string(counted) + ", found " + std::to_string(found)};
    database_->noteLoss(hint);
    losses.add(std::move(hint));
}

PageReader Table::pageReader() const { return {database_->storage(), database_->cache()}; }

bool Table::find(PageReader& pages, RowId id, Record& record) const {
    record = {};
    try {
        const DataPage page{pages.page(id.page()), id.page()};
        const auto slot = page.slot(id.slot());
        if (page.owner() != raw(definition_.page) || !slot || slot->deleted) return false;
        record = slot->pointer ? Record{followPointer(pages, slot->bytes, page.owner()), id.page()}
                               : Record{slot->bytes, id.page()};
        return true;
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged && error.fault() != Fault::Truncated) throw;
        return false;
    }
}

TableScan::TableScan(const Table& table)
    : table_{table},
      wholeTable_{true},
      values_{table.pageReader()},
      moved_{table.pageReader()},
      losses_{table.definition().losses} {
    ownPages_ = table.dataPages(losses_);
    list_ = ownPages_;
}

TableScan::TableScan(const Table& table, std::vector<RowId> withoutPointer)
    : table_{table},
      values_{table.pageReader()},
      moved_{table.pageReader()},
      withoutPointer_{std::move(withoutPointer)} {}

TableScan::TableScan(const Table& table, std::span<const PageNumber> pages)
    : table_{table}, list_{pages}, values_{table.pageReader()}, moved_{table.pageReader()} {}

bool TableScan::next() {
    if (values_.hasDoubts()) collectDoubts();
    for (;;) {
        while (page_ && slot_ < page_->slotCount()) {
            const bool taken = takeSlot();
            ++slot_;
            if (taken) return true;
        }
        if (!nextPage()) return finish();
    }
}

/// Makes the row in slot slot_ the current one, if there is one.
bool TableScan::takeSlot() {
    rowId_ = RowId{page_->number(), slot_};
    try {
        Bytes bytes = page_->plainRow(slot_);
        if (bytes.empty()) {
            const auto slot = page_->slot(slot_);
            if (!slot) throwDamaged(page_->number(), "a row lies outside its page");
            if (slot->moved) return false;  // deleted, or met through its pointer
            bytes =
                slot->pointer ? followPointer(moved_, slot->bytes, page_->owner()) : slot->bytes;
        }
        record_ = Record{bytes, page_->number()};
        checkColumnCounts();
        ++rowCount_;
        if (!lostColumns_.empty()) lostColumns_.clear();
        return true;
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged) throw;
        loseRow(error);
        return false;
    }
}

/// A row of the catalog is the entry of a table.
void TableScan::loseRow(const Error& error) {
    const bool ofCatalog = table_.definition().page == format::catalog::kObjects;
    const auto kind = ofCatalog ? Loss::Kind::Tables : Loss::Kind::Rows;
    lose({kind, rowId_.page(), static_cast<int>(rowId_.slot()), error.what()});
}

void TableScan::loseFields(std::vector<LostField>& fields) {
    for (LostField& field : fields) {
        if (!field.column->unreadable.empty()) continue;
        if (std::ranges::find(lostColumns_, field.column) != lostColumns_.end()) continue;
        lostColumns_.push_back(field.column);
        lose({Loss::Kind::Values, rowId_.page(), static_cast<int>(rowId_.slot()),
              std::move(field.why)});
    }
    fields.clear();
}

/// Behind the last page: the records without a pointer, if rows are missing; false at their end.
bool TableScan::finish() {
    const bool rowsAreMissing = rowCount_ < table_.definition().rowCount;
    if (wholeTable_ && rowsAreMissing && withoutPointer_.empty()) {
        withoutPointer_ = table_.recordsWithoutPointer(list_);
    }
    while (nextWithoutPointer_ < withoutPointer_.size()) {
        if (takeRecordWithoutPointer()) return true;
    }
    if (std::exchange(wholeTable_, false)) table_.compareRowCount(rowCount_, losses_);
    return false;
}

bool TableScan::takeRecordWithoutPointer() {
    rowId_ = withoutPointer_[nextWithoutPointer_++];
    try {
        const DataPage page{moved_.page(rowId_.page()), rowId_.page()};
        const auto slot = page.slot(rowId_.slot());
        if (!slot || slot->deleted) return false;
        record_ = Record{slot->bytes, rowId_.page()};
        checkColumnCounts();
    } catch (const Error& error) {
        if (!isDamage(error)) throw;
        loseRow(error);
        return false;
    }
    doubt("It is marked as moved, but nothing points to it.");
    ++rowCount_;
    if (!lostColumns_.empty()) lostColumns_.clear();
    return true;
}

/// Damage that takes nothing away from the reader, but must stop a writer.
void TableScan::doubt(const char* why) {
    Loss loss{Loss::Kind::Rows, rowId_.page(), static_cast<int>(rowId_.slot()), why};
    table_.database().noteLoss(loss);
    loss.why = "row " + std::to_string(loss.slot) + ": " + loss.why;
    loss.kind = Loss::Kind::Hints;
    loss.slot = Loss::kNoSlot;
    losses_.add(std::move(loss));
}

/// Those of the long values of the row before.
void TableScan::collectDoubts() {
    const Losses doubts = values_.takeDoubts();
    table_.database().noteDoubts(doubts);
    losses_ += doubts;
}

void TableScan::lose(Loss loss) {
    table_.database().noteLoss(loss);
    losses_.add(std::move(loss));
}

bool TableScan::nextPage() {
    while (listIndex_ < list_.size()) {
        if (listIndex_ >= blockEnd_ && !loadBlock()) continue;
        const PageNumber number = list_[listIndex_++];
        if (turnTo(number)) return true;
    }
    page_.reset();
    return false;
}

/// Makes a page the current one; false if nothing of it can be read.
bool TableScan::turnTo(PageNumber number) {
    slot_ = 0;
    page_.reset();
    try {
        const Bytes bytes = values_.page(number);
        const bool countIsWrong = !DataPage::hasPossibleSlotCount(bytes);
        const DataPage page = countIsWrong ? DataPage::withSlotsThatMakeSense(bytes, number)
                                           : DataPage{bytes, number};
        if (page.owner() != raw(table_.definition().page)) {
            throwDamaged(number, "a page of the table belongs to something else");
        }
        if (countIsWrong) {
            lose({Loss::Kind::Pages, number, Loss::kNoSlot,
                  "The number of its rows is damaged; found " + std::to_string(page.slotCount()) +
                      "."});
        }
        page_ = page;
        return true;
    } catch (const Error& error) {
        if (!isDamage(error)) throw;
        lose({Loss::Kind::Pages, number, Loss::kNoSlot, error.what()});
        return false;
    }
}

/// A record with all columns of its table has all its variable columns, too.
void TableScan::checkColumnCounts() {
    const TableDefinition& definition = table_.definition();
    if (record_.columnCount() > definition.columnsEver) {
        throwDamaged(rowId_.page(), "a record has more columns than its table");
    }
    if (record_.columnCount() < definition.columnsEver) return checkShortRecord();
    if (definition.variableColumnsEver == 0 ||
        record_.expectVariableColumns(definition.variableColumnsEver)) {
        return;
    }
    if (!variableValuesFit(definition.variableColumnsEver)) {
        throwDamaged(rowId_.page(), "the offsets of a record contradict its table");
    }
    doubt("The number of its variable columns is damaged; that of the table was used.");
}

/// Whether the values of `count` variable columns begin where the record's fixed part ends, and
/// follow each other.
bool TableScan::variableValuesFit(unsigned count) const {
    namespace layout = format::record;
    const TableDefinition& definition = table_.definition();
    const Bytes bytes = record_.bytes();
    const std::size_t mask = bytes.size() - layout::maskSize(record_.columnCount());
    if (layout::kFixedPart + layout::trailerSize(count) > mask) return false;

    std::size_t fixedEnd = layout::kFixedPart;
    for (const Column& column : definition.columns) {
        if (!column.fixed || column.type == ColumnType::Boolean) continue;
        if (!column.unreadable.empty()) continue;
        fixedEnd = std::max(fixedEnd, layout::kFixedPart + column.fixedOffset + storedSize(column));
    }
    // A column that was dropped may have been the last one, and so may one that is damaged.
    const bool allAreKnown =
        definition.columns.size() == definition.columnsEver && !definition.losses.any();
    const std::size_t first = load(bytes, layout::variableOffset(mask, 0));
    if (allAreKnown ? first != fixedEnd : first < fixedEnd) return false;
    for (unsigned i = 0; i < count; ++i) {
        if (load(bytes, layout::variableOffset(mask, i)) >
            load(bytes, layout::variableOffset(mask, i + 1))) {
            return false;
        }
    }
    return load(bytes, layout::variableOffset(mask, count)) <= mask - layout::trailerSize(count);
}

/// A record from before the last columns were added; where none was dropped, it is known how many of
/// its columns are variable.
void TableScan::checkShortRecord() {
    const TableDefinition& definition = table_.definition();
    if (definition.columns.size() != definition.columnsEver || definition.losses.any()) return;
    const auto variable = std::ranges::count_if(definition.columns, [&](const Column& column) {
        return !column.fixed && column.id < record_.columnCount();
    });
    if (variable == 0 || record_.expectVariableColumns(static_cast<unsigned>(variable))) return;
    throwDamaged(rowId_.page(), "a record contradicts its table");
}

/// Loads the longest stretch from the next page on that the table fills densely enough. Returns
/// false if that page lies behind the end of the file; it is lost then.
bool TableScan::loadBlock() {
    const std::uint32_t pageCount = values_.storage().pageCount();
    const std::uint32_t first = raw(list_[listIndex_]);
    if (first >= pageCount) {
        lose({Loss::Kind::Pages, list_[listIndex_], Loss::kNoSlot, "The file ends before it."});
        ++listIndex_;
        return false;
    }
    std::size_t end = listIndex_ + 1;
    for (std::size_t i = end; i < list_.size() && list_[i] > list_[i - 1]; ++i) {
        const std::uint32_t page = raw(list_[i]);
        if (page >= pageCount || page - first >= kBlockPages) break;
        if (page - first < kSparsest * (i + 1 - listIndex_)) end = i + 1;
    }
    values_.loadBlock(list_[listIndex_], raw(list_[end - 1]) - first + 1);
    blockEnd_ = end;
    return true;
}

}  // namespace jet
