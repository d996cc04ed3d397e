#include "engine/sql/values/comparison.h"

#include "engine/jet/collation.h"
#include "engine/sql/values/error.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>

namespace sql {

namespace {

/// An integer of any stored type; nothing for other values.
std::optional<std::int64_t> toInteger(const jet::Value& value) {
    if (const auto* truth = std::get_if<bool>(&value)) return *truth ? -1 : 0;
    if (const auto* number = std::get_if<std::uint8_t>(&value)) return *number;
    if (const auto* number = std::get_if<std::int16_t>(&value)) return *number;
    if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
    return std::nullopt;
}

/// The exact value of an integer or an amount, in ten-thousandths.
std::optional<std::int64_t> toTenThousandths(const jet::Value& value) {
    if (const auto* amount = std::get_if<jet::Currency>(&value)) return amount->tenThousandths;
    if (const auto integer = toInteger(value)) return *integer * 10000;
    return std::nullopt;
}

/// A decimal number as digits before and after the point, without zeros that say nothing.
struct Decimal {
    bool negative = false;
    std::string whole;
    std::string fraction;
};

Decimal takeApart(std::string text) {
    Decimal decimal;
    decimal.negative = text.starts_with('-');
    if (decimal.negative) text.erase(0, 1);
    const std::size_t point = std::min(text.find('.'), text.size());
    decimal.fraction = point < text.size() ? text.substr(point + 1) : std::string{};
    decimal.whole = text.substr(0, point);
    decimal.whole.erase(0, std::min(decimal.whole.find_first_not_of('0'), decimal.whole.size()));
    decimal.fraction.erase(decimal.fraction.find_last_not_of('0') + 1);
    if (decimal.whole.empty() && decimal.fraction.empty()) decimal.negative = false;
    return decimal;
}

/// The decimal form of a number that has an exact one; nothing for floating-point numbers.
std::optional<Decimal> toDecimal(const jet::Value& value) {
    if (const auto* number = std::get_if<jet::Numeric>(&value)) {
        return takeApart(jet::toDecimalText(*number));
    }
    const auto amount = toTenThousandths(value);
    if (!amount) return std::nullopt;
    const std::uint64_t magnitude =
        *amount < 0 ? 0 - static_cast<std::uint64_t>(*amount) : static_cast<std::uint64_t>(*amount);
    const std::string fraction = std::to_string(10000 + magnitude % 10000).substr(1);
    return takeApart((*amount < 0 ? "-" : "") + std::to_string(magnitude / 10000) + "." + fraction);
}

std::weak_ordering compareDecimals(const Decimal& left, const Decimal& right) {
    if (left.negative != right.negative) return right.negative <=> left.negative;
    const Decimal& low = left.negative ? right : left;
    const Decimal& high = left.negative ? left : right;
    if (low.whole.size() != high.whole.size()) return low.whole.size() <=> high.whole.size();
    if (low.whole != high.whole) return low.whole <=> high.whole;
    return low.fraction <=> high.fraction;
}

/// A total order: what is not a number stands below all numbers.
std::weak_ordering compareDoubles(double left, double right) {
    if (left < right) return std::weak_ordering::less;
    if (left > right) return std::weak_ordering::greater;
    if (left == right) return std::weak_ordering::equivalent;
    return !std::isnan(left) <=> !std::isnan(right);
}

std::weak_ordering compareNumbers(const jet::Value& left, const jet::Value& right) {
    const auto leftAmount = toTenThousandths(left);
    const auto rightAmount = toTenThousandths(right);
    if (leftAmount && rightAmount) return *leftAmount <=> *rightAmount;
    const auto leftDecimal = toDecimal(left);
    const auto rightDecimal = toDecimal(right);
    if (leftDecimal && rightDecimal) return compareDecimals(*leftDecimal, *rightDecimal);
    return compareDoubles(toDouble(left), toDouble(right));
}

std::weak_ordering compareBytes(jet::Bytes left, jet::Bytes right) {
    return std::lexicographical_compare_three_way(left.begin(), left.end(), right.begin(),
                                                  right.end());
}

template <typename Unsigned>
void appendBigEndian(Unsigned bits, OrderKey& key) {
    for (int shift = static_cast<int>(sizeof bits) * 8 - 8; shift >= 0; shift -= 8) {
        key.push_back(static_cast<std::uint8_t>(bits >> shift));
    }
}

void appendDouble(double number, OrderKey& key) {
    if (std::isnan(number)) return appendBigEndian(std::uint64_t{0}, key);
    const auto bits = std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number);
    const std::uint64_t sign = std::uint64_t{1} << 63;
    appendBigEndian((bits & sign) != 0 ? ~bits : bits | sign, key);
}

void appendInteger(std::int64_t number, OrderKey& key) {
    appendBigEndian(static_cast<std::uint64_t>(number) ^ (std::uint64_t{1} << 63), key);
}

/// Numbers of one column have one scale, so that their magnitudes compare.
void appendNumeric(const jet::Numeric& number, OrderKey& key) {
    const bool zero = std::all_of(number.magnitude.begin(), number.magnitude.end(),
                                  [](std::uint32_t word) { return word == 0; });
    const bool negative = number.negative && !zero;
    key.push_back(negative ? 0 : 1);
    for (const std::uint32_t word : number.magnitude) {
        appendBigEndian(negative ? ~word : word, key);
    }
}

/// Bytes with an end that orders a beginning before the whole: 0 is written 0 1, the end is 0 0.
void appendBytes(jet::Bytes bytes, OrderKey& key) {
    for (const std::uint8_t byte : bytes) {
        key.push_back(byte);
        if (byte == 0) key.push_back(1);
    }
    key.insert(key.end(), {0, 0});
}

void appendAscending(const jet::Value& value, jet::ColumnType type, OrderKey& key) {
    if (const auto* text = std::get_if<std::u16string>(&value)) {
        jet::appendTextKey(*text, true, key);
    } else if (const auto* binary = std::get_if<jet::Binary>(&value)) {
        appendBytes(*binary, key);
    } else if (const auto* guid = std::get_if<jet::Guid>(&value)) {
        key.insert(key.end(), guid->bytes.begin(), guid->bytes.end());
    } else if (const auto* number = std::get_if<jet::Numeric>(&value)) {
        appendNumeric(*number, key);
    } else if (type == jet::ColumnType::Currency && std::holds_alternative<jet::Currency>(value)) {
        appendInteger(std::get<jet::Currency>(value).tenThousandths, key);
    } else {
        appendDouble(toDouble(value), key);
    }
}

}  // namespace

