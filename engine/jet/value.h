// A field's value out of the file's own forms. The layout is in format/value.h.
//
//   const jet::Value value = jet::decodeField(pages, column, record.field(column), record.page());
//   if (const auto* name = std::get_if<std::u16string>(&value)) use(*name);
//
// Plain values and pure functions; any thread.
#pragma once

#include "engine/jet/format/types.h"
#include "engine/jet/format/value.h"
#include "engine/jet/page_cache.h"
#include "engine/jet/record.h"

#include <array>
#include <string>
#include <variant>
#include <vector>

namespace jet {

struct Currency {
    std::int64_t tenThousandths = 0;
    friend bool operator==(Currency, Currency) = default;
};

/// Days since 1899-12-30 00:00 local time. The fraction counts forward from the day even below
/// zero: -1.25 is 1899-12-29 06:00.
struct Date {
    double days = 0;
    friend bool operator==(Date, Date) = default;
};

struct Guid {
    std::array<std::uint8_t, format::value::kGuidSize>
        bytes{};  ///< as stored: first three groups little-endian
    friend bool operator==(const Guid&, const Guid&) = default;
};

/// A decimal number: magnitude / 10^scale, negated if negative.
struct Numeric {
    bool negative = false;
    std::uint8_t scale = 0;
    std::array<std::uint32_t, format::value::kNumericWords>
        magnitude{};  ///< most significant word first
    friend bool operator==(const Numeric&, const Numeric&) = default;
};

using Binary = std::vector<std::uint8_t>;

/// Stands for a value that is damaged.
struct Unreadable {
    std::string why;
    friend bool operator==(const Unreadable&, const Unreadable&) = default;
};

/// Null is std::monostate.
using Value = std::variant<std::monostate, bool, std::uint8_t, std::int16_t, std::int32_t, Currency,
                           float, double, Date, Binary, std::u16string, Guid, Numeric, Unreadable>;

inline bool isUnreadable(const Value& value) { return std::holds_alternative<Unreadable>(value); }

/// What cannot be read behaves like Null wherever values are compared or calculated with.
inline bool isNull(const Value& value) { return value.index() == 0 || isUnreadable(value); }

/// A field of the current row that could not be read.
struct LostField {
    const Column* column;
    std::string why;
};

/// The bytes of a Memo or Ole value whose stored field is `header`. The view is valid until the
/// next use of `pages` or `scratch`: a contiguous value is not copied, a chained one is assembled
/// in `scratch`. Throws Error{Damaged}.
Bytes readLongValue(PageReader& pages, Bytes header, PageNumber page, Binary& scratch);

/// The value of a stored field. Throws Error{Damaged}.
Value decodeField(PageReader& pages, const Column& column, const StoredField& field,
                  PageNumber page);

/// The value of the record's field of a column; Unreadable if it is damaged.
Value readField(PageReader& pages, const Column& column, const Record& record);

/// The decimal digits of a Numeric, with a point where the scale says.
std::string toDecimalText(const Numeric& number);

/// {xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx} in upper-case hex.
std::string toText(const Guid& guid);

}  // namespace jet
