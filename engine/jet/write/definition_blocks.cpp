#include "engine/jet/write/definition_blocks.h"

namespace jet {

using Block = DefinitionEditor::Block;

Block encodeColumn(const ColumnBlock& column) {
    namespace layout = format::column;
    Block block(layout::kSize);
    store(block, layout::kType, column.type);
    store(block, layout::kMagic, format::table_definition::kMagicValue);
    store(block, layout::kId, column.id);
    store(block, layout::kVariableIndex, column.variableIndex);
    store(block, layout::kOrdinal, column.ordinal);
    if (column.type == ColumnType::Numeric) {
        store(block, layout::kPrecision, column.precision);
        store(block, layout::kScale, column.scale);
    } else {
        store(block, layout::kLanguage, layout::kGeneral);
    }
    store(block, layout::kFlags, column.flags);
    store(block, layout::kMoreFlags, column.compressed ? layout::kCompressed : std::uint8_t{0});
    store(block, layout::kFixedOffset, column.fixedOffset);
    store(block, layout::kLength, column.size);
    return block;
}

Block encodePhysicalIndex(const PhysicalIndex& index) {
    namespace layout = format::physical_index;
    Block block(layout::kSize);
    store(block, layout::kMagic, layout::kMagicValue);
    for (std::size_t i = 0; i < layout::kMaxColumns; ++i) {
        const bool used = i < index.columns.size();
        const std::uint16_t id =
            used ? index.columns[i].columnId : format::table_definition::kNoColumn;
        store(block, layout::columnId(i), id);
        store(block, layout::ascending(i), used && index.columns[i].ascending ? 1 : 0);
    }
    store(block, layout::kMap, index.map);
    store(block, layout::kRoot, index.root);
    store(block, layout::kFlags,
          static_cast<std::uint8_t>(layout::kAlways | (index.unique ? layout::kUnique : 0) |
                                    (index.ignoreNulls ? layout::kIgnoreNulls : 0) |
                                    (index.required ? layout::kRequired : 0)));
    return block;
}

Block encodeLogicalIndex(const LogicalIndex& index) {
    namespace layout = format::logical_index;
    Block block(layout::kSize);
    store(block, layout::kMagic, format::table_definition::kMagicValue);
    store(block, layout::kNumber, index.number);
    store(block, layout::kPhysical, index.physical);
    store(block, layout::kOtherIndex, layout::kNoIndex);
    store(block, layout::kCascadeUpdates, layout::kNoCascade);
    store(block, layout::kCascadeDeletes, layout::kNoCascade);
    store(block, layout::kKind, index.kind);
    return block;
}

Block encodeIndexCounter(std::uint32_t entries, std::uint32_t distinctKeys) {
    namespace layout = format::index_counter;
    Block block(layout::kSize);
    store(block, layout::kEntriesAtBuild, entries);
    store(block, layout::kDistinctKeys, distinctKeys);
    return block;
}

Block encodeLongValueMaps(std::uint16_t columnId, RowId owned, RowId free) {
    namespace layout = format::long_value_maps;
    Block block(layout::kSize);
    store(block, layout::kColumn, columnId);
    store(block, layout::kOwned, owned);
    store(block, layout::kFree, free);
    return block;
}

}  // namespace jet
