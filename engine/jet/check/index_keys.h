// The keys that the rows of a table must have in one of its indexes, eight bytes a row.
//
//   const checking::RowKeys keys{context, definition, index, rows, name};
//   if (!keys.matches(place, key)) report(row);
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/rows.h"

#include <string_view>

namespace jet::checking {

class RowKeys {
public:
    /// Reads all rows. Reports null in columns of a key that forbids it; `name` is the index's.
    RowKeys(Context& context, const TableDefinition& definition, const PhysicalIndex& index,
            const LiveRows& rows, const std::string& name);

    /// Whether the index must have an entry for the row at that index of `rows`.
    bool hasEntry(std::size_t place) const { return hashes_[place] != kNoEntry; }

    /// Whether `key` is the key of that row. True if that is unknown: the row is damaged, or its
    /// texts have an unknown collation.
    bool matches(std::size_t place, Bytes key) const;

private:
    // The keys themselves would take more memory than the table on disk.
    static constexpr std::uint64_t kNoEntry = 0;
    static constexpr std::uint64_t kUnknown = 1;

    static std::uint64_t hash(Bytes key);

    std::vector<std::uint64_t> hashes_;
};

}  // namespace jet::checking
