// A system whose arguments are UTF-8 and whose output is bytes.
#ifndef _WIN32

#include "tools/console.h"

namespace plain {

std::vector<std::string> arguments(int count, char** values) {
    return {values + 1, values + count};
}

void makeOutputBinary() {}

}  // namespace plain

#endif
