#include "engine/ado/find_criterion.h"

#include "engine/ado/connection_string.h"
#include "engine/ado/error.h"
#include "engine/jet/text.h"
#include "engine/sql/values/calendar.h"
#include "engine/sql/values/comparison.h"

#include <array>
#include <charconv>

namespace ado {
namespace {

struct FieldName {
    std::u16string_view name;
    std::u16string_view rest;
};

FieldName splitName(std::u16string_view text) {
    text = trimmed(text);
    const bool bracketed = !text.empty() && text.front() == u'[';
    const std::size_t end = bracketed ? text.find(u']') : text.find_first_of(u" \t=<>");
    if (end == std::u16string_view::npos || end == 0) {
        throwInvalidArgument("a criterion without an operator.");
    }
    const std::size_t start = bracketed ? 1 : 0;
    return {text.substr(start, end - start), trimmed(text.substr(end + start))};
}

/// The text between quotes, doubled ones inside made single. The literal is nothing but this.
std::u16string unquoted(std::u16string_view literal) {
    std::u16string text;
    std::size_t i = 1;
    for (; i < literal.size(); ++i) {
        if (literal[i] == u'\'') {
            if (i + 1 >= literal.size() || literal[i + 1] != u'\'') break;
            ++i;
        }
        text.push_back(literal[i]);
    }
    if (i + 1 != literal.size()) throwInvalidArgument("a criterion with an unbalanced quote.");
    return text;
}

std::optional<double> parseNumber(std::u16string_view text) {
    const std::string narrow = jet::toUtf8(trimmed(text));
    double number = 0;
    const char* const end = narrow.data() + narrow.size();
    const auto result = std::from_chars(narrow.data(), end, number);
    if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
    return number;
}

jet::Value parseLiteral(std::u16string_view literal) {
    if (literal.empty()) throwInvalidArgument("a criterion without a value.");
    if (literal.front() == u'\'') return unquoted(literal);
    if (literal.front() == u'#') {
        const bool closed = literal.size() > 1 && literal.back() == u'#';
        const auto date =
            closed ? sql::parseDate(literal.substr(1, literal.size() - 2)) : std::nullopt;
        if (!date) throwInvalidArgument("a criterion with a value that is no date.");
        return *date;
    }
    if (equalsIgnoringCase(literal, u"Null")) return {};
    if (equalsIgnoringCase(literal, u"True")) return true;
    if (equalsIgnoringCase(literal, u"False")) return false;
    if (const auto number = parseNumber(literal)) return *number;
    throwInvalidArgument("a criterion with a value that is neither text, date nor number.");
}

/// Brings a literal into the domain of the column: a text may stand for a number or a date.
jet::Value fitLiteral(jet::Value literal, jet::ColumnType type) {
    const sql::Domain wanted = sql::domainOf(type);
    if (jet::isNull(literal) || sql::comparable(sql::domainOf(literal), wanted)) return literal;
    if (const auto* text = std::get_if<std::u16string>(&literal)) {
        if (wanted == sql::Domain::Date) {
            if (const auto date = sql::parseDate(*text)) return *date;
        } else if (wanted == sql::Domain::Number) {
            if (const auto number = parseNumber(*text)) return *number;
        }
    }
    throwInvalidArgument("a criterion that compares a column with a value of another kind.");
}

}  // namespace

FindCriterion::FindCriterion(std::u16string_view text,
                             const std::vector<sql::OutputColumn>& columns) {
    auto [name, rest] = splitName(text);
    while (column_ < columns.size() && !equalsIgnoringCase(columns[column_].name, name)) ++column_;
    if (column_ == columns.size()) throwItemNotFound(name);
    type_ = columns[column_].type;
    operator_ = takeOperator(rest);
    setValue(trimmed(rest));
}

FindCriterion::Operator FindCriterion::takeOperator(std::u16string_view& text) {
    constexpr std::array<std::pair<std::u16string_view, Operator>, 7> kOperators{{
        {u"<>", Operator::NotEqual},
        {u"<=", Operator::LessOrEqual},
        {u">=", Operator::GreaterOrEqual},
        {u"=", Operator::Equal},
        {u"<", Operator::Less},
        {u">", Operator::Greater},
        {u"LIKE", Operator::Like},
    }};
    for (const auto& [spelling, meaning] : kOperators) {
        if (!equalsIgnoringCase(text.substr(0, spelling.size()), spelling)) continue;
        text.remove_prefix(spelling.size());
        return meaning;
    }
    throwInvalidArgument("a criterion without a known operator.");
}

void FindCriterion::setValue(std::u16string_view literal) {
    value_ = parseLiteral(literal);
    if (operator_ == Operator::Like) {
        const auto* pattern = std::get_if<std::u16string>(&value_);
        if (!pattern) throwInvalidArgument("a criterion with LIKE and no text.");
        try {
            pattern_.emplace(*pattern);
        } catch (const sql::Error& error) {
            throwInvalidArgument(error.what());
        }
        return;
    }
    const bool ordered = operator_ != Operator::Equal && operator_ != Operator::NotEqual;
    if (jet::isNull(value_) && ordered) throwInvalidArgument("a criterion that orders Null.");
    value_ = fitLiteral(std::move(value_), type_);
}

bool FindCriterion::isOfText() const {
    return type_ == jet::ColumnType::Text || type_ == jet::ColumnType::Memo;
}

const std::u16string* FindCriterion::textPattern() const {
    return pattern_ && isOfText() ? std::get_if<std::u16string>(&value_) : nullptr;
}

bool FindCriterion::matches(Rows& rows, std::uint32_t row) {
    const std::int64_t code = rows.code(row, column_);
    if (code < 0) return evaluate(rows, row);
    const auto place = static_cast<std::size_t>(code);
    if (place >= byCode_.size()) byCode_.resize(place + 1, Known::Unknown);
    if (byCode_[place] == Known::Unknown) {
        byCode_[place] = evaluate(rows, row) ? Known::Matches : Known::DoesNot;
    }
    return byCode_[place] == Known::Matches;
}

bool FindCriterion::evaluate(Rows& rows, std::uint32_t row) {
    return pattern_ ? matchesPattern(rows, row) : holds(rows.value(row, column_));
}

bool FindCriterion::matchesPattern(Rows& rows, std::uint32_t row) {
    if (!isOfText()) {
        const jet::Value value = rows.value(row, column_);
        if (jet::isNull(value)) return false;
        text_.clear();
        ValueFormatter{}.append(value, text_);
        return pattern_->matches(text_);
    }
    text_.clear();
    if (!rows.appendText(row, column_, ValueFormatter{}, text_)) return false;
    // An empty text and Null look alike here, but only one of them is LIKE '*'.
    if (text_.empty() && jet::isNull(rows.value(row, column_))) return false;
    return pattern_->matches(text_);
}

bool FindCriterion::holds(const jet::Value& value) const {
    if (jet::isNull(value) || jet::isNull(value_)) {
        const bool bothNull = jet::isNull(value) && jet::isNull(value_);
        const bool oneNull = jet::isNull(value) != jet::isNull(value_);
        if (operator_ == Operator::Equal) return bothNull;
        return operator_ == Operator::NotEqual && oneNull && jet::isNull(value_);
    }
    const std::weak_ordering order = sql::compareValues(value, value_);
    switch (operator_) {
        case Operator::Equal:
            return order == 0;
        case Operator::NotEqual:
            return order != 0;
        case Operator::Less:
            return order < 0;
        case Operator::Greater:
            return order > 0;
        case Operator::LessOrEqual:
            return order <= 0;
        default:
            return order >= 0;
    }
}

}  // namespace ado
