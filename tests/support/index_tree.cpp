#include "tests/support/index_tree.h"

#include <algorithm>
#include <stdexcept>

namespace fixture {

namespace {

constexpr std::size_t kBitmapOffset = 27;
constexpr std::size_t kEntriesOffset = 480;
constexpr std::size_t kEntryArea = jet::kPageSize - kEntriesOffset;
constexpr std::size_t kChildBytes = 4;
constexpr std::size_t kNextPageOffset = 16;

struct Links {
    jet::PageNumber previous = jet::kNoPage;
    jet::PageNumber next = jet::kNoPage;
    jet::PageNumber tail = jet::kNoPage;
};

std::size_t commonPrefix(const ByteVector& first, const ByteVector& last) {
    const std::size_t shorter = std::min(first.size(), last.size());
    const auto end = first.begin() + static_cast<std::ptrdiff_t>(shorter);
    return static_cast<std::size_t>(std::mismatch(first.begin(), end, last.begin()).first -
                                    first.begin());
}

PageImage encodePage(jet::PageNumber definition, std::size_t level, std::size_t prefix,
                     const std::vector<ByteVector>& entries, const Links& links) {
    PageImage image{};
    image[0] = level == 0 ? 4 : 3;
    image[1] = 1;
    put(image, 4, raw(definition));
    put(image, 12, raw(links.previous));
    put(image, kNextPageOffset, raw(links.next));
    put(image, 20, raw(links.tail));
    put(image, 24, static_cast<std::uint16_t>(prefix));
    image[26] = static_cast<std::uint8_t>(level);
    std::size_t end = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const ByteView shown = ByteView{entries[i]}.subspan(i == 0 ? 0 : prefix);
        std::copy(shown.begin(), shown.end(),
                  image.begin() + static_cast<std::ptrdiff_t>(kEntriesOffset + end));
        end += shown.size();
        std::uint8_t& bits = image[kBitmapOffset + end / 8];
        bits = static_cast<std::uint8_t>(bits | (1u << (end % 8)));
    }
    put(image, 2, static_cast<std::uint16_t>(kEntryArea - end));
    return image;
}

}  // namespace

IndexTreeBuilder::IndexTreeBuilder(PageFile& file, jet::PageNumber root, jet::PageNumber definition,
                                   std::size_t entriesPerPage)
    : file_{file},
      root_{root},
      definition_{definition},
      entriesPerPage_{std::max<std::size_t>(2, entriesPerPage)},
      pages_{root},
      levels_(1) {}

void IndexTreeBuilder::add(ByteView key, jet::RowId row) {
    ByteVector entry{key.begin(), key.end()};
    appendBigEndian(entry, row.packed(), 4);
    if (entry.size() + kChildBytes > kEntryArea / 2)
        throw std::length_error{"an index key is too long"};
    if (!fitsOpenLeaf(entry)) closeLeaf();
    used_ += entry.size() - (entries_.empty() ? 0 : prefix_);
    entries_.push_back(std::move(entry));
}

void IndexTreeBuilder::finish() {
    if (levels_[0].empty()) {
        file_.write(root_, encodePage(definition_, 0, prefix_, entries_, {}));
        return;
    }
    closeLeaf();
    file_.write(levels_[0].back().page, closed_);
    while (levels_.back().size() > 1) levels_.push_back(groupUnderParents(levels_.back()));
    for (std::size_t level = 1; level < levels_.size(); ++level) writeParents(level);
}

/// A leaf is filled with whole entries first. When it is full, the bytes that they share are left
/// out, and it goes on as long as further entries share them too.
bool IndexTreeBuilder::fitsOpenLeaf(ByteView entry) {
    if (entries_.size() >= entriesPerPage_) return false;
    if (prefix_ == 0 && used_ + entry.size() <= kEntryArea) return true;
    if (prefix_ == 0) compressOpenLeaf();
    if (prefix_ == 0) return false;
    const ByteView shared = ByteView{entries_.front()}.first(prefix_);
    return entry.size() > prefix_ && std::equal(shared.begin(), shared.end(), entry.begin()) &&
           used_ + entry.size() - prefix_ <= kEntryArea;
}

