#include "engine/jet/check/rows.h"

#include "engine/jet/check/pages.h"

#include <algorithm>

namespace jet::checking {
namespace {

class RowCollector {
public:
    RowCollector(Context& context, const TableDefinition& definition)
        : context_{context}, owner_{definition.page}, pages_{context.reader()} {}

    LiveRows collect(const std::vector<PageNumber>& pages) {
        for (const PageNumber page : pages) {
            if (!takePageOfRows(page)) rows_.complete = false;
        }
        rows_.sound.assign(rows_.ids.size(), true);
        checkPointers();
        checkOrphans();
        return std::move(rows_);
    }

private:
    struct Pointer {
        RowId home;
        RowId target;
    };

    bool takePageOfRows(PageNumber number) {
        const auto page =
            takePage(context_, pages_, number, {OwnerKind::Rows, owner_}, {PageType::Data});
        if (!page) return false;
        const bool owned = checkPageOwner(context_, *page, number, raw(owner_));
        if (!checkDataPage(context_, *page, number) || !owned) return false;
        const DataPage rows{*page, number};
        for (unsigned i = 0; i < rows.slotCount(); ++i) {
            if (const auto slot = rows.slot(i); slot && !slot->deleted) note({number, i}, *slot);
        }
        return true;
    }

    void note(RowId row, const DataPage::Slot& slot) {
        if (slot.moved) {
            moved_.push_back(row);
            return;
        }
        rows_.ids.push_back(row);
        if (!slot.pointer) return;
        namespace layout = format::data_page;
        const bool whole = slot.bytes.size() >= layout::kTarget.end();
        pointers_.push_back({row, whole ? load(slot.bytes, layout::kTarget) : RowId{}});
    }

    void checkPointers() {
        std::sort(
            pointers_.begin(), pointers_.end(),
            [](const Pointer& left, const Pointer& right) { return left.target < right.target; });
        for (std::size_t i = 0; i < pointers_.size(); ++i) {
            const RowId target = pointers_[i].target;
            if (!std::binary_search(moved_.begin(), moved_.end(), target)) {
                fail(pointers_[i], "leads to no record that moved: ");
            } else if (i > 0 && pointers_[i - 1].target == target) {
                fail(pointers_[i], "leads to the record of another row: ");
            }
        }
    }

    void fail(const Pointer& pointer, const std::string& message) {
        rows_.sound[*rows_.find(pointer.home)] = false;
        const bool mayBeThere =
            !rows_.complete && context_.inFile(pointer.target.page()) &&
            context_.owners.of(pointer.target.page()) == Owner{OwnerKind::Rows, owner_};
        if (mayBeThere) return;  // on a page that was reported
        context_.report.error(Rule::MovedRecord, pointer.home,
                              "the row " + message + nameOf(pointer.target));
    }

    void checkOrphans() {
        if (!rows_.complete) return;
        const auto leadsThere = [&](RowId row) {
            const auto found = std::lower_bound(
                pointers_.begin(), pointers_.end(), row,
                [](const Pointer& pointer, RowId target) { return pointer.target < target; });
            return found != pointers_.end() && found->target == row;
        };
        for (const RowId row : moved_) {
            if (leadsThere(row)) continue;
            context_.report.error(Rule::OrphanRecord, row,
                                  "a record that moved here has no row that leads to it");
        }
    }

    Context& context_;
    PageNumber owner_;
    PageReader pages_;
    LiveRows rows_;
    std::vector<RowId> moved_;  ///< ascending
    std::vector<Pointer> pointers_;
};

}  // namespace

LiveRows collectRows(Context& context, const TableDefinition& definition,
                     const std::vector<PageNumber>& pages) {
    return RowCollector{context, definition}.collect(pages);
}

}  // namespace jet::checking
