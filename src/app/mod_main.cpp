#include "src/app/mod_main.h"

#include "src/app/command_line.h"
#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"
#include "src/macros/mdl_traces.h"
#include "src/platform/system_formatter.h"
#include "src/platform/text.h"
#include "src/ui/main/main_display.h"
#include "toolkit/forms/application.h"
#include "toolkit/forms/dialogs.h"

#include <windows.h>

#include <memory>

using modLocalize::myLoadResString;

namespace modMain {
namespace {

constexpr std::u16string_view kLabel = u"[modMain]Main";

[[noreturn]] void endProcess() { ::ExitProcess(0); }

/// Brings the events of a fetch to the thread of the windows.
class WindowScheduler : public ado::Scheduler {
public:
    void post(std::function<void()> task) override { forms::post(std::move(task)); }
};

/// The window and what stands behind it live as long as the process.
frmMain& mainForm() {
    static frmMain form;
    return form;
}

void showDuplicateArgument(const DuplicateArgument& error) {
    const std::u16string text = myLoadResString(1044) + u"\r\n" + myLoadResString(1050) +
                                error.name() + myLoadResString(1007) + u"\r\n" +
                                myLoadResString(1035);
    forms::dialogs().showMessage(nullptr, {.title = toWide(myLoadResString(1022)),
                                           .text = toWide(text),
                                           .icon = forms::MessageIcon::critical});
    endProcess();
}

CommandLine parseProcessArguments() {
    const std::u16string commandLine = fromWide(::GetCommandLineW());
    try {
        return parseCommandLine(argumentsOf(commandLine));
    } catch (const DuplicateArgument& error) {
        showDuplicateArgument(error);
    }
    return {};
}

void createDiags() {
    static MainDisplay display{mainForm()};
    modDatabase::setDisplay(display);
    modDatabase::setMacroTraceReader(mdlTraces::initMacroTraces);
    diags() = std::make_unique<classDiags>(std::make_shared<WindowScheduler>(), display);
    diags()->rsDiags().setFormatter(std::make_shared<SystemFormatter>());
}

}  // namespace

void Main() {
    runProcedure(kLabel, Limit::TenErrors, [](Procedure& procedure) {
        CommandLine arguments;
        std::u16string path;
        procedure.step([] { mainForm().endProgram = endProcess; });
        procedure.step([&] { arguments = parseProcessArguments(); });
        procedure.step([&] {
            const auto db = arguments.find(u"db");
            path = db != arguments.end() ? db->second : mainForm().selectDatabase();
        });
        procedure.step([] { forms::doEvents(); });
        procedure.step([] { createDiags(); });
        if (!path.empty()) {
            procedure.step([&] { modDatabase::connectToDB(path); });
            procedure.step([] { modDatabase::openRecordsets(); });
            procedure.step([] { mainForm().reloadDBGrid(diags()->rsDiags()); });
        }
        procedure.step([] { mainForm().show(); });
    });
}

}  // namespace modMain
