#include "engine/sql/run/assignment.h"

#include "engine/jet/text.h"
#include "engine/sql/parse/token.h"
#include "engine/sql/values/calendar.h"
#include "engine/sql/values/comparison.h"
#include "engine/sql/values/decimal.h"
#include "engine/sql/values/error.h"
#include "engine/sql/values/text_form.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace sql {

namespace {

using jet::ColumnType;

/// Makes values fit for one column.
class Conversion {
public:
    explicit Conversion(const jet::Column& column) : column_{column} {}

    jet::Value convert(jet::Value value) const {
        if (jet::isNull(value)) return ofNull();
        switch (column_.type) {
            case ColumnType::Boolean:
                return toBoolean(value);
            case ColumnType::Byte:
                if (value == jet::Value{true}) return std::numeric_limits<std::uint8_t>::max();
                return toWhole<std::uint8_t>(value);
            case ColumnType::Integer:
                return toWhole<std::int16_t>(value);
            case ColumnType::Long:
                return toWhole<std::int32_t>(value);
            case ColumnType::Currency:
                return toCurrency(value);
            case ColumnType::Single:
                return toSingle(value);
            case ColumnType::Double:
                return toFinite(value);
            case ColumnType::Date:
                return toDate(value);
            case ColumnType::Text:
            case ColumnType::Memo:
                return toText(std::move(value));
            case ColumnType::Guid:
                return toGuid(value);
            case ColumnType::Numeric:
                return toNumeric(value);
            default:
                if (!std::holds_alternative<jet::Binary>(value)) failMismatch();
                return value;
        }
    }

private:
    std::string inColumn() const { return " in the column '" + jet::toUtf8(column_.name) + "'."; }

    [[noreturn]] void failRange() const {
        throw Error{Fault::Conversion, "Overflow: the number is too large" + inColumn()};
    }

    [[noreturn]] void failMismatch() const {
        throw Error{Fault::TypeMismatch,
                    "Type conversion failure: values of this type cannot be stored" + inColumn()};
    }

    [[noreturn]] void failText(const std::u16string& text) const {
        constexpr std::size_t kShown = 40;
        throw Error{Fault::Conversion, "Type conversion failure: '" +
                                           jet::toUtf8(text.substr(0, kShown)) +
                                           "' cannot be stored" + inColumn()};
    }

    jet::Value ofNull() const {
        return column_.type == ColumnType::Boolean ? jet::Value{false} : jet::Value{};
    }

    /// The decimal form of a number, a date or a text that is a number.
    Decimal toDecimal(const jet::Value& value) const {
        if (const auto* text = std::get_if<std::u16string>(&value)) {
            if (auto number = parseDecimal(*text)) return *number;
            failText(*text);
        }
        if (!isNumeric(domainOf(value))) failMismatch();
        std::u16string text;
        if (const auto* date = std::get_if<jet::Date>(&value)) {
            appendText(date->days, text);
        } else {
            appendText(value, text);
        }
        const auto number = parseDecimal(text);
        if (!number) failRange();  // infinite, or no number at all
        return *number;
    }

