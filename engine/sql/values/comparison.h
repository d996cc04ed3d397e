// How values compare: texts by the collation, numbers of all types and dates by value.
//
//   if (sql::compareValues(left, right) < 0) use(left);
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/jet/value.h"

#include <compare>
#include <optional>
#include <vector>

namespace sql {

/// What a value is to an operator. Only values of the same domain can be compared, except that
/// dates also compare with numbers.
enum class Domain { Null, Number, Date, Text, Binary, Guid };

Domain domainOf(jet::ColumnType type);
Domain domainOf(const jet::Value& value);

bool isNumeric(Domain domain);
bool comparable(Domain left, Domain right);

/// Requires: neither is null and their domains are comparable.
std::weak_ordering compareValues(const jet::Value& left, const jet::Value& right);

/// The numeric value of a Boolean, a number or a date; True is -1.
/// Requires: a value of such a type.
double toDouble(const jet::Value& value);

/// Whether a condition holds: a number or date other than 0. Nothing for null.
std::optional<bool> truth(const jet::Value& value);

using OrderKey = std::vector<std::uint8_t>;

/// Appends a key that compares with memcmp like values of an expression of that type: null first,
/// or last if descending. Equal values have equal keys, and null differs from empty text.
void appendOrderKey(const jet::Value& value, jet::ColumnType type, bool ascending, OrderKey& key);

}  // namespace sql
