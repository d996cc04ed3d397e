// The order of texts in the user's language.
//
//   bool before = TextOrder{}(text, L"Queue");
//
// Any thread; no state.
#pragma once

#include <string>

namespace grid {

/// Whether `a` comes before `b`. Different texts that the language takes for the same have an
/// order, too.
struct TextOrder {
    bool operator()(const std::wstring& a, const std::wstring& b) const;
};

}  // namespace grid
