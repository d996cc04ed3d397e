// The system's error codes as run-time failures.
//
//   if (::CreateDirectoryW(folder.c_str(), nullptr) == 0) throwFileError(::GetLastError());
//
// Any thread.
#pragma once

#include <cstdint>
#include <string>

/// Throws RuntimeError with the customary number for a file error.
[[noreturn]] void throwFileError(std::uint32_t code);

/// The system's message for a code, without a line end; empty if there is none.
std::u16string systemMessage(std::uint32_t code);
