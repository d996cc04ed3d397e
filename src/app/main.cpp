// The program's entry: what the parts need is put together here.
#include "src/app/program_start_up.h"
#include "src/app/toolkit_failures.h"
#include "src/crash/crash_report.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/macros/mdl_traces.h"
#include "src/platform/windows_log_system.h"
#include "src/platform/windows_registry.h"
#include "src/services/services.h"
#include "src/ui/main/frm_main.h"
#include "toolkit/forms/application.h"
#include "toolkit/forms/window.h"

#include <windows.h>

namespace {

/// What an event procedure without steps lets go.
void logUnexpected(const std::exception_ptr& error) {
    theLog().log(describe(toFailure(error)), classLog::kError, u"[modMain]event");
}

/// Never destroyed: the last lines are written by whoever ends the program.
classLog& makeLog() { return *new classLog{windowsLogSystem()}; }

int runProgram(frmMain& form) {
    const forms::Application application;
    ProgramStartUp startUp{form};
    modMain::Main(startUp);
    return forms::run();
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
    installCrashReports();
    classLog& log = makeLog();
    // The window and what stands behind it live as long as the process.
    static RegistryAPI::WindowsRegistry machine;
    static frmMain form;
    static const ServicesInUse inUse{{.log = &log,
                                      .registry = &machine,
                                      .events = &form,
                                      .runWhilePainting = forms::runWhilePainting,
                                      .readFailure = readToolkitFailure,
                                      .readMacroTraces = mdlTraces::initMacroTraces}};
    forms::setUnexpectedErrorHandler(logUnexpected);
    const int code = runProgram(form);
    log.flush();
    return code;
}
