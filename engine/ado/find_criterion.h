// What Recordset::find looks for: "Field op value".
//
//   ado::FindCriterion criterion{u"Trace Like '*timeout*'", query->columns()};
//   while (!criterion.matches(*rows, row)) ++row;
//
// Belongs to one thread: it remembers what it found for texts that many rows share.
#pragma once

#include "engine/ado/rows.h"
#include "engine/sql/like/like.h"

#include <optional>
#include <string_view>
#include <vector>

namespace ado {

class FindCriterion {
public:
    /// Operators are = <> < > <= >= and LIKE; values 'text', #date#, a number, True, False and Null
    /// (with = and <> only). A quote inside a text is doubled.
    /// Throws Error: 3265 for an unknown column, 3001 for anything else that is wrong.
    FindCriterion(std::u16string_view text, const std::vector<sql::OutputColumn>& columns);

    /// Null matches only "= Null". Throws jet::Error for failures of the storage.
    bool matches(Rows& rows, std::uint32_t row);

    /// The LIKE pattern if the column is a text column; else null.
    const std::u16string* textPattern() const;
    std::size_t column() const { return column_; }

private:
    enum class Operator { Equal, NotEqual, Less, Greater, LessOrEqual, GreaterOrEqual, Like };
    enum class Known : std::uint8_t { Unknown, Matches, DoesNot };

    bool isOfText() const;
    static Operator takeOperator(std::u16string_view& text);
    void setValue(std::u16string_view literal);
    bool holds(const jet::Value& value) const;
    bool evaluate(Rows& rows, std::uint32_t row);
    bool matchesPattern(Rows& rows, std::uint32_t row);

    std::size_t column_ = 0;
    jet::ColumnType type_ = jet::ColumnType::Text;
    Operator operator_ = Operator::Equal;
    jet::Value value_;
    std::optional<sql::LikePattern> pattern_;
    std::vector<Known> byCode_;
    std::u16string text_;
};

}  // namespace ado
