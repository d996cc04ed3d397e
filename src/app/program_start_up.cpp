#include "src/app/program_start_up.h"

#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/i18n/mod_localize.h"
#include "src/log/class_log.h"
#include "src/platform/arguments.h"
#include "src/platform/mdl_priority.h"
#include "src/platform/system_formatter.h"
#include "src/platform/user_dialogs.h"
#include "src/text/text.h"
#include "src/ui/main/frm_main.h"
#include "toolkit/forms/application.h"

#include <windows.h>

#include <memory>

using modLocalize::text;
using modLocalize::Text;
using modLocalize::wideText;

namespace {

[[noreturn]] void endProcess() {
    theLog().flush();
    ::ExitProcess(0);
}

/// Brings the events of a fetch to the thread of the windows.
class WindowScheduler : public ado::Scheduler {
public:
    void post(std::function<void()> task) override { forms::post(std::move(task)); }
};

[[noreturn]] void refuseDuplicate(const modMain::DuplicateArgument& error) {
    const std::u16string message =
        text(Text::ArgumentsAreInvalid) + u"\r\n" + text(Text::ArgumentNotAllowed) + error.name() +
        text(Text::GivenTwice) + u"\r\n" + text(Text::RemoveDuplicateArguments);
    userDialogs().showMessage(nullptr, {.title = wideText(Text::ArgumentError),
                                        .text = toWide(message),
                                        .icon = forms::MessageIcon::critical});
    endProcess();
}

}  // namespace

ProgramStartUp::ProgramStartUp(frmMain& form) : form_{form} { form_.endProgram = endProcess; }

void ProgramStartUp::activatePreviousInstance() {
    if (instance_.raiseFirst(frmMain::kClassName)) endProcess();
}

bool ProgramStartUp::ChangePriority(std::uint32_t priorityClass) {
    return mdlPriority::ChangePriority(priorityClass);
}

std::optional<modMain::CommandLine> ProgramStartUp::parseCommandLine() {
    try {
        const std::u16string commandLine = fromWide(::GetCommandLineW());
        return modMain::parseCommandLine(program::argumentsOf(commandLine));
    } catch (const modMain::DuplicateArgument& error) {
        refuseDuplicate(error);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::u16string ProgramStartUp::selectDatabase() { return form_.selectDatabase(); }

void ProgramStartUp::doEvents() { forms::doEvents(); }

void ProgramStartUp::createDiags() {
    diags() = std::make_unique<classDiags>(std::make_shared<WindowScheduler>(), form_);
    diags()->rsDiags().setFormatter(std::make_shared<SystemFormatter>());
}

void ProgramStartUp::connectToDB(const std::u16string& path) { modDatabase::connectToDB(path); }

void ProgramStartUp::openRecordsets() { modDatabase::openRecordsets(); }

void ProgramStartUp::reloadDBGrid() { form_.reloadDBGrid(diags()->rsDiags()); }

void ProgramStartUp::showMainWindow() { form_.show(); }
