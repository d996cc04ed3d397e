// Runs another program with a time limit: independent readers of the files that tests make.
//
//   if (!fixture::hasProgram("mdb-export")) GTEST_SKIP() << "mdb-export is not installed";
//   const auto result = fixture::runProgram({"mdb-export", file, "tblTraces"});
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace fixture {

struct ProgramResult {
    int exitCode = -1;  ///< -1 if the program did not end by itself
    bool timedOut = false;
    std::chrono::milliseconds processorTime{};  ///< of all its threads
    std::size_t peakMemory = 0;                 ///< bytes resident
    std::string output;
    std::string errors;
};

/// Whether the program is found on the search path. Always false under Windows, where no test
/// program starts others.
bool hasProgram(std::string_view name);

/// Runs the program with nothing on its standard input and waits for its end, or kills it when the
/// limit is over. Throws std::runtime_error if it cannot be started.
ProgramResult runProgram(const std::vector<std::string>& arguments,
                         std::chrono::seconds limit = std::chrono::seconds{60});

}  // namespace fixture
