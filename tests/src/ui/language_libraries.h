// Folders of language libraries for tests: copies of the real ones.
//
//   LanguageFolder languages{{"DEU", "FRA"}};
//   languages.use(1031);
//
// The program's own folder and English are in force again when the folder goes.
#pragma once

#include "src/i18n/mod_localize.h"
#include "src/platform/program.h"
#include "src/text/text.h"
#include "tests/src/support/services_with.h"
#include "tests/support/expected.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

inline constexpr std::uint16_t kEnglish = 1033;

inline std::filesystem::path builtLibrary(const std::string& code) {
    return std::filesystem::path{toWide(program::folder())} / ("QRXbrandingres_" + code + ".dll");
}

class LanguageFolder {
public:
    explicit LanguageFolder(const std::vector<std::string>& codes) {
        for (const std::string& code : codes) folder_.copy(builtLibrary(code));
        inUse_.emplace(servicesWith(&Services::languageFolder, fromWide(folder_.path().wstring())));
    }
    /// The loaded library has to go before its file can.
    ~LanguageFolder() {
        inUse_.reset();
        use(kEnglish);
    }
    LanguageFolder(const LanguageFolder&) = delete;
    LanguageFolder& operator=(const LanguageFolder&) = delete;

    static void use(std::uint16_t language) {
        modLocalize::setCurrentLanguage(language);
        modLocalize::InitalizeLanguages();
    }

    const std::filesystem::path& path() const { return folder_.path(); }

private:
    fixture::TemporaryFolder folder_;
    std::optional<ServicesInUse> inUse_;
};
