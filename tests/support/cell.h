// What a test puts into one field of a row.
//
//   const fixture::Row row{u"notifier", 12, jet::Date{38790.5}, fixture::kNull};
//   const fixture::Row odd{fixture::stored({0xFF, 0xFE, 'a'}),
//                          fixture::longValue(u"text", fixture::LongForm::Chain)};
#pragma once

#include "engine/jet/value.h"
#include "tests/support/byte_writer.h"

#include <concepts>
#include <optional>
#include <vector>

namespace fixture {

/// Where the content of a Memo or Ole value is put.
enum class LongForm {
    Natural,  ///< in the record up to 64 bytes, in one row up to 4076, else as a chain
    Inline,
    Single,
    Chain,
    HandMade,  ///< the stored bytes are what stands in the record, header and all
};

struct Cell {
    Cell() = default;

    /// Whole numbers of any kind suit all columns of whole numbers.
    template <typename T>
    requires std::constructible_from<jet::Value, T> Cell(T&& content)
        : value{std::forward<T>(content)} {}

    jet::Value value;                    ///< null unless something was given
    std::optional<ByteVector> stored{};  ///< the exact bytes of the content, instead of a value
    LongForm form = LongForm::Natural;

    bool isNull() const { return !stored && jet::isNull(value); }
};

/// The fields of one row in the order of the table's columns.
using Row = std::vector<Cell>;

inline const Cell kNull{};

/// The bytes as they shall stand in the field, or in the long value.
inline Cell stored(ByteVector bytes) {
    Cell cell;
    cell.stored = std::move(bytes);
    return cell;
}

/// A long value in the given form, whatever its length.
inline Cell longValue(Cell content, LongForm form) {
    content.form = form;
    return content;
}

}  // namespace fixture
