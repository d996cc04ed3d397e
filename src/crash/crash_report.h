// What a crash leaves behind: the log up to its last line, and a minidump beside it.
//
//   installCrashReports();  // first thing in the program
//
// The user-interface thread. Also makes access violations in a step of a procedure ordinary
// failures, where that is possible: on that thread, in the program's own code, in the 64-bit
// program.
#pragma once

/// On the thread that runs the procedures.
void installCrashReports();
