// Formats values according to the user's system settings.
//
//   recordset.setFormatter(std::make_shared<SystemFormatter>());
//
// Any thread.
#pragma once

#include "engine/ado/value_formatter.h"

class SystemFormatter : public ado::ValueFormatter {
protected:
    void appendDate(jet::Date date, std::u16string& out) const override;
    void appendDecimal(const jet::Value& number, std::u16string& out) const override;
};
