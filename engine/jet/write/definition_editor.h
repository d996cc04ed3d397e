// A table's definition as its stored blocks, to be added to and written back. What this project
// does not know of a block stays as it is.
//
//   jet::DefinitionEditor definition{context, page};
//   definition.addColumn(descriptor, name);
//   definition.write();
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/bytes.h"
#include "engine/jet/table_definition.h"
#include "engine/jet/write/write_context.h"

#include <cstring>
#include <string>
#include <vector>

namespace jet {

class DefinitionEditor {
public:
    static constexpr std::size_t kHeadSize = 63;
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

    /// Appends a column: its descriptor of 25 bytes. Counts are the caller's to set.
    void addColumn(Block descriptor, std::u16string name);

    /// Appends a physical index, and its counters.
    void addPhysicalIndex(const PhysicalIndex& index, std::uint32_t entries,
                          std::uint32_t distinctKeys);

    /// Adds a logical index in its place by name.
    void addLogicalIndex(const LogicalIndex& index);

    /// Appends the maps of a long-value column.
    void addLongValueMaps(std::uint16_t columnId, RowId owned, RowId free);

    /// Fields of the head, by their offset.
    template <typename T>
    T get(std::size_t offset) const;
    template <typename T>
    void set(std::size_t offset, T value);

    /// Writes the definition to its first page and as many others as it needs.
    /// Throws as Pager::edit, Error{FileFull}.
    void write();

private:
    Block encode() const;

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

/// Offsets in the head.
inline constexpr std::size_t kDefinitionRowCount = 16;
inline constexpr std::size_t kDefinitionColumnsEver = 41;
inline constexpr std::size_t kDefinitionVariableEver = 43;
inline constexpr std::size_t kDefinitionColumns = 45;

template <typename T>
T DefinitionEditor::get(std::size_t offset) const {
    return load<T>(head_, offset);
}

template <typename T>
void DefinitionEditor::set(std::size_t offset, T value) {
    std::memcpy(head_.data() + offset, &value, sizeof value);
}

}  // namespace jet
