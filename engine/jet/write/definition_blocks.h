// The blocks that a table definition consists of, as they are stored. The layout is in
// format/table_definition.h.
//
//   definition.addColumn(jet::encodeColumn({.type = jet::ColumnType::Long, .size = 4}), u"Age");
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/jet/write/definition_editor.h"

namespace jet {

/// Counters that run through the descriptors of a table's columns.
struct ColumnCounts {
    std::uint16_t ever = 0;      ///< the next column's id
    std::uint16_t variable = 0;  ///< its place among the variable columns
    std::uint16_t ordinal = 0;
    std::size_t fixedEnd = 0;  ///< of the fixed part of a record
};

/// What a descriptor says, in the order of its fields.
struct ColumnBlock {
    ColumnType type = ColumnType::Text;
    std::uint16_t id = 0;
    std::uint16_t variableIndex = 0;
    std::uint16_t ordinal = 0;
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
    std::uint8_t flags = format::column::kUpdatable;
    bool compressed = false;
    std::uint16_t fixedOffset = 0;
    std::uint16_t size = 0;
};

DefinitionEditor::Block encodeColumn(const ColumnBlock& column);
DefinitionEditor::Block encodePhysicalIndex(const PhysicalIndex& index);
DefinitionEditor::Block encodeLogicalIndex(const LogicalIndex& index);
DefinitionEditor::Block encodeIndexCounter(std::uint32_t entries, std::uint32_t distinctKeys);
DefinitionEditor::Block encodeLongValueMaps(std::uint16_t columnId, RowId owned, RowId free);

}  // namespace jet
