// The log's system on Windows: the clock, the volume, the debugger and the shell as they are.
//
//   setLogSystem(windowsLogSystem);
//
// The user-interface thread.
#pragma once

#include "src/log/log_system.h"

LogSystem windowsLogSystem();
