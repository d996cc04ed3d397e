// Connection strings: "Provider=...;Data Source=...;Persist Security Info=False".
//
//   ado::ConnectionString parts{text};
//   path = parts.value(u"Data Source");
//
// Plain values; any thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ado {

class ConnectionString {
public:
    /// Names are not case-sensitive; blanks around names and values are ignored. A value may be in
    /// single or double quotes, which are doubled inside it. A piece without a name belongs to the
    /// value before it, since file names may contain a semicolon. Throws Error{3001} for an open
    /// quote and if the first piece has no name.
    explicit ConnectionString(std::u16string_view text);

    /// The last value of that name; empty if there is none.
    std::u16string value(std::u16string_view name) const;

private:
    std::vector<std::pair<std::u16string, std::u16string>> values_;
};

/// Equal except for the case of ASCII letters.
bool equalsIgnoringCase(std::u16string_view left, std::u16string_view right);

std::u16string_view trimmed(std::u16string_view text);

}  // namespace ado
