// Removes the blanks that pad captions. They are not wanted in sentences and by screen readers.
//
//   text = trimmed(caption) + L": " + value;
//
// A plain function; any thread.
#pragma once

#include <string>

namespace grid {

inline std::wstring trimmed(const std::wstring& text) {
    const std::size_t begin = text.find_first_not_of(L' ');
    return begin == std::wstring::npos
               ? std::wstring()
               : text.substr(begin, text.find_last_not_of(L' ') + 1 - begin);
}

}  // namespace grid
