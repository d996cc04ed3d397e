#include "engine/jet/write/index_builder.h"

#include <algorithm>
#include <utility>

namespace jet {

void IndexBuilder::add(Bytes key, RowId row) {
    makeEntry(key, row, entry_);
    if (!takes(entry_.size()) && prefix_ == 0) compress();
    if (!takes(entry_.size())) closeLeaf(false);
    used_ += entry_.size() - (leaf_.entries.empty() ? 0 : prefix_);
    leaf_.entries.push_back({entry_, kNoPage});
}

/// Whether the leaf has room for the entry, which must share what the others share.
bool IndexBuilder::takes(std::size_t entrySize) const {
    if (leaf_.entries.empty()) return true;
    if (used_ + entrySize - std::min(prefix_, entrySize) > format::index_page::kCapacity)
        return false;
    return commonPrefix(leaf_.entries.front().bytes, entry_) >= prefix_;
}

/// A leaf that is full leaves out what its entries have in common.
void IndexBuilder::compress() {
    if (leaf_.entries.size() < 2) return;
    prefix_ = commonPrefix(leaf_.entries.front().bytes, leaf_.entries.back().bytes);
    used_ -= prefix_ * (leaf_.entries.size() - 1);
}

void IndexBuilder::closeLeaf(bool last) {
    if (levels_.empty()) levels_.emplace_back();
    Level& leaves = levels_.front();
    if (leaf_.number == kNoPage) leaf_.number = last ? root_ : allocate();
    IndexNode following;
    if (!last) {
        following.number = allocate();
        following.previous = leaf_.number;
        leaf_.next = following.number;
    }
    leaf_.writeTo(*pager_.edit(leaf_.number), owner_);
    leaves.push_back(
        {leaf_.number, leaf_.entries.empty() ? Key{} : std::move(leaf_.entries.back().bytes)});
    leaf_ = std::move(following);
    used_ = 0;
    prefix_ = 0;
}

void IndexBuilder::finish() {
    closeLeaf(true);
    while (levels_.back().size() > 1) levels_.push_back(group(levels_.back()));
    for (std::size_t level = levels_.size() - 1; level > 0; --level) writeParents(level);
}

PageNumber IndexBuilder::allocate() {
    const PageNumber number = allocator_.allocate();
    map_.insert(number);
    return number;
}

/// Gives the children parents, each as many as have room. The last child of a parent has no entry
/// and takes no room.
IndexBuilder::Level IndexBuilder::group(const Level& children) {
    Level parents;
    std::size_t used = 0;
    for (std::size_t i = 0; i < children.size(); ++i) {
        const std::size_t entry =
            i == 0 ? 0 : children[i - 1].last.size() + format::index_page::kChildSize;
        if (i == 0 || used + entry > format::index_page::kCapacity) {
            parents.emplace_back().first = i;
            used = 0;
        } else {
            used += entry;
        }
        ++parents.back().count;
        parents.back().last = children[i].last;
    }
    for (Child& parent : parents) parent.number = parents.size() == 1 ? root_ : allocate();
    return parents;
}

/// Pages above the leaves are linked among the children of one parent only.
void IndexBuilder::writeParents(std::size_t level) {
    const Level& parents = levels_[level];
    const Level& children = levels_[level - 1];
    const auto sameGrandparent = [&](std::size_t left, std::size_t right) {
        if (level + 1 >= levels_.size()) return false;
        return std::ranges::any_of(levels_[level + 1], [&](const Child& above) {
            return left >= above.first && right < above.first + above.count;
        });
    };
    for (std::size_t i = 0; i < parents.size(); ++i) {
        IndexNode node;
        node.number = parents[i].number;
        node.level = static_cast<unsigned>(level);
        if (i > 0 && sameGrandparent(i - 1, i)) node.previous = parents[i - 1].number;
        if (i + 1 < parents.size() && sameGrandparent(i, i + 1)) node.next = parents[i + 1].number;
        const std::size_t last = parents[i].first + parents[i].count - 1;
        for (std::size_t c = parents[i].first; c < last; ++c) {
            node.entries.push_back({children[c].last, children[c].number});
        }
        node.tail = children[last].number;
        node.writeTo(*pager_.edit(node.number), owner_);
    }
}

}  // namespace jet
