// Failures of the toolkit that have numbers of their own.
//
//   const ServicesInUse inUse{{.readFailure = readToolkitFailure}};
//
// Any thread.
#pragma once

#include "src/log/procedure.h"

#include <exception>
#include <optional>

/// Nothing for exceptions that are not the toolkit's.
std::optional<Failure> readToolkitFailure(const std::exception_ptr& error);
