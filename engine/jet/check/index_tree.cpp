#include "engine/jet/check/index_tree.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/maps.h"
#include "engine/jet/check/pages.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <bit>

namespace jet::checking {
namespace {

namespace layout = format::index_page;

/// Where the last entry ends, as the bitmap says.
std::size_t usedBytes(Bytes page) {
    for (std::size_t i = layout::kEntries; i-- > layout::kBitmap;) {
        if (page[i] == 0) continue;
        return 8 * (i - layout::kBitmap) + static_cast<std::size_t>(std::bit_width(page[i])) - 1;
    }
    return 0;
}

}  // namespace

std::string indexName(const TableDefinition& definition, std::size_t number) {
    for (const LogicalIndex& logical : definition.logicalIndexes) {
        if (logical.physical == number) return "index " + toUtf8(logical.name);
    }
    return "index " + std::to_string(number);
}

IndexTreeCheck::IndexTreeCheck(Context& context, const TableDefinition& definition,
                               std::size_t number, EntryCheck& entries, const std::string& name)
    : context_{context},
      definition_{definition},
      index_{definition.physicalIndexes[number]},
      owner_{OwnerKind::Index, definition.page, static_cast<unsigned>(number)},
      entries_{entries},
      name_{name},
      pages_{context.reader()} {}

void IndexTreeCheck::fail(PageNumber page, const std::string& message) {
    context_.report.error(Rule::IndexTree, page, name_ + ": " + message);
}

bool IndexTreeCheck::run() {
    complete_ = visit(index_.root, {});
    if (complete_ && expectedLeaf_ != kNoPage) {
        fail(lastLeaf_, "the last leaf has a next one, " + nameOf(expectedLeaf_));
    }
    checkMap();
    return complete_;
}

bool IndexTreeCheck::visit(PageNumber number, const Position& position) {
    if (position.depth > layout::kMaxDepth) {
        fail(number, "the tree is too deep");
        return false;
    }
    const auto taken =
        takePage(context_, pages_, number, owner_, {PageType::Leaf, PageType::Intermediate});
    if (!taken) return false;
    visited_.push_back(number);
    // The reader holds one page only, and the way down needs those above.
    const std::vector<std::uint8_t> bytes{taken->begin(), taken->end()};
    checkLayout(bytes, number, position);
    try {
        const IndexPage page{bytes, number, definition_.page};
        if (!page.isLeaf()) return visitChildren(bytes, page, position);
        if (leafDepth_ == 0) leafDepth_ = position.depth;
        if (leafDepth_ != position.depth) fail(number, "a leaf is not as deep as the others");
        return visitLeaf(bytes, page);
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged) throw;
        const bool foreign = load(bytes, layout::kOwner) != raw(definition_.page);
        context_.report.error(foreign ? Rule::PageOwner : Rule::IndexPage, number,
                              name_ + ": " + error.what());
        return false;
    }
}

void IndexTreeCheck::checkLayout(Bytes bytes, PageNumber number, const Position& position) {
    const auto report = [&](const char* message) {
        context_.report.error(Rule::IndexPage, number, name_ + ": " + message);
    };
    const std::size_t used = usedBytes(bytes);
    if (used > layout::kCapacity) return;  // reported with the entries
    if (load(bytes, format::page::kFreeBytes) != layout::kCapacity - used) {
        report("the number of free bytes is wrong");
    }
    const bool leaf = load(bytes, format::page::kType) == PageType::Leaf;
    const unsigned level = load(bytes, layout::kLevel);
    if (leaf != (level == 0) || (position.level && *position.level != level)) {
        // Some writers leave the field at 0, and readers go by the page's type.
        context_.report.warning(Rule::IndexPage, number,
                                name_ + ": the level of the page is wrong");
    }
    if (leaf) {
        if (load(bytes, layout::kTail) != kNoPage) report("a leaf has a page below it");
        return;
    }
    if (load(bytes, layout::kPrevious) != position.previous ||
        load(bytes, layout::kNext) != position.next) {
        context_.report.warning(Rule::IndexTree, number,
                                name_ + ": the page is not linked with its neighbours");
    }
}

bool IndexTreeCheck::visitLeaf(Bytes bytes, const IndexPage& page) {
    const PageNumber number = page.number();
    if (complete_ && load(bytes, layout::kPrevious) != lastLeaf_) {
        fail(number, "the leaf is linked to another one before it");
    }
    if (complete_ && lastLeaf_ != kNoPage && expectedLeaf_ != number) {
        fail(lastLeaf_, "the leaf is linked to another one behind it");
    }
    lastLeaf_ = number;
    expectedLeaf_ = page.next();
    Key entry;
    for (std::size_t i = 0; i < page.size(); ++i) {
        page.read(i, entry);
        if (i == 0 && !lastEntry_.empty() && entry <= lastEntry_) {
            fail(number, "the leaf's entries do not follow those before");
        }
        entries_.add(keyOf(entry), rowOf(entry), number);
    }
    if (page.size() > 0) lastEntry_ = std::move(entry);
    return true;
}

bool IndexTreeCheck::visitChildren(Bytes bytes, const IndexPage& page, const Position& position) {
    std::vector<PageNumber> children;
    for (std::size_t i = 0; i < page.size(); ++i) children.push_back(page.child(i));
    const unsigned level = load(bytes, layout::kLevel);
    const PageNumber tail = load(bytes, layout::kTail);
    if (tail == kNoPage) {
        fail(page.number(), "there is no page behind the last entry");
    } else {
        children.push_back(tail);
    }
    Key entry;
    for (std::size_t i = 0; i < children.size(); ++i) {
        Position below;
        below.depth = position.depth + 1;
        if (level > 0) below.level = level - 1;
        if (i > 0) below.previous = children[i - 1];
        if (i + 1 < children.size()) below.next = children[i + 1];
        const bool whole = visit(children[i], below);
        complete_ = complete_ && whole;
        if (!whole || i >= page.size()) continue;
        page.read(i, entry);
        if (entry != lastEntry_) {
            fail(page.number(), "an entry is not the last one of " + nameOf(children[i]));
        }
    }
    return complete_;
}

void IndexTreeCheck::checkMap() {
    const auto listed = readMap(context_, index_.map, definition_.page, "the map of " + name_);
    if (!listed) {
        context_.ownersKnown = false;
        return;
    }
    std::sort(visited_.begin(), visited_.end());
    for (const PageNumber page : visited_) {
        if (std::binary_search(listed->begin(), listed->end(), page)) continue;
        fail(page, "the page is not in the map of the index");
    }
    for (const PageNumber page : *listed) {
        if (std::binary_search(visited_.begin(), visited_.end(), page)) continue;
        const Owner owner = context_.owners.of(page);
        // Pages below a damaged one could not be reached.
        if (complete_ && (owner.kind == OwnerKind::None || owner == owner_)) {
            fail(page, "the map of the index lists a page that is not in the tree");
        } else if (owner.kind != OwnerKind::None && owner != owner_) {
            context_.report.error(Rule::PageOwnership, page,
                                  "the page belongs to " + describe(owner) + ", but the map of " +
                                      name_ + " lists it");
        }
        context_.owners.claim(page, owner_);
    }
}

}  // namespace jet::checking
