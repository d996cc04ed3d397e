// The text form of values, for grids and exports.
//
//   std::u16string text;
//   ado::ValueFormatter{}.append(value, text);
//
// A formatter is immutable; any thread may call it. The default has one fixed form; a program that
// follows the system's settings derives its own.
#pragma once

#include "engine/jet/value.h"

#include <string>

namespace ado {

class ValueFormatter {
public:
    virtual ~ValueFormatter() = default;

    /// Appends the text of `value`; nothing for Null.
    void append(const jet::Value& value, std::u16string& out) const;

protected:
    /// "yyyy-mm-dd hh:mm:ss", rounded to the second; the number of days if it is outside the
    /// calendar.
    virtual void appendDate(jet::Date date, std::u16string& out) const;

    /// A number that may have decimals: Currency, Single, Double or Numeric. With a point.
    virtual void appendDecimal(const jet::Value& number, std::u16string& out) const;

    /// "True" or "False".
    virtual void appendTruth(bool truth, std::u16string& out) const;
};

}  // namespace ado
