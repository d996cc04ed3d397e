// Opening files and addresses with the programs that the user has for them.
#include "src/log/procedure.h"
#include "src/platform/utilities.h"
#include "src/text/text.h"

#include <windows.h>
#include <shellapi.h>

namespace Utilities {
namespace {

/// What the shell answers is an error's number, or something above these.
constexpr INT_PTR kMaxError = 32;

void openWithShell(std::u16string_view label, const std::u16string& what) {
    runProcedure(label, Limit::None, [&](Procedure& procedure) {
        procedure.step([&] {
            const auto answer = reinterpret_cast<INT_PTR>(::ShellExecuteW(
                nullptr, L"Open", toWide(what).c_str(), nullptr, nullptr, SW_SHOWNORMAL));
            if (answer > kMaxError) return;
            throw RuntimeError{static_cast<std::int32_t>(answer), u"Unable to open " + what};
        });
    });
}

}  // namespace

void LaunchApplication(const std::u16string& path) {
    openWithShell(u"[Utilities]LaunchApplication", path);
}

void LaunchInternetExplorer(const std::u16string& address) {
    openWithShell(u"[Utilities]LaunchInternetExplorer", address);
}

}  // namespace Utilities
