#include "engine/jet/index.h"

#include "engine/jet/error.h"

#include <utility>

namespace jet {
IndexPage IndexCursor::load(PageNumber number) {
    return IndexPage{pages_.page(number), number, owner_};
}

void IndexCursor::seek(Bytes key) {
    const Key sought{key.begin(), key.end()};  // the caller may have it from this cursor
    leaf_ = {};
    entry_.clear();
    leavesSeen_ = 0;
    IndexPage page = load(root_);
    for (int depth = 1; !page.isLeaf(); ++depth) {
        if (depth == format::index_page::kMaxDepth)
            throwDamaged(page.number(), "an index is deeper than can be");
        page = load(page.child(page.lowerBound(sought)));
    }
    position_ = page.lowerBound(sought);
    leaf_ = std::move(page);
    settle();
    if (valid() && entry_ < sought) throwOutOfOrder();
}

void IndexCursor::next() {
    ++position_;
    settle();
}

/// Takes up the entry at position_, on one of the next leaves if this one has no more.
/// entry_ still holds the entry that the cursor comes from.
void IndexCursor::settle() {
    const bool sameLeaf = valid();
    while (!valid()) {
        const PageNumber link = leaf_.next();
        leaf_ = {};
        position_ = 0;
        if (link == kNoPage) return;
        if (++leavesSeen_ >= pages_.storage().pageCount()) {
            throwDamaged(link, "the pages of an index form a circle");
        }
        IndexPage page = load(link);
        if (!page.isLeaf()) throwDamaged(link, "a leaf of an index is followed by no leaf");
        leaf_ = std::move(page);
    }
    if (sameLeaf) return leaf_.read(position_, entry_);
    const Key before = std::exchange(entry_, {});
    leaf_.read(position_, entry_);
    if (entry_ <= before) throwOutOfOrder();
}

void IndexCursor::throwOutOfOrder() {
    const PageNumber number = leaf_.number();
    leaf_ = {};
    throwDamaged(number, "the pages of an index are out of order");
}

}  // namespace jet
