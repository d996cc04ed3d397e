// Columns as a test asks for them, and the places they take in a table's records.
//
//   std::vector<fixture::ColumnSpec> columns{
//       fixture::textColumn(u"Name", 50), fixture::column(u"Count", jet::ColumnType::Long)};
#pragma once

#include "engine/jet/format/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fixture {

struct ColumnSpec {
    std::u16string name;
    jet::ColumnType type = jet::ColumnType::Text;
    unsigned length = 0;      ///< Text: characters; Binary, InternalBinary: bytes; others: unused
    bool compressed = false;  ///< Text and Memo: texts are stored compressed where that is shorter
    bool autonumber = false;
    std::uint8_t precision = 0;  ///< of Numeric
    std::uint8_t scale = 0;
    std::optional<bool> fixed{};  ///< overrides what is usual for the type
    std::uint8_t flags = 0;       ///< further bits of the descriptor's flags
};

ColumnSpec column(std::u16string name, jet::ColumnType type);
ColumnSpec textColumn(std::u16string name, unsigned characters, bool compressed = true);

/// CHAR(n): stored in the fixed part with its full length.
ColumnSpec fixedTextColumn(std::u16string name, unsigned characters);
ColumnSpec memoColumn(std::u16string name, bool compressed = true);
ColumnSpec binaryColumn(std::u16string name, unsigned bytes);
ColumnSpec numericColumn(std::u16string name, std::uint8_t precision, std::uint8_t scale);

inline bool isLongValue(const ColumnSpec& spec) {
    return spec.type == jet::ColumnType::Memo || spec.type == jet::ColumnType::Ole;
}

/// A column and where its values stand in a record.
struct PlacedColumn {
    ColumnSpec spec;
    std::uint16_t id = 0;             ///< bit in the null mask
    std::uint16_t variableIndex = 0;  ///< of a fixed column: variable columns before it
    std::uint16_t fixedOffset = 0;
    std::uint16_t size = 0;  ///< the descriptor's length in bytes
    bool fixed = false;

    /// Bytes in the fixed part; none for a Boolean, which is a bit of the mask.
    std::size_t fixedBytes() const {
        return fixed && spec.type != jet::ColumnType::Boolean ? size : 0;
    }
};

/// The columns of a table over its life: ids and places are given out once and never again.
class TableLayout {
public:
    void add(ColumnSpec spec);

    /// Throws std::out_of_range if there is no such column.
    void drop(std::u16string_view name);

    /// The columns there are now, by id.
    const std::vector<PlacedColumn>& columns() const { return columns_; }

    /// The place of a column in columns(). Throws std::out_of_range.
    std::size_t indexOf(std::u16string_view name) const;

    std::uint16_t columnsEver() const { return columnsEver_; }
    std::uint16_t variableColumnsEver() const { return variableColumnsEver_; }
    std::size_t fixedWidth() const { return fixedWidth_; }

private:
    std::vector<PlacedColumn> columns_;
    std::uint16_t columnsEver_ = 0;
    std::uint16_t variableColumnsEver_ = 0;
    std::size_t fixedWidth_ = 0;
};

}  // namespace fixture
