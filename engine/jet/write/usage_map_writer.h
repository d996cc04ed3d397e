// Changes a usage map: the set is kept in memory and written back by save().
//
//   jet::UsageMapWriter owned{pager, definition.ownedMap};
//   owned.insert(page);
//   owned.save(allocator);
//
// The layout is in format/usage_map.h. One thread, that of the statement.
#pragma once

#include "engine/jet/usage_map.h"
#include "engine/jet/write/page_allocator.h"

#include <vector>

namespace jet {

class UsageMapWriter {
public:
    /// Reads the map. Throws Error{Damaged}, also for a map that does not exist.
    UsageMapWriter(Pager& pager, RowId map);

    bool contains(PageNumber number) const;
    void insert(PageNumber number) { set(number, true); }
    void erase(PageNumber number) { set(number, false); }
    void clear();

    /// Ascending.
    std::vector<PageNumber> pages() const;

    /// The last page of the set before `end`; kNoPage if there is none.
    PageNumber lastBefore(std::uint32_t end) const;

    /// Writes what has changed. Throws Error: FileFull, Damaged; as Pager::edit.
    void save(PageAllocator& allocator);

    /// The map's bitmap pages; to be released when the map is dropped.
    std::vector<PageNumber> bitmapPages() const;

private:
    void set(PageNumber number, bool member);
    void saveInline(std::span<std::uint8_t> row, std::uint32_t first);
    void saveReferences(PageAllocator& allocator);
    std::vector<PageNumber> references() const;

    Pager& pager_;
    RowId map_;
    std::vector<std::uint64_t> words_;  ///< bit n of the whole: page n
    bool changed_ = false;
};

}  // namespace jet
