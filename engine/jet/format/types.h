// The vocabulary of the file format: page numbers, row ids, types of columns, kinds of indexes.
//
//   const jet::RowId row{jet::PageNumber{17}, 3};
//   use(row.page(), row.slot());
//
// Plain values; any thread.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>

namespace jet {

/// Bytes of one page. Page n begins at byte n * kPageSize of the file.
inline constexpr std::size_t kPageSize = 4096;

/// A view of stored bytes; the function that returns it documents its lifetime.
using Bytes = std::span<const std::uint8_t>;

/// The number of a page in the file, 0 for the header page.
enum class PageNumber : std::uint32_t {};

constexpr std::uint32_t raw(PageNumber page) { return static_cast<std::uint32_t>(page); }

/// No page: links that end, maps that do not exist. (Page 0 is the header and never a target.)
inline constexpr PageNumber kNoPage{0};

/// Names one row of the file: a page and a slot on it. Usage maps and pieces of long values are
/// rows too. As stored: the slot in the low byte, the page in the upper three.
class RowId {
public:
    constexpr RowId() = default;
    constexpr RowId(PageNumber page, unsigned slot) : packed_{(raw(page) << 8) | (slot & 0xFFu)} {}

    static constexpr RowId fromPacked(std::uint32_t packed) {
        RowId id;
        id.packed_ = packed;
        return id;
    }

    constexpr PageNumber page() const { return PageNumber{packed_ >> 8}; }
    constexpr unsigned slot() const { return packed_ & 0xFFu; }
    constexpr std::uint32_t packed() const { return packed_; }

    friend constexpr auto operator<=>(RowId, RowId) = default;

private:
    std::uint32_t packed_ = 0;
};

/// Column types, with their codes in the file.
enum class ColumnType : std::uint8_t {
    Boolean = 1,   ///< stored in the record's null mask only; never null
    Byte = 2,      ///< unsigned, 1 byte
    Integer = 3,   ///< signed, 2 bytes
    Long = 4,      ///< signed, 4 bytes
    Currency = 5,  ///< signed, 8 bytes, in ten-thousandths
    Single = 6,    ///< IEEE, 4 bytes
    Double = 7,    ///< IEEE, 8 bytes
    Date = 8,      ///< IEEE, 8 bytes, days since 1899-12-30
    Binary = 9,    ///< up to 510 bytes in the record
    Text = 10,     ///< up to 255 characters in the record
    Ole = 11,      ///< long binary: a long value
    Memo = 12,     ///< long text: a long value
    Guid = 15,     ///< 16 bytes
    Numeric = 16,  ///< 17 bytes: sign and a 128-bit magnitude, scaled by the column
    InternalBinary = 17,
};

/// Kinds of logical indexes, with the codes that stand in the file.
enum class IndexKind : std::uint8_t { Plain = 0, PrimaryKey = 1, ForeignKey = 2 };

}  // namespace jet
