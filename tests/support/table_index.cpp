#include "tests/support/table_index.h"

#include "tests/support/index_keys.h"

#include <algorithm>
#include <numeric>

namespace fixture {

namespace {

ByteView asBytes(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

TableIndex::TableIndex(IndexSpec spec, PageFile& file, jet::PageNumber definition)
    : spec_{std::move(spec)}, file_{file}, definition_{definition}, root_{file.allocate()} {}

void TableIndex::add(const TableLayout& layout, const Row& row, jet::RowId id) {
    key_.clear();
    bool anyValue = false;
    for (const IndexColumnSpec& part : spec_.columns) {
        const std::size_t column = layout.indexOf(part.name);
        anyValue = anyValue || !row[column].isNull();
        appendKeyPart(layout.columns()[column].spec.type, row[column], part.ascending, key_);
    }
    if (spec_.ignoreNulls && !anyValue) return;
    entries_.push_back({intern(key_), id});
}

void TableIndex::remove(jet::RowId id) {
    std::erase_if(entries_, [id](const Entry& entry) { return entry.row == id; });
}

void TableIndex::build() {
    const std::vector<std::uint32_t> ranks = rankKeys();
    std::sort(entries_.begin(), entries_.end(), [&ranks](const Entry& left, const Entry& right) {
        return std::pair{ranks[left.key], left.row} < std::pair{ranks[right.key], right.row};
    });
    IndexTreeBuilder tree{file_, root_, definition_, spec_.entriesPerPage};
    for (const Entry& entry : entries_) tree.add(asBytes(*keys_[entry.key]), entry.row);
    tree.finish();
    pages_ = tree.pages();
    depth_ = tree.depth();
}

std::uint32_t TableIndex::intern(const ByteVector& key) {
    keyText_.assign(key.begin(), key.end());
    const auto [place, isNew] =
        ids_.try_emplace(keyText_, static_cast<std::uint32_t>(keys_.size()));
    if (isNew) keys_.push_back(&place->first);
    return place->second;
}

/// The place of each key among all keys in byte order.
std::vector<std::uint32_t> TableIndex::rankKeys() const {
    std::vector<std::uint32_t> order(keys_.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [this](std::uint32_t left, std::uint32_t right) {
        return *keys_[left] < *keys_[right];
    });
    std::vector<std::uint32_t> ranks(order.size());
    for (std::uint32_t rank = 0; rank < order.size(); ++rank) ranks[order[rank]] = rank;
    return ranks;
}

}  // namespace fixture
