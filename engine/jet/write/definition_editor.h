// Edits a table's definition as a list of stored blocks. Unknown parts of a block are preserved.
//
//   jet::DefinitionEditor definition{context, page};
//   definition.addColumn(descriptor, name);
//   definition.write();
//
// The layout is in format/table_definition.h. One thread, that of the statement.
#pragma once

#include "engine/jet/bytes.h"
#include "engine/jet/format/table_definition.h"
#include "engine/jet/table_definition.h"
#include "engine/jet/write/write_context.h"

#include <string>
#include <vector>

namespace jet {

class DefinitionEditor {
public:
    using Block = std::vector<std::uint8_t>;

    struct Named {
        Block block;
        std::u16string name;
    };

    /// Reads the definition that starts on `first`. Throws Error{Damaged}.
    DefinitionEditor(WriteContext& context, PageNumber first);

    /// A definition without columns and indexes, to be written on `first`, a new page.
    DefinitionEditor(WriteContext& context, PageNumber first, bool system, RowId ownedMap,
                     RowId freeMap);

    /// Appends a column and its block (definition_blocks.h). Counts are the caller's to set.
    void addColumn(Block descriptor, std::u16string name);

    /// Appends a physical index, and its counters.
    void addPhysicalIndex(const PhysicalIndex& index, std::uint32_t entries,
                          std::uint32_t distinctKeys);

    /// Inserts a logical index, which are ordered by name.
    void addLogicalIndex(const LogicalIndex& index);

    /// Appends the maps of a long-value column.
    void addLongValueMaps(std::uint16_t columnId, RowId owned, RowId free);

    /// Sets a field of the head.
    template <typename T>
    void set(format::Field<T> field, std::type_identity_t<T> value) {
        store(head_, field, value);
    }

    /// Writes the definition to its first page and as many others as it needs.
    /// Throws as Pager::edit, Error{FileFull}.
    void write();

private:
    Block encode() const;
    void takePages(std::size_t size);

    WriteContext& context_;
    PageNumber first_;
    std::vector<PageNumber> continuation_;
    Block head_;
    std::vector<Block> counters_;
    std::vector<Named> columns_;
    std::vector<Block> physical_;
    std::vector<Named> logical_;
    std::vector<Block> longValueMaps_;
};

}  // namespace jet
