// Turns an access violation within a step into an exception of the language, so that the step fails
// like any other and the objects on the way are destroyed.
//
//   catchAccessViolationsInSteps();  // once, at start-up
//
// Only where the compiler knows that an instruction may throw: in the code of the viewer itself
// (-fnon-call-exceptions), in functions that have nothing to clean up, and not while the stack is
// used up. Everywhere else the program ends with a crash report. The user-interface thread.
#pragma once

/// On the thread that runs the procedures. Does nothing in the 32-bit program.
void catchAccessViolationsInSteps();
