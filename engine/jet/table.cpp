#include "engine/jet/table.h"

#include "engine/jet/database.h"
#include "engine/jet/text.h"
#include "engine/jet/usage_map.h"

#include <algorithm>
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

std::vector<PageNumber> Table::dataPages() const {
    database_->cache().clear();
    PageReader reader = pageReader();
    return readUsageMap(reader, definition_.ownedMap);
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
        if (page.owner() != raw(definition_.page) || !slot || slot->moved) return false;
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
      ownPages_{table.dataPages()},
      list_{ownPages_},
      values_{table.pageReader()},
      moved_{table.pageReader()},
      losses_{table.definition().losses} {}

TableScan::TableScan(const Table& table, std::span<const PageNumber> pages)
    : table_{table}, list_{pages}, values_{table.pageReader()}, moved_{table.pageReader()} {}

bool TableScan::next() {
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

/// At the end of the rows. Returns false.
bool TableScan::finish() {
    if (std::exchange(wholeTable_, false)) table_.compareRowCount(rowCount_, losses_);
    return false;
}

void TableScan::lose(Loss loss) {
    table_.database().noteLoss(loss);
    losses_.add(std::move(loss));
}

bool TableScan::nextPage() {
    while (listIndex_ < list_.size()) {
        if (listIndex_ >= blockEnd_ && !loadBlock()) continue;
        const PageNumber number = list_[listIndex_++];
        slot_ = 0;
        page_.reset();
        try {
            const DataPage page{values_.page(number), number};
            if (page.owner() != raw(table_.definition().page)) {
                throwDamaged(number, "a page of the table belongs to something else");
            }
            page_ = page;
            return true;
        } catch (const Error& error) {
            if (error.fault() != Fault::Damaged) throw;
            lose({Loss::Kind::Pages, number, Loss::kNoSlot, error.what()});
        }
    }
    page_.reset();
    return false;
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
