#include "src/i18n/mod_localize.h"

#include "src/i18n/language_codes.h"
#include "src/log/procedure.h"
#include "src/platform/program.h"
#include "src/platform/system_error.h"
#include "src/platform/user_dialogs.h"
#include "src/services/services.h"
#include "src/text/text.h"
#include "toolkit/forms/form.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

namespace modLocalize {
namespace {

constexpr std::u16string_view kPrefix = u"QRXbrandingres_";
constexpr std::size_t kCodeLength = 3;

/// The numbers of the resources that hold the texts.
constexpr unsigned kTextsInBlock = 16;
constexpr unsigned kFirstBlock = kFirstText / kTextsInBlock + 1;
constexpr unsigned kLastBlock = kLastText / kTextsInBlock + 1;

struct State {
    std::uint16_t language = 0;
    HMODULE library = nullptr;
    std::vector<std::u16string> installed{u""};
};

State& state() {
    static State shared;
    return shared;
}

std::u16string folderOfLibraries() {
    return services().languageFolder.empty() ? program::folder() : services().languageFolder;
}

void freeLibrary() {
    if (state().library != nullptr) ::FreeLibrary(std::exchange(state().library, nullptr));
}

/// Bytes of a library that are there from an address on. What is mapped byte by byte, which the
/// handle's lowest bits tell, ends where its file does; its last page goes on with zeros.
std::size_t bytesFrom(const void* address, HMODULE library, std::uintmax_t fileSize) {
    MEMORY_BASIC_INFORMATION region{};
    if (::VirtualQuery(address, &region, sizeof region) == 0 || region.State != MEM_COMMIT)
        return 0;
    const std::uint64_t at = reinterpret_cast<std::uintptr_t>(address);
    const std::uint64_t handle = reinterpret_cast<std::uintptr_t>(library);
    std::uint64_t end = reinterpret_cast<std::uintptr_t>(region.BaseAddress) + region.RegionSize;
    if ((handle & 3) == 1) end = std::min(end, handle - 1 + fileSize);
    return end > at ? static_cast<std::size_t>(end - at) : 0;
}

/// Whether the texts of a block, each behind its length, end within it.
bool isSound(const WORD* block, std::size_t units) {
    for (unsigned text = 0; text < kTextsInBlock; ++text) {
        if (units == 0 || *block >= units) return false;
        const std::size_t taken = std::size_t{1} + *block;
        units -= taken;
        block += taken;
    }
    return true;
}

/// The system trusts what stands in the file, and would follow a damaged one anywhere.
bool isSound(HMODULE library, std::uintmax_t fileSize) {
    for (unsigned number = kFirstBlock; number <= kLastBlock; ++number) {
        const HRSRC block = ::FindResourceW(library, MAKEINTRESOURCEW(number), RT_STRING);
        if (block == nullptr) continue;  // these texts are English then
        const auto* const texts =
            static_cast<const WORD*>(::LockResource(::LoadResource(library, block)));
        const std::size_t size = ::SizeofResource(library, block);
        if (texts == nullptr || bytesFrom(texts, library, fileSize) < size) return false;
        if (!isSound(texts, size / sizeof(WORD))) return false;
    }
    return true;
}

/// As data: nothing in the library runs, and what it refers to is not looked for.
void loadLibrary() {
    constexpr DWORD kAsData = DONT_RESOLVE_DLL_REFERENCES | LOAD_LIBRARY_AS_DATAFILE;
    const std::u16string path = folderOfLibraries() + u"\\" + std::u16string{kPrefix} +
                                codeOfLanguage(state().language) + u".dll";
    state().library = ::LoadLibraryExW(toWide(path).c_str(), nullptr, kAsData);
    if (state().library == nullptr) return;
    if (isSound(state().library, std::filesystem::file_size(toWide(path)))) return;
    freeLibrary();
    throw RuntimeError{RuntimeError::kInvalidResource, u"Invalid format in resource file"};
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

/// A failure is told to the user and not to the log, and the next part follows.
void attempt(std::u16string_view label, const std::u16string& beginning,
             const std::function<void()>& action) {
    runProcedure(label, {.quiet = true}, [&](Procedure& procedure) {
        procedure.step(action, [&](const Failure& failure) {
            userDialogs().showMessage(
                nullptr, {.title = kProductTitle, .text = toWide(beginning + failure.description)});
            return Resume::Next;
        });
    });
}

std::u16string textOf(HMODULE library, unsigned id) {
    std::array<wchar_t, 1200> buffer{};
    const int length = ::LoadStringW(library, id, buffer.data(), static_cast<int>(buffer.size()));
    return length < 1 ? std::u16string{}
                      : fromWide({buffer.data(), static_cast<std::size_t>(length)});
}

}  // namespace

void InitalizeLanguages() {
    const auto attemptStep = [](const std::function<void()>& action) {
        attempt(u"[modLocalize]InitalizeLanguages", u"Error in InitalizeLanguages: ", action);
    };
    attemptStep([] {
        if (state().language == 0) state().language = ::GetUserDefaultLangID();
    });
    attemptStep(freeLibrary);
    attemptStep(loadLibrary);
    attemptStep(listInstalled);
    attemptStep(applyFonts);
}

void applyLanguageFont(forms::Form& form) {
    const LanguageFont* const font = fontOfLanguage(state().language);
    form.setFace(font == nullptr ? std::nullopt
                                 : std::optional{forms::FontFace{.name = toWide(font->name),
                                                                 .charset = font->characterSet}});
}

std::u16string myLoadResString(unsigned id) {
    std::u16string text;
    attempt(u"[modLocalize]myLoadResString", u"error in myLoadResString: ", [&] {
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

}  // namespace modLocalize
