// The arguments of a process, cut out of its command line.
//
//   program::argumentsOf(u"\"C:\\Program Files\\viewer.exe\" -db a.mdb");  // -db a.mdb
//
// A plain function of its text; any thread may call it.
#pragma once

#include <string_view>

namespace program {

/// Everything behind the program's path, which may stand in quotes.
std::u16string_view argumentsOf(std::u16string_view commandLine);

}  // namespace program
