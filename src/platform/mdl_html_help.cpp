#include "src/platform/mdl_html_help.h"

#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/platform/program.h"
#include "src/text/text.h"

#include <filesystem>
#include <system_error>

namespace mdlHTMLHelp {
namespace {

constexpr UINT kDisplayTopic = 0;
constexpr UINT kHelpContext = 15;
constexpr Convention kConvention{.limit = Limit::TenErrors, .numbersLines = true};

using HtmlHelp = HWND(WINAPI*)(HWND, const wchar_t*, UINT, DWORD_PTR);

HWND& helpWindow() {
    static HWND window = nullptr;
    return window;
}

/// Not every installation has the viewer of help files, so the program does without until it is
/// asked for help.
HtmlHelp loadHtmlHelp() {
    static const HMODULE library =
        ::LoadLibraryExW(L"hhctrl.ocx", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const FARPROC found = library == nullptr ? nullptr : ::GetProcAddress(library, "HtmlHelpW");
    if (found == nullptr) {
        throw RuntimeError{RuntimeError::kLibraryMissing, u"Error in loading DLL hhctrl.ocx"};
    }
    return reinterpret_cast<HtmlHelp>(reinterpret_cast<void*>(found));
}

std::u16string fileFor(const std::u16string& folder, std::u16string_view language) {
    return folder + u"\\VorelleDiagnosticViewer_" + std::u16string{language} + u".chm";
}

}  // namespace

std::u16string helpFileIn(const std::u16string& folder, std::u16string_view language) {
    const std::u16string file = fileFor(folder, language);
    std::error_code unreachable;
    return std::filesystem::is_regular_file(toWide(file), unreachable) ? file
                                                                       : fileFor(folder, u"ENU");
}

std::u16string getHelpFileName(std::u16string_view language) {
    std::u16string file;
    runProcedure(u"[mdlHTMLHelp]getHelpFileName", kConvention, [&](Procedure& procedure) {
        procedure.step([&] { file = helpFileIn(program::folder(), language); });
    });
    return file;
}

void showCHMHelp(HWND owner, const std::u16string& file, std::optional<std::uint32_t> contextId) {
    constexpr std::u16string_view kLabel = u"[mdlHTMLHelp]showCHMHelp";
    runProcedure(kLabel, kConvention, [&](Procedure& procedure) {
        procedure.step([&] {
            helpWindow() =
                loadHtmlHelp()(owner, toWide(file).c_str(),
                               contextId ? kHelpContext : kDisplayTopic, contextId.value_or(0));
        });
        procedure.step([&] {
            const auto handle = reinterpret_cast<INT_PTR>(helpWindow());
            theLog().log(u"hwndHelp returned = " + toText(handle), classLog::kInfo, kLabel);
        });
    });
}

void closeHelp() {
    if (helpWindow() != nullptr && ::IsWindow(helpWindow())) {
        ::SendMessageW(helpWindow(), WM_CLOSE, 0, 0);
    }
}

HWND hwndHelp() { return helpWindow(); }

}  // namespace mdlHTMLHelp
