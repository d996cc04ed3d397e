// Failures of the toolkit with their own numbers.
//
//   readToolkitFailures();  // once, at start-up
//
// The user-interface thread.
#pragma once

/// Lets toFailure read the toolkit's exceptions.
void readToolkitFailures();
