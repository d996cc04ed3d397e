// Makes the keys of one index from rows.
//
//   jet::RowKeys keys{definition, index};
//   if (keys.make(fields, page, pages, key)) writer.insert(key, row);
//
// One thread at a time.
#pragma once

#include "engine/jet/index_key.h"
#include "engine/jet/table.h"
#include "engine/jet/write/key_sorter.h"

#include <vector>

namespace jet {

class RowKeys {
public:
    /// `definition` must outlive this. Throws Error{IndexNotWritable} if keys of this index cannot
    /// be made here.
    RowKeys(const TableDefinition& definition, const PhysicalIndex& index);

    /// Sets `key` to the row's key; false if the row has no entry. `fields` are in the order of the
    /// definition's columns. Throws Error: NullKey, Damaged.
    bool make(std::span<const StoredField> fields, PageNumber page, PageReader& pages, Key& key);

    /// Collects the keys of all rows of a scan. Throws as make; Error{Damaged} if a row or a page
    /// was skipped, since an index must contain every row.
    void collect(TableScan& scan, KeySorter& keys);

    /// Whether the index has a column whose place is `column` in the definition.
    bool uses(std::size_t column) const;

private:
    struct Part {
        std::size_t place = 0;  ///< in the definition's columns
        const Column* column = nullptr;
        bool ascending = true;
    };

    bool append(const Part& part, const StoredField& field, PageNumber page, PageReader& pages,
                Key& key);

    PhysicalIndex index_;
    std::vector<Part> parts_;
    std::vector<StoredField> fields_;
};

}  // namespace jet