    double toNumber(const jet::Value& value) const {
        const auto* text = std::get_if<std::u16string>(&value);
        if (text == nullptr) {
            if (!isNumeric(domainOf(value))) failMismatch();
            return toDouble(value);
        }
        const Decimal number = toDecimal(value);
        const std::string digits =
            (number.negative ? "-0" : "0") + number.digits + "e" + std::to_string(number.exponent);
        double result = 0;
        const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), result);
        if (parsed.ec == std::errc::result_out_of_range) {
            // Too large, or so small that nothing is left of it.
            if (number.exponent + static_cast<int>(number.digits.size()) > 0) failRange();
            return 0;
        }
        return result;
    }

    jet::Value toBoolean(const jet::Value& value) const {
        if (std::holds_alternative<bool>(value)) return value;
        if (const auto* text = std::get_if<std::u16string>(&value)) {
            if (sameWord(*text, u"True")) return true;
            if (sameWord(*text, u"False")) return false;
        }
        return toNumber(value) != 0;
    }

    template <typename Whole>
    jet::Value toWhole(const jet::Value& value) const {
        if (std::holds_alternative<Whole>(value)) return value;
        const double rounded = std::nearbyint(toNumber(value));
        const bool fits = rounded >= std::numeric_limits<Whole>::min() &&
                          rounded <= std::numeric_limits<Whole>::max();
        if (!fits) failRange();
        return static_cast<Whole>(rounded);
    }

    jet::Value toCurrency(const jet::Value& value) const {
        if (std::holds_alternative<jet::Currency>(value)) return value;
        constexpr int kDecimals = 4;
        const Decimal number = toDecimal(value);
        const auto digits = roundedDigits(number, kDecimals);
        if (!digits) failRange();
        const std::string text = (number.negative ? "-0" : "0") + *digits;
        std::int64_t tenThousandths = 0;
        const auto parsed = std::from_chars(text.data(), text.data() + text.size(), tenThousandths);
        if (parsed.ec != std::errc{}) failRange();
        return jet::Currency{tenThousandths};
    }

    jet::Value toNumeric(const jet::Value& value) const {
        const auto* given = std::get_if<jet::Numeric>(&value);
        if (given != nullptr && given->scale == column_.scale) return value;
        const Decimal number = toDecimal(value);
        const auto digits = roundedDigits(number, column_.scale);
        if (!digits || digits->size() > column_.precision) failRange();
        jet::Numeric result{.negative = number.negative && !digits->empty(),
                            .scale = column_.scale};
        for (const char digit : *digits) appendDigit(result, static_cast<unsigned>(digit - '0'));
        return result;
    }

    static void appendDigit(jet::Numeric& number, unsigned digit) {
        constexpr unsigned kBits = 32;
        std::uint64_t carry = digit;
        for (auto word = number.magnitude.rbegin(); word != number.magnitude.rend(); ++word) {
            carry += std::uint64_t{*word} * 10;
            *word = static_cast<std::uint32_t>(carry);
            carry >>= kBits;
        }
    }

    jet::Value toFinite(const jet::Value& value) const {
        if (std::holds_alternative<double>(value) && !std::isinf(std::get<double>(value))) {
            return value;
        }
        const double number = toNumber(value);
        if (!std::isfinite(number)) failRange();
        return number;
    }

    jet::Value toSingle(const jet::Value& value) const {
        if (std::holds_alternative<float>(value)) return value;
        const double number = toNumber(value);
        if (!(std::fabs(number) <= std::numeric_limits<float>::max())) failRange();
        return static_cast<float>(number);
    }

    jet::Value toDate(const jet::Value& value) const {
        if (std::holds_alternative<jet::Date>(value)) return value;
        if (const auto* text = std::get_if<std::u16string>(&value)) {
            if (const auto date = parseDate(*text)) return *date;
            failText(*text);
        }
        const jet::Date date{toNumber(value)};
        if (!toCalendar(date)) failRange();
        return date;
    }

    jet::Value toText(jet::Value value) const {
        if (!std::holds_alternative<std::u16string>(value)) {
            if (domainOf(value) == Domain::Binary) failMismatch();
            std::u16string text;
            appendText(value, text);
            value = std::move(text);
        }
        const auto& text = std::get<std::u16string>(value);
        if (column_.type == ColumnType::Text && 2 * text.size() > column_.size) {
            throw Error{Fault::Conversion, "The text is too long to be stored" + inColumn()};
        }
        return value;
    }

    /// {xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}, with or without braces.
    jet::Value toGuid(const jet::Value& value) const {
        if (std::holds_alternative<jet::Guid>(value)) return value;
        const auto* text = std::get_if<std::u16string>(&value);
        if (text == nullptr) failMismatch();
        constexpr std::size_t kDigits = 32;
        std::u16string_view form = *text;
        if (form.starts_with(u'{') && form.ends_with(u'}')) form = form.substr(1, form.size() - 2);
        constexpr std::u16string_view kForm = u"xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
        std::string digits;
        if (form.size() != kForm.size()) failText(*text);
        for (std::size_t i = 0; i < form.size(); ++i) {
            if (kForm[i] == u'-' && form[i] != u'-') failText(*text);
            if (kForm[i] != u'-') digits += form[i] < 0x80 ? static_cast<char>(form[i]) : '?';
        }
        // The first three groups stand with their low bytes first.
        constexpr std::size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
        jet::Guid guid;
        for (std::size_t i = 0; i < kDigits / 2; ++i) {
            const char* const at = digits.data() + 2 * i;
            const auto parsed = std::from_chars(at, at + 2, guid.bytes[kOrder[i]], 16);
            if (parsed.ec != std::errc{} || parsed.ptr != at + 2) failText(*text);
        }
        return guid;
    }

    const jet::Column& column_;
};

}  // namespace

jet::Value toColumnValue(jet::Value value, const jet::Column& column) {
    return Conversion{column}.convert(std::move(value));
}

}  // namespace sql