void IndexTreeBuilder::compressOpenLeaf() {
    const auto shorter = [](const ByteVector& left, const ByteVector& right) {
        return left.size() < right.size();
    };
    // The row number, an entry's last byte, is never left out.
    const std::size_t limit =
        std::min_element(entries_.begin(), entries_.end(), shorter)->size() - 1;
    prefix_ = std::min(commonPrefix(entries_.front(), entries_.back()), limit);
    used_ -= prefix_ * (entries_.size() - 1);
}

/// Gives the open leaf its page and writes the leaf before it, which now knows its next page.
void IndexTreeBuilder::closeLeaf() {
    Level& leaves = levels_[0];
    const jet::PageNumber page = allocate();
    Links links;
    if (!leaves.empty()) {
        links.previous = leaves.back().page;
        put(closed_, kNextPageOffset, raw(page));
        file_.write(links.previous, closed_);
    }
    closed_ = encodePage(definition_, 0, prefix_, entries_, links);
    leaves.push_back({.page = page, .lastEntry = std::move(entries_.back())});
    entries_.clear();
    used_ = 0;
    prefix_ = 0;
}

jet::PageNumber IndexTreeBuilder::allocate() {
    pages_.push_back(file_.allocate());
    return pages_.back();
}

/// Every child but the last of a parent costs an entry there.
IndexTreeBuilder::Level IndexTreeBuilder::groupUnderParents(const Level& children) {
    Level parents;
    std::size_t used = 0;
    for (std::size_t i = 0; i < children.size(); ++i) {
        const std::size_t cost = i == 0 ? 0 : children[i - 1].lastEntry.size() + kChildBytes;
        const bool fits = !parents.empty() && used + cost <= kEntryArea &&
                          parents.back().childCount <= entriesPerPage_;
        if (!fits) parents.push_back({.firstChild = i});
        used = fits ? used + cost : 0;
        ++parents.back().childCount;
    }
    if (parents.size() > 1 && parents.back().childCount == 1) {
        // A parent of one child would have no entry at all.
        --parents[parents.size() - 2].childCount;
        --parents.back().firstChild;
        ++parents.back().childCount;
    }
    for (Node& parent : parents) {
        parent.page = parents.size() == 1 ? root_ : allocate();
        parent.lastEntry = children[parent.firstChild + parent.childCount - 1].lastEntry;
    }
    return parents;
}

/// Above the leaves only the children of one parent are linked to each other.
void IndexTreeBuilder::writeParents(std::size_t level) {
    const Level& nodes = levels_[level];
    if (level + 1 == levels_.size()) return writeParent(nodes.front(), level, {}, {});
    for (const Node& parent : levels_[level + 1]) {
        const std::size_t end = parent.firstChild + parent.childCount;
        for (std::size_t i = parent.firstChild; i < end; ++i) {
            writeParent(nodes[i], level, i > parent.firstChild ? nodes[i - 1].page : jet::kNoPage,
                        i + 1 < end ? nodes[i + 1].page : jet::kNoPage);
        }
    }
}

void IndexTreeBuilder::writeParent(const Node& node, std::size_t level, jet::PageNumber previous,
                                   jet::PageNumber next) {
    const Level& children = levels_[level - 1];
    const std::size_t last = node.firstChild + node.childCount - 1;
    std::vector<ByteVector> entries;
    for (std::size_t i = node.firstChild; i < last; ++i) {
        entries.push_back(children[i].lastEntry);
        appendBigEndian(entries.back(), raw(children[i].page), kChildBytes);
    }
    file_.write(node.page,
                encodePage(definition_, level, 0, entries, {previous, next, children[last].page}));
}

}  // namespace fixture
