#include "src/i18n/mod_localize.h"

#include "src/i18n/language_codes.h"
#include "src/log/procedure.h"
#include "src/platform/program.h"
#include "src/platform/system_error.h"
#include "src/platform/text.h"
#include "toolkit/forms/dialogs.h"
#include "toolkit/forms/form.h"

#include <windows.h>

#include <array>
#include <functional>
#include <optional>
#include <utility>

namespace modLocalize {
namespace {

constexpr std::u16string_view kPrefix = u"QRXbrandingres_";
constexpr std::size_t kCodeLength = 3;

/// Not out of the texts: they may be what failed.
constexpr const wchar_t* kProduct = L"Vorelle Diagnostic Viewer";

struct State {
    std::uint16_t language = 0;
    HMODULE library = nullptr;
    std::vector<std::u16string> installed{u""};
    std::optional<std::u16string> folder;
};

State& state() {
    static State shared;
    return shared;
}

std::u16string folderOfLibraries() { return state().folder.value_or(program::folder()); }

void freeLibrary() {
    if (state().library != nullptr) ::FreeLibrary(std::exchange(state().library, nullptr));
}

/// As data: nothing in the library runs, and what it refers to is not looked for.
void loadLibrary() {
    constexpr DWORD kAsData = DONT_RESOLVE_DLL_REFERENCES | LOAD_LIBRARY_AS_DATAFILE;
    const std::u16string path = folderOfLibraries() + u"\\" + std::u16string{kPrefix} +
                                codeOfLanguage(state().language) + u".dll";
    state().library = ::LoadLibraryExW(toWide(path).c_str(), nullptr, kAsData);
}

bool beginsWithPrefix(const std::wstring& name) {
    return name.size() >= kPrefix.size() &&
           ::CompareStringOrdinal(name.c_str(), static_cast<int>(kPrefix.size()),
                                  toWide(std::u16string{kPrefix}).c_str(),
                                  static_cast<int>(kPrefix.size()), TRUE) == CSTR_EQUAL;
}

/// In the order in which the folder lists them. A root without files is found empty.
std::vector<std::u16string> codesInFolder() {
    std::vector<std::u16string> codes;
    WIN32_FIND_DATAW entry{};
    const HANDLE search = ::FindFirstFileW(toWide(folderOfLibraries() + u"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        if (const DWORD code = ::GetLastError(); code != ERROR_FILE_NOT_FOUND) throwFileError(code);
        return codes;
    }
    do {
        const std::wstring name = entry.cFileName;
        const bool folder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (folder || !beginsWithPrefix(name)) continue;
        codes.push_back(fromWide(name.substr(kPrefix.size(), kCodeLength)));
    } while (::FindNextFileW(search, &entry));
    ::FindClose(search);
    return codes;
}

void listInstalled() {
    state().installed = {u""};
    std::vector<std::u16string> codes = codesInFolder();
    if (!codes.empty()) state().installed = std::move(codes);
}

void applyFonts() {
    for (forms::Form* form : forms::loadedForms()) applyLanguageFont(*form);
}

/// A failure is told to the user, and the next part follows.
void attempt(const std::u16string& beginning, const std::function<void()>& action) {
    try {
        action();
    } catch (...) {
        const Failure failure = toFailure(std::current_exception());
        forms::dialogs().showMessage(
            nullptr, {.title = kProduct, .text = toWide(beginning + failure.description)});
    }
}

std::u16string textOf(HMODULE library, unsigned id) {
    std::array<wchar_t, 1200> buffer{};
    const int length = ::LoadStringW(library, id, buffer.data(), static_cast<int>(buffer.size()));
    return length < 1 ? std::u16string{}
                      : fromWide({buffer.data(), static_cast<std::size_t>(length)});
}

}  // namespace

void InitalizeLanguages() {
    const std::u16string beginning = u"Error in InitalizeLanguages: ";
    attempt(beginning, [] {
        if (state().language == 0) state().language = ::GetUserDefaultLangID();
    });
    attempt(beginning, freeLibrary);
    attempt(beginning, loadLibrary);
    attempt(beginning, listInstalled);
    attempt(beginning, applyFonts);
}

void applyLanguageFont(forms::Form& form) {
    const LanguageFont* const font = fontOfLanguage(state().language);
    form.setFace(font == nullptr ? std::nullopt
                                 : std::optional{forms::FontFace{.name = toWide(font->name),
                                                                 .charset = font->characterSet}});
}

std::u16string myLoadResString(unsigned id) {
    std::u16string text;
    attempt(u"error in myLoadResString: ", [&] {
        if (state().library != nullptr) text = textOf(state().library, id);
        if (text.empty()) text = textOf(::GetModuleHandleW(nullptr), id);
    });
    return text;
}

std::uint16_t currentLanguage() { return state().language; }

void setCurrentLanguage(std::uint16_t id) { state().language = id; }

std::u16string currentLanguageCode() { return codeOfLanguage(state().language); }

const std::vector<std::u16string>& installedLanguages() { return state().installed; }

std::u16string languageName(std::uint16_t id) {
    std::array<wchar_t, 256> buffer{};
    const DWORD length =
        id == 0 ? 0 : ::VerLanguageNameW(id, buffer.data(), static_cast<DWORD>(buffer.size()));
    // A name that is too long for the buffer is cut off, though its whole length is told.
    return length < 1 ? std::u16string{u"(error)"}
                      : fromWide(std::wstring_view{buffer.data()}.substr(0, length));
}

std::u16string languageNameOfCode(std::u16string_view code) {
    return languageName(languageOfCode(code));
}

std::u16string userLanguageCode() { return codeOfLanguage(::GetUserDefaultLangID()); }

void setLanguageFolder(std::u16string folder) { state().folder = std::move(folder); }

}  // namespace modLocalize
