// Start-up: single instance, server, command line, database, main window.
//
//   ProgramStartUp startUp{form};
//   modMain::Main(startUp);
//
// The user-interface thread.
#pragma once

#include "src/app/command_line.h"
#include "src/platform/utilities.h"

#include <cstdint>
#include <optional>
#include <string>

namespace modMain {

/// The parts of start-up: the program's own, or a test's.
class StartUp {
public:
    virtual ~StartUp() = default;

    /// Whether another viewer is running.
    virtual bool hasPreviousInstance() = 0;
    /// Raises the other viewer's window and ends the process; returns if it finds none.
    virtual void activatePreviousInstance() = 0;
    virtual void InitalizeLanguages() = 0;
    virtual VersionRecord getVersion() = 0;
    virtual bool ChangePriority(std::uint32_t priorityClass) = 0;
    /// The switches of this process; nothing after an error. Ends the process if one is given
    /// twice.
    virtual std::optional<CommandLine> parseCommandLine() = 0;
    /// Empty if the user cancelled.
    virtual std::u16string selectDatabase() = 0;
    virtual void doEvents() = 0;
    virtual void createDiags() = 0;
    virtual void connectToDB(const std::u16string& path) = 0;
    virtual void openRecordsets() = 0;
    virtual void reloadDBGrid() = 0;
    virtual void showMainWindow() = 0;
};

/// Reads the command line, opens the database that it names or the user chooses, and shows the
/// main window, even if there is no database to show.
void Main(StartUp& startUp);

}  // namespace modMain