Domain domainOf(jet::ColumnType type) {
    switch (type) {
        case jet::ColumnType::Text:
        case jet::ColumnType::Memo:
            return Domain::Text;
        case jet::ColumnType::Date:
            return Domain::Date;
        case jet::ColumnType::Guid:
            return Domain::Guid;
        case jet::ColumnType::Binary:
        case jet::ColumnType::Ole:
        case jet::ColumnType::InternalBinary:
            return Domain::Binary;
        default:
            return Domain::Number;
    }
}

Domain domainOf(const jet::Value& value) {
    if (jet::isNull(value)) return Domain::Null;
    if (std::holds_alternative<std::u16string>(value)) return Domain::Text;
    if (std::holds_alternative<jet::Date>(value)) return Domain::Date;
    if (std::holds_alternative<jet::Guid>(value)) return Domain::Guid;
    if (std::holds_alternative<jet::Binary>(value)) return Domain::Binary;
    return Domain::Number;
}

bool isNumeric(Domain domain) {
    return domain == Domain::Number || domain == Domain::Date || domain == Domain::Null;
}

bool comparable(Domain left, Domain right) {
    return left == right || left == Domain::Null || right == Domain::Null ||
           (isNumeric(left) && isNumeric(right));
}

std::weak_ordering compareValues(const jet::Value& left, const jet::Value& right) {
    if (const auto* text = std::get_if<std::u16string>(&left)) {
        return jet::compareText(*text, std::get<std::u16string>(right));
    }
    if (const auto* binary = std::get_if<jet::Binary>(&left)) {
        return compareBytes(*binary, std::get<jet::Binary>(right));
    }
    if (const auto* guid = std::get_if<jet::Guid>(&left)) {
        return compareBytes(guid->bytes, std::get<jet::Guid>(right).bytes);
    }
    return compareNumbers(left, right);
}

double toDouble(const jet::Value& value) {
    if (const auto integer = toInteger(value)) return static_cast<double>(*integer);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* number = std::get_if<float>(&value)) return static_cast<double>(*number);
    if (const auto* date = std::get_if<jet::Date>(&value)) return date->days;
    if (const auto* amount = std::get_if<jet::Currency>(&value)) {
        return static_cast<double>(amount->tenThousandths) / 10000;
    }
    if (const auto* number = std::get_if<jet::Numeric>(&value)) {
        double magnitude = 0;
        for (const std::uint32_t word : number->magnitude) magnitude = magnitude * 0x1p32 + word;
        magnitude /= std::pow(10, number->scale);
        return number->negative ? -magnitude : magnitude;
    }
    throw Error{Fault::TypeMismatch, "Data type mismatch: a number is expected."};
}

std::optional<bool> truth(const jet::Value& value) {
    if (jet::isNull(value)) return std::nullopt;
    if (const auto* known = std::get_if<bool>(&value)) return *known;
    return toDouble(value) != 0;
}

void appendOrderKey(const jet::Value& value, jet::ColumnType type, bool ascending, OrderKey& key) {
    const std::size_t start = key.size();
    key.push_back(jet::isNull(value) ? 0 : 1);
    if (!jet::isNull(value)) appendAscending(value, type, key);
    if (ascending) return;
    std::for_each(key.begin() + static_cast<std::ptrdiff_t>(start), key.end(),
                  [](std::uint8_t& byte) { byte = static_cast<std::uint8_t>(~byte); });
}

}  // namespace sql
