// The log's system services on Windows: clock, volume, debugger and shell.
//
//   setLogSystem(windowsLogSystem);
//
// The user-interface thread.
#pragma once

#include "src/log/log_system.h"

LogSystem windowsLogSystem();
