#include "src/i18n/mod_localize.h"

#include "src/platform/text.h"

#include <windows.h>

namespace modLocalize {

std::u16string myLoadResString(unsigned id) {
    // With a buffer of length 0 the call gives the address of the text in the program itself.
    const wchar_t* text = nullptr;
    const int length =
        ::LoadStringW(::GetModuleHandleW(nullptr), id, reinterpret_cast<wchar_t*>(&text), 0);
    return length <= 0 ? std::u16string{} : fromWide({text, static_cast<std::size_t>(length)});
}

/// The program's own texts are English, and it has no others.
std::u16string currentLanguageCode() { return u"ENU"; }

}  // namespace modLocalize
