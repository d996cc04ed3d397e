#include "src/platform/arguments.h"

#include <cstddef>

namespace program {
namespace {

constexpr char16_t kQuote = u'"';

bool isBlank(char16_t c) { return c == u' ' || c == u'\t'; }

}  // namespace

std::u16string_view argumentsOf(std::u16string_view commandLine) {
    bool inQuotes = false;
    std::size_t at = 0;
    for (; at < commandLine.size() && (inQuotes || !isBlank(commandLine[at])); ++at) {
        if (commandLine[at] == kQuote) inQuotes = !inQuotes;
    }
    while (at < commandLine.size() && isBlank(commandLine[at])) ++at;
    return commandLine.substr(at);
}

}  // namespace program
