// The program's entry.
#include "src/app/mod_main.h"
#include "src/log/procedure.h"
#include "src/platform/text.h"
#include "toolkit/forms/application.h"
#include "toolkit/forms/window.h"

#include <windows.h>

namespace {

void writeToDebugger(std::u16string_view label, const std::u16string& message) {
    const std::wstring line = toWide(label) + L" " + toWide(message) + L"\n";
    ::OutputDebugStringW(line.c_str());
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    setFailureReporter(writeToDebugger);
    forms::setUnexpectedErrorHandler([](const std::exception_ptr& error) {
        writeToDebugger(u"[frmMain]", describe(toFailure(error)));
    });
    const forms::Application application;
    modMain::Main();
    return forms::run();
}
