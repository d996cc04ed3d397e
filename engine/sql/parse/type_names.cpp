#include "engine/sql/parse/type_names.h"

#include <algorithm>
#include <array>

namespace sql {

namespace {

using jet::ColumnType;

struct TypeName {
    std::u16string_view name;
    ColumnType type;
    bool autonumber = false;
};

/// INTEGER is the type of two bytes and INT that of four.
constexpr std::array<TypeName, 38> kTypeNames{{
    {u"YESNO", ColumnType::Boolean},      {u"BIT", ColumnType::Boolean},
    {u"BOOLEAN", ColumnType::Boolean},    {u"LOGICAL", ColumnType::Boolean},
    {u"BYTE", ColumnType::Byte},          {u"SHORT", ColumnType::Integer},
    {u"SMALLINT", ColumnType::Integer},   {u"INTEGER", ColumnType::Integer},
    {u"INTEGER2", ColumnType::Integer},   {u"LONG", ColumnType::Long},
    {u"INT", ColumnType::Long},           {u"INTEGER4", ColumnType::Long},
    {u"COUNTER", ColumnType::Long, true}, {u"AUTOINCREMENT", ColumnType::Long, true},
    {u"CURRENCY", ColumnType::Currency},  {u"MONEY", ColumnType::Currency},
    {u"SINGLE", ColumnType::Single},      {u"REAL", ColumnType::Single},
    {u"DOUBLE", ColumnType::Double},      {u"FLOAT", ColumnType::Double},
    {u"NUMBER", ColumnType::Double},      {u"DATETIME", ColumnType::Date},
    {u"DATE", ColumnType::Date},          {u"TIME", ColumnType::Date},
    {u"TEXT", ColumnType::Text},          {u"CHAR", ColumnType::Text},
    {u"VARCHAR", ColumnType::Text},       {u"STRING", ColumnType::Text},
    {u"MEMO", ColumnType::Memo},          {u"LONGTEXT", ColumnType::Memo},
    {u"NOTE", ColumnType::Memo},          {u"OLEOBJECT", ColumnType::Ole},
    {u"LONGBINARY", ColumnType::Ole},     {u"BINARY", ColumnType::Binary},
    {u"VARBINARY", ColumnType::Binary},   {u"GUID", ColumnType::Guid},
    {u"DECIMAL", ColumnType::Numeric},    {u"NUMERIC", ColumnType::Numeric},
}};

constexpr std::int32_t kMaxTextLength = 255;   ///< characters
constexpr std::int32_t kMaxBinaryBytes = 510;  ///< bytes
constexpr std::int32_t kMaxDigits = 28;

/// A whole number from `least` to `most`.
std::int32_t sizeBetween(TokenStream& tokens, std::int32_t least, std::int32_t most) {
    const auto* const size = std::get_if<std::int32_t>(&tokens.peek().value);
    if (tokens.peek().kind != TokenKind::Literal || size == nullptr || *size < least ||
        *size > most) {
        tokens.fail("Syntax error: the size of a column is out of range");
    }
    return std::get<std::int32_t>(tokens.take().value);
}

/// The size in parentheses, or the largest one if none is given.
std::int32_t optionalSize(TokenStream& tokens, std::int32_t most) {
    if (!tokens.takeSymbol(u"(")) return most;
    const std::int32_t size = sizeBetween(tokens, 1, most);
    tokens.expectSymbol(u")");
    return size;
}

void parseDigits(TokenStream& tokens, jet::NewColumn& column) {
    if (!tokens.takeSymbol(u"(")) return;
    const std::int32_t precision = sizeBetween(tokens, 1, kMaxDigits);
    column.precision = static_cast<std::uint8_t>(precision);
    column.scale = 0;
    if (tokens.takeSymbol(u",")) {
        column.scale = static_cast<std::uint8_t>(sizeBetween(tokens, 0, precision));
    }
    tokens.expectSymbol(u")");
}

}  // namespace

void parseType(TokenStream& tokens, jet::NewColumn& column) {
    const auto found = std::find_if(kTypeNames.begin(), kTypeNames.end(),
                                    [&](const auto& type) { return tokens.isWord(type.name); });
    if (found == kTypeNames.end()) {
        tokens.fail("Syntax error in field definition: a type is expected");
    }
    tokens.take();
    column.type = found->type;
    column.autonumber = found->autonumber;
    switch (column.type) {
        case ColumnType::Text:
            column.size = static_cast<std::uint16_t>(2 * optionalSize(tokens, kMaxTextLength));
            break;
        case ColumnType::Binary:
            column.size = static_cast<std::uint16_t>(optionalSize(tokens, kMaxBinaryBytes));
            break;
        case ColumnType::Numeric:
            parseDigits(tokens, column);
            break;
        default:
            break;
    }
}

}  // namespace sql
