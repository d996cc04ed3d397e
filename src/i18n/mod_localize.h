// The texts that users see, by number, in the language in use: those of a resource library beside
// the program, and where it has none the program's own, which are English.
//
// The viewer's own thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace modLocalize {

/// Loads the texts of the language in use, the user's own if none has been chosen, lists the
/// languages that are installed, and gives the loaded forms the font that the language needs. A
/// failure is shown in a message box.
void InitalizeLanguages();

/// The text of the given number (1000 to 1057) in the language in use; empty if there is none.
std::u16string myLoadResString(unsigned id);

/// The system's identifier of the language in use; 0 before InitalizeLanguages.
std::uint16_t currentLanguage();

/// Takes effect with the next InitalizeLanguages.
void setCurrentLanguage(std::uint16_t id);

/// The code of the language in use, as it stands in names of files.
std::u16string currentLanguageCode();

/// Codes of the resource libraries beside the program, spelled as their files are; one empty code
/// if there are none.
const std::vector<std::u16string>& installedLanguages();

/// Where the libraries are looked for; the program's folder unless a test says otherwise.
void setLanguageFolder(std::u16string folder);

}  // namespace modLocalize
