// The program's entry.
#include "src/app/program_start_up.h"
#include "src/app/toolkit_failures.h"
#include "src/crash/crash_report.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/platform/windows_log_system.h"
#include "src/platform/windows_registry.h"
#include "toolkit/forms/application.h"
#include "toolkit/forms/window.h"

#include <windows.h>

namespace {

/// What an event procedure without steps lets go.
void logUnexpected(const std::exception_ptr& error) {
    theLog().log(describe(toFailure(error)), classLog::kError, u"[modMain]event");
}

int runProgram() {
    const forms::Application application;
    ProgramStartUp startUp;
    modMain::Main(startUp);
    return forms::run();
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    setLogSystem(windowsLogSystem);
    installCrashReports();
    readToolkitFailures();
    RegistryAPI::WindowsRegistry machine;
    RegistryAPI::setRegistry(&machine);
    forms::setUnexpectedErrorHandler(logUnexpected);
    const int code = runProgram();
    theLog().flush();
    return code;
}
