#include "engine/jet/write/index_writer.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/index_key.h"
#include "engine/jet/write/index_builder.h"

#include <algorithm>
#include <utility>

namespace jet {
namespace {

bool hasKey(const Key& entry, const Key& key) { return std::ranges::equal(keyOf(entry), key); }

}  // namespace

bool isNullKey(const Key& key, const PhysicalIndex& index) {
    if (key.size() != index.columns.size()) return false;
    for (std::size_t i = 0; i < key.size(); ++i) {
        if (key[i] != format::index_key::flags(index.columns[i].ascending).null) return false;
    }
    return true;
}

IndexWriter::IndexWriter(Pager& pager, PageAllocator& allocator, const TableDefinition& definition,
                         std::size_t physical)
    : pager_{pager},
      allocator_{allocator},
      owner_{definition.page},
      index_{definition.physicalIndexes[physical]},
      map_{pager, index_.map} {}

// ---- One entry ----------------------------------------------------------------------------------

void IndexWriter::insert(const Key& key, RowId row) {
    requireShort(key);
    const bool present = holds(key);
    if (present && index_.unique && !isNullKey(key, index_)) throwDuplicate();
    if (!present) ++index_.distinctKeys;
    Key entry;
    makeEntry(key, row, entry);
    const Outcome outcome = insertBelow(index_.root, entry, 0);
    if (outcome.split) growRoot(*outcome.split);
}

IndexWriter::Outcome IndexWriter::insertBelow(PageNumber number, const Key& entry, int depth) {
    if (depth == format::index_page::kMaxDepth)
        throwDamaged(number, "an index is deeper than can be");
    IndexNode node = load(number);
    const std::size_t at = node.lowerBound(entry);
    Outcome outcome;
    if (node.isLeaf()) {
        if (at < node.entries.size() && node.entries[at].bytes == entry) {
            throwDamaged(number, "an index has an entry of a row that is new");
        }
        const bool appended = at == node.entries.size() && node.next == kNoPage;
        node.entries.insert(node.entries.begin() + static_cast<std::ptrdiff_t>(at),
                            {entry, kNoPage});
        store(node, appended, outcome);
        return outcome;
    }
    Outcome below = insertBelow(node.child(at), entry, depth + 1);
    if (!below.split) return below;
    const bool appended = at == node.entries.size() && node.next == kNoPage;
    takeUp(node, at, std::move(below), outcome);
    store(node, appended, outcome);
    return outcome;
}

void IndexWriter::remove(const Key& key, RowId row) {
    Key entry;
    makeEntry(key, row, entry);
    const Outcome outcome = removeBelow(index_.root, entry, 0);
    if (outcome.split) growRoot(*outcome.split);
    // A root with a single page below it takes that page's place.
    for (IndexNode root = load(index_.root); !root.isLeaf() && root.entries.empty();
         root = load(index_.root)) {
        IndexNode child = load(root.tail);
        const PageNumber emptied = std::exchange(child.number, index_.root);
        write(child);
        map_.erase(emptied);
        allocator_.release(emptied);
    }
}

IndexWriter::Outcome IndexWriter::removeBelow(PageNumber number, const Key& entry, int depth) {
    if (depth == format::index_page::kMaxDepth)
        throwDamaged(number, "an index is deeper than can be");
    IndexNode node = load(number);
    const std::size_t at = node.lowerBound(entry);
    Outcome outcome;
    if (node.isLeaf()) {
        if (at == node.entries.size() || node.entries[at].bytes != entry) {
            throwDamaged(number, "an index lacks the entry of a row");
        }
        node.entries.erase(node.entries.begin() + static_cast<std::ptrdiff_t>(at));
        outcome.empty = node.entries.empty();
        if (at == node.entries.size() && !outcome.empty) outcome.last = node.entries.back().bytes;
    } else {
        Outcome below = removeBelow(node.child(at), entry, depth + 1);
        if (!below.empty && !below.last && !below.split) return outcome;
        takeUp(node, at, std::move(below), outcome);
    }
    if (outcome.empty && number == index_.root) {
        outcome.empty = false;
        IndexNode leaf;
        leaf.number = number;
        write(leaf);
    } else if (outcome.empty) {
        unlink(node);
        map_.erase(number);
        allocator_.release(number);
    } else {
        store(node, false, outcome);
    }
    return outcome;
}

/// Takes up in `node` what became of its child `at`.
void IndexWriter::takeUp(IndexNode& node, std::size_t at, Outcome below, Outcome& outcome) {
    const bool isTail = at == node.entries.size();
    if (below.empty) {
        if (!isTail) {
            node.entries.erase(node.entries.begin() + static_cast<std::ptrdiff_t>(at));
        } else if (node.entries.empty()) {
            outcome.empty = true;
        } else {
            node.tail = node.entries.back().child;
            outcome.last = std::move(node.entries.back().bytes);
            node.entries.pop_back();
        }
        return;
    }
    if (below.last && isTail) outcome.last = std::move(below.last);
    if (below.last && !isTail) node.entries[at].bytes = std::move(*below.last);
    if (below.split) {
        node.entries.insert(node.entries.begin() + static_cast<std::ptrdiff_t>(at),
                            {std::move(below.split->last), below.split->lower});
    }
}

void IndexWriter::store(IndexNode& node, bool appended, Outcome& outcome) {
    if (node.fits()) return write(node);
    outcome.split = split(node, appended);
}

/// How many entries go to the lower page of two: about half of the bytes or, where entries come in
/// their order, all but the last.
std::size_t IndexWriter::splitPoint(const IndexNode& node, bool appended) const {
    const std::size_t most = node.entries.size() - 1;
    if (appended) return most;
    const std::size_t child = node.childSize();
    std::size_t total = 0;
    for (const auto& entry : node.entries) total += entry.bytes.size() + child;
    std::size_t count = 1;
    std::size_t moved = node.entries[0].bytes.size() + child;
    while (count < most && 2 * moved + node.entries[count].bytes.size() + child <= total) {
        moved += node.entries[count++].bytes.size() + child;
    }
    const auto fit = [&](std::size_t lowerCount) {
        return node.fits(0, lowerCount) && node.fits(lowerCount, node.entries.size());
    };
    if (fit(count)) return count;
    // A new first or last entry may share so little with the others that they need all the room
    // that they had without it.
    if (fit(1)) return 1;
    if (fit(most)) return most;
    throwDamaged(node.number, "the entries of an index do not fit onto two pages");
}

/// Moves the lower part of the entries to a new page, so that the page above keeps what it has for
/// this one.
IndexWriter::Outcome::Split IndexWriter::split(IndexNode& node, bool appended) {
    const std::size_t count = splitPoint(node, appended);
    IndexNode lower;
    lower.number = allocator_.allocate();
    map_.insert(lower.number);
    lower.level = node.level;
    lower.previous = node.previous;
    lower.next = node.number;
    const auto end = node.entries.begin() + static_cast<std::ptrdiff_t>(count);
    lower.entries.assign(std::make_move_iterator(node.entries.begin()),
                         std::make_move_iterator(end));
    node.entries.erase(node.entries.begin(), end);
    const Key last = lower.entries.back().bytes;
    if (!lower.isLeaf()) {
        lower.tail = lower.entries.back().child;
        lower.entries.pop_back();
    }
    if (lower.previous != kNoPage) {
        IndexNode before = load(lower.previous);
        before.next = lower.number;
        write(before);
    }
    node.previous = lower.number;
    if (node.level > 1) {
        // The children are linked among those of one parent only.
        IndexNode left = load(lower.tail);
        left.next = kNoPage;
        write(left);
        IndexNode right = load(node.child(0));
        right.previous = kNoPage;
        write(right);
    }
    write(lower);
    write(node);
    return {lower.number, last};
}

/// The root's page stays the root: what was left on it after a split moves to a page of its own.
void IndexWriter::growRoot(const Outcome::Split& split) {
    IndexNode upper = load(index_.root);
    IndexNode lower = load(split.lower);
    upper.number = allocator_.allocate();
    map_.insert(upper.number);
    lower.next = upper.number;
    write(lower);
    write(upper);
    IndexNode root;
    root.number = index_.root;
    root.level = upper.level + 1;
    root.entries.push_back({split.last, lower.number});
    root.tail = upper.number;
    write(root);
}

void IndexWriter::unlink(const IndexNode& node) {
    if (node.previous != kNoPage) {
        IndexNode before = load(node.previous);
        before.next = node.next;
        write(before);
    }
    if (node.next != kNoPage) {
        IndexNode behind = load(node.next);
        behind.previous = node.previous;
        write(behind);
    }
}

bool IndexWriter::holds(const Key& key) const {
    IndexNode node = load(index_.root);
    for (int depth = 0; !node.isLeaf(); ++depth) {
        if (depth == format::index_page::kMaxDepth)
            throwDamaged(node.number, "an index is deeper than can be");
        node = load(node.child(node.lowerBound(key)));
    }
    std::size_t at = node.lowerBound(key);
    if (at == node.entries.size() && node.next != kNoPage) {
        node = load(node.next);
        at = 0;
    }
    return at < node.entries.size() && hasKey(node.entries[at].bytes, key);
}

// ---- A whole tree -------------------------------------------------------------------------------

void IndexWriter::rebuild(KeySorter& keys) {
    for (const PageNumber number : map_.pages()) {
        if (number == index_.root) continue;
        requireOwned(pager_, number, PageKind::Index, raw(owner_));
        map_.erase(number);
        allocator_.release(number);
    }
    index_.entriesAtBuild = 0;
    index_.distinctKeys = 0;
    IndexBuilder builder{pager_, allocator_, owner_, index_.root, map_};
    Key before;
    keys.forEach([&](const Key& key, RowId row) {
        if (index_.entriesAtBuild == 0 || key != before) {
            requireShort(key);
            ++index_.distinctKeys;
            before = key;
        } else if (index_.unique && !isNullKey(key, index_)) {
            throwDuplicate();
        }
        ++index_.entriesAtBuild;
        builder.add(key, row);
    });
    builder.finish();
}

// ---- Pages --------------------------------------------------------------------------------------

IndexNode IndexWriter::load(PageNumber number) const {
    return IndexNode{*pager_.page(number), number, owner_};
}

void IndexWriter::write(const IndexNode& node) { node.writeTo(*pager_.edit(node.number), owner_); }

void IndexWriter::requireShort(const Key& key) const {
    if (key.size() > kMaxKeyBytes) {
        throw Error{Fault::ValueTooLarge, "A value is too long for an index."};
    }
}

void IndexWriter::throwDuplicate() const {
    throw Error{Fault::DuplicateKey,
                "The change would create duplicate values in an index that has none."};
}

}  // namespace jet
