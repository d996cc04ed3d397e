// The texts that users see, by name, in the language in use: those of a resource library beside the
// program, or in the folder that the services in use name, and where it has none the program's own,
// which are English.
//
//   using namespace modLocalize;
//   cmdApplyFilter.setCaption(wideText(Text::ApplyFilter));
//   setNotice(modLocalize::text(Text::SearchingFor) + wanted);
//
// The user-interface thread.
#pragma once

#include "src/i18n/text_names.h"
#include "src/text/text.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace forms {
class Form;
}

namespace modLocalize {

/// Loads the texts of the language in use, the user's own if none has been chosen, lists the
/// installed languages, and sets the font that the language needs in the loaded forms. If a step
/// fails, a message box says so and the next step follows. Without a library, or with a damaged
/// one, all texts are English; a missing library is not a failure.
void InitalizeLanguages();

/// Sets the font that the language in use needs in a form and all its controls, or restores their
/// own. For forms that are loaded after InitalizeLanguages.
void applyLanguageFont(forms::Form& form);

/// The text of the given number (1000 to 1057) in the language in use; empty if there is none, and
/// after a failure, which is shown in a message box.
std::u16string myLoadResString(unsigned id);

/// The text of the given name, as languages/ENU.txt gives names to the numbers.
inline std::u16string text(Text name) { return myLoadResString(static_cast<unsigned>(name)); }

#ifdef _WIN32
/// The program's name where none of the texts can be asked for: they may be what failed, or are not
/// loaded yet.
inline constexpr const wchar_t* kProductTitle = L"Vorelle Diagnostic Viewer";

/// The same, as forms and controls take it.
inline std::wstring wideText(Text name) { return toWide(text(name)); }
#endif

/// The system's identifier of the language in use; 0 before InitalizeLanguages.
std::uint16_t currentLanguage();

/// Takes effect with the next InitalizeLanguages.
void setCurrentLanguage(std::uint16_t id);

/// The code of the language in use, as used in file names.
std::u16string currentLanguageCode();

/// Codes of the resource libraries beside the program, spelled as their files are; one empty code
/// if there are none.
const std::vector<std::u16string>& installedLanguages();

/// The system's name of a language, in the system's own language; "(error)" if it is unknown. By
/// identifier, and by code.
std::u16string languageName(std::uint16_t id);
std::u16string languageNameOfCode(std::u16string_view code);

/// The code of the language that the user chose for the system.
std::u16string userLanguageCode();

}  // namespace modLocalize
