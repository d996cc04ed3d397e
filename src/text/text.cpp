#include "src/text/text.h"

std::u16string toText(std::int64_t number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

std::u16string fromAscii(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }
