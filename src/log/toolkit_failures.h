// Failures of the toolkit with their own numbers. Called once at start-up.
#pragma once

/// Lets toFailure read the toolkit's exceptions.
void readToolkitFailures();
