// What a command line program asks of its system.
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

/// Standard output passes on bytes as they are.
void makeOutputBinary();

}  // namespace plain
