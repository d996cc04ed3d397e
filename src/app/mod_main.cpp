#include "src/app/mod_main.h"

#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/platform/mdl_priority.h"
#include "src/platform/running_on_server.h"

namespace modMain {
namespace {

constexpr std::u16string_view kLabel = u"[modMain]Main";

void stepAsideForServer(StartUp& startUp) {
    if (startUp.getVersion().major <= 0) return;
    runningOnServer = true;
    if (!startUp.ChangePriority(mdlPriority::kBelowNormal)) {
        theLog().log(u"Unable to change process priority.", classLog::kWarning, kLabel);
    }
}

std::u16string chooseDatabase(StartUp& startUp, const CommandLine& arguments) {
    const auto db = arguments.find(u"db");
    return db != arguments.end() ? db->second : startUp.selectDatabase();
}

}  // namespace

void Main(StartUp& startUp) {
    runProcedure(kLabel, {.limit = Limit::TenErrors, .timed = true}, [&](Procedure& procedure) {
        procedure.step([&] {
            if (startUp.hasPreviousInstance()) startUp.activatePreviousInstance();
        });
        procedure.step([&] { startUp.InitalizeLanguages(); });
        procedure.step([&] { stepAsideForServer(startUp); });
        CommandLine arguments;
        procedure.step([&] { arguments = startUp.parseCommandLine().value_or(CommandLine{}); });
        std::u16string path;
        procedure.step([&] { path = chooseDatabase(startUp, arguments); });
        procedure.step([&] { startUp.doEvents(); });
        procedure.step([&] { startUp.createDiags(); });
        if (!path.empty()) {
            procedure.step([&] { startUp.connectToDB(path); });
            procedure.step([&] { startUp.openRecordsets(); });
            procedure.step([&] { startUp.reloadDBGrid(); });
        }
        procedure.step([&] { startUp.showMainWindow(); });
    });
}

}  // namespace modMain
