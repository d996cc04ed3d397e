// Start-up: command line, database, main window. The viewer's own thread.
#pragma once

namespace modMain {

/// Whether the message server itself runs on this machine: long work then leaves it time.
inline bool runningOnServer = false;

/// Reads the command line, opens the database that it names or the user chooses, and shows the
/// main window; that happens also when there is no database to show.
void Main();

}  // namespace modMain
