// Start-up of the real program: the system's command line, the main window, the dialogs.
//
//   ProgramStartUp startUp{form};
//   modMain::Main(startUp);
//
// The user-interface thread.
#pragma once

#include "src/app/instance.h"
#include "src/app/mod_main.h"
#include "src/i18n/mod_localize.h"
#include "src/ui/main/frm_main.h"

class ProgramStartUp : public modMain::StartUp {
public:
    /// `form` has to outlive the object. It shows the database.
    explicit ProgramStartUp(frmMain& form);

    bool hasPreviousInstance() override { return instance_.isSecond(); }
    void activatePreviousInstance() override;
    void InitalizeLanguages() override { modLocalize::InitalizeLanguages(); }
    VersionRecord getVersion() override { return Utilities::getVersion(); }
    bool ChangePriority(std::uint32_t priorityClass) override;
    std::optional<modMain::CommandLine> parseCommandLine() override;
    std::u16string selectDatabase() override;
    void doEvents() override;
    void createDiags() override;
    void connectToDB(const std::u16string& path) override;
    void openRecordsets() override;
    void reloadDBGrid() override;
    void showMainWindow() override;

private:
    frmMain& form_;
    Instance instance_;
};
