#include "engine/jet/write/definition_blocks.h"

#include <cstring>

namespace jet {
namespace {

using Block = DefinitionEditor::Block;

template <typename T>
void put(Block& block, std::size_t offset, T value) {
    std::memcpy(block.data() + offset, &value, sizeof value);
}

}  // namespace

Block encodeColumn(const ColumnBlock& column) {
    constexpr std::size_t kSize = 25;
    constexpr std::uint16_t kGeneral = 0x0409;
    Block block(kSize);
    block[0] = static_cast<std::uint8_t>(column.type);
    put(block, 1, std::uint32_t{0x659});
    put(block, 5, column.id);
    put(block, 7, column.variableIndex);
    put(block, 9, column.ordinal);
    if (column.type == ColumnType::Numeric) {
        block[11] = column.precision;
        block[12] = column.scale;
    } else {
        put(block, 11, kGeneral);
    }
    block[15] = column.flags;
    block[16] = column.compressed ? 1 : 0;
    put(block, 21, column.fixedOffset);
    put(block, 23, column.size);
    return block;
}

Block encodePhysicalIndex(const PhysicalIndex& index) {
    constexpr std::size_t kSize = 52;
    constexpr std::uint8_t kAlways = 0x80;
    Block block(kSize);
    put(block, 0, std::uint32_t{0x783});
    for (std::size_t i = 0; i < kMaxIndexColumns; ++i) {
        const bool used = i < index.columns.size();
        put(block, 4 + 3 * i, used ? index.columns[i].columnId : std::uint16_t{0xFFFF});
        block[4 + 3 * i + 2] = used && index.columns[i].ascending ? 1 : 0;
    }
    put(block, 34, index.map.packed());
    put(block, 38, raw(index.root));
    block[46] =
        static_cast<std::uint8_t>(kAlways | (index.unique ? 0x01 : 0) |
                                  (index.ignoreNulls ? 0x02 : 0) | (index.required ? 0x08 : 0));
    return block;
}

Block encodeLogicalIndex(const LogicalIndex& index) {
    constexpr std::size_t kSize = 28;
    Block block(kSize);
    put(block, 0, std::uint32_t{0x659});
    put(block, 4, index.number);
    put(block, 8, index.physical);
    put(block, 13, std::uint32_t{0xFFFFFFFF});
    block[21] = 4;
    block[22] = 4;
    block[23] = static_cast<std::uint8_t>(index.kind);
    return block;
}

}  // namespace jet
