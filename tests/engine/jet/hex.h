// Bytes as upper-case hex digits, for what tests expect and what they print.
#pragma once

#include "engine/jet/format/types.h"

#include <string>
#include <string_view>

namespace jet {

inline std::string hex(Bytes bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 0xF]);
    }
    return text;
}

}  // namespace jet
