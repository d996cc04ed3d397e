// What command line programs need from the system.
//
//   int main(int count, char** values) {
//       const std::vector<std::string> arguments = plain::arguments(count, values);
//       plain::makeOutputBinary();
//   }
//
// The thread of main(), before there are others: one thread.
#pragma once

#include <string>
#include <vector>

namespace plain {

/// The arguments in UTF-8, without the program's name.
std::vector<std::string> arguments(int count, char** values);

/// Switches standard output to binary mode.
void makeOutputBinary();

}  // namespace plain
