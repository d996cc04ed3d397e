#include "src/platform/system_formatter.h"

#include <windows.h>
#include <oleauto.h>

namespace {

/// Appends the text that `convert` makes; false if it makes none.
template <typename Convert>
bool appendConverted(std::u16string& out, Convert convert) {
    BSTR text = nullptr;
    if (FAILED(convert(&text)) || text == nullptr) return false;
    out.append(text, text + ::SysStringLen(text));
    ::SysFreeString(text);
    return true;
}

}  // namespace

void SystemFormatter::appendDate(jet::Date date, std::u16string& out) const {
    const bool done = appendConverted(out, [&](BSTR* text) {
        return ::VarBstrFromDate(date.days, LOCALE_USER_DEFAULT, 0, text);
    });
    if (!done) ValueFormatter::appendDate(date, out);
}

void SystemFormatter::appendDecimal(const jet::Value& number, std::u16string& out) const {
    bool done = false;
    if (const auto* const money = std::get_if<jet::Currency>(&number)) {
        done = appendConverted(out, [&](BSTR* text) {
            return ::VarBstrFromCy({.int64 = money->tenThousandths}, LOCALE_USER_DEFAULT, 0, text);
        });
    } else if (const auto* const single = std::get_if<float>(&number)) {
        done = appendConverted(out, [&](BSTR* text) {
            return ::VarBstrFromR4(*single, LOCALE_USER_DEFAULT, 0, text);
        });
    } else if (const auto* const real = std::get_if<double>(&number)) {
        done = appendConverted(
            out, [&](BSTR* text) { return ::VarBstrFromR8(*real, LOCALE_USER_DEFAULT, 0, text); });
    }
    if (!done) ValueFormatter::appendDecimal(number, out);
}
