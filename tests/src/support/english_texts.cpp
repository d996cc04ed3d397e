// The texts by number for tests that run without the program's resources: out of the same file
// that the resources are made of.
#include "src/i18n/mod_localize.h"
#include "tests/support/language_table.h"

namespace modLocalize {

std::u16string myLoadResString(unsigned id) {
    static const fixture::LanguageTable texts = fixture::readLanguageTable("ENU");
    const auto found = texts.find(id);
    return found == texts.end() ? std::u16string{} : found->second;
}

}  // namespace modLocalize
