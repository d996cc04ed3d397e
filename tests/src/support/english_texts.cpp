// The texts by number for tests that run without the program's resources: out of the same file
// that the resources are made of.
#include "src/i18n/mod_localize.h"

#include <filesystem>
#include <fstream>
#include <map>

namespace modLocalize {
namespace {

std::map<unsigned, std::u16string> readTexts() {
    std::map<unsigned, std::u16string> texts;
    std::ifstream file{std::filesystem::path{VORELLE_SOURCE_DIR} / "languages" / "ENU.txt"};
    for (std::string line; std::getline(file, line);) {
        const std::size_t open = line.find('"');
        const std::size_t close = line.rfind('"');
        if (open == std::string::npos || close <= open) continue;
        const auto number = static_cast<unsigned>(std::stoul(line));
        texts[number] = {line.begin() + static_cast<std::ptrdiff_t>(open) + 1,
                         line.begin() + static_cast<std::ptrdiff_t>(close)};
    }
    return texts;
}

}  // namespace

std::u16string myLoadResString(unsigned id) {
    static const std::map<unsigned, std::u16string> texts = readTexts();
    const auto found = texts.find(id);
    return found == texts.end() ? std::u16string{} : found->second;
}

}  // namespace modLocalize
