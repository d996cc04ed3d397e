// The texts that users see, by number. The viewer's own thread.
#pragma once

#include <string>

namespace modLocalize {

/// The text of the given number (1000 to 1057) in the language in use; empty if there is none.
std::u16string myLoadResString(unsigned id);

/// The three letters of the language in use, as they stand in names of files.
std::u16string currentLanguageCode();

}  // namespace modLocalize
