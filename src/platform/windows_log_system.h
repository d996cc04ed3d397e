// The log's system services on Windows: clock, volume, debugger and shell.
//
//   classLog log{windowsLogSystem()};
//   const ServicesInUse inUse{{.log = &log}};
//
// The user-interface thread.
#pragma once

#include "src/log/log_system.h"

LogSystem windowsLogSystem();
