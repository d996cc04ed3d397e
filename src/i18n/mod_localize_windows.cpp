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

void listInstalled() {
    std::vector<std::u16string>& installed = state().installed;
    installed.clear();
    WIN32_FIND_DATAW entry{};
    const HANDLE search = ::FindFirstFileW(toWide(folderOfLibraries() + u"\\*").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = entry.cFileName;
            const bool folder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (folder || !beginsWithPrefix(name)) continue;
            installed.push_back(fromWide(name.substr(kPrefix.size(), kCodeLength)));
        } while (::FindNextFileW(search, &entry));
        ::FindClose(search);
    }
    if (installed.empty()) installed.emplace_back();
}

void applyFont() {
    const LanguageFont* const font = fontOfLanguage(state().language);
    if (font == nullptr) return;
    for (forms::Form* form : forms::loadedForms()) {
        forms::Font changed = form->font();
        changed.name = toWide(std::u16string{font->name});
        changed.charset = font->characterSet;
        form->setFont(changed);
    }
}

/// A failure is told to the user, and the next part follows.
void attempt(const std::u16string& beginning, const std::function<void()>& action) {
    try {
        action();
    } catch (...) {
        const Failure failure = toFailure(std::current_exception());
        forms::dialogs().showMessage(
            nullptr, {.title = L"", .text = toWide(beginning + failure.description)});
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
    attempt(beginning, applyFont);
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

void setLanguageFolder(std::u16string folder) { state().folder = std::move(folder); }

}  // namespace modLocalize
