// Parses the program's arguments into switches and their values.
//
//   auto arguments = modMain::parseCommandLine(u"-db \"C:\\My Traces\\a.mdb\"");
//   arguments[u"db"];  // C:\My Traces\a.mdb
//
// A plain function of its text; any thread may call it.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace modMain {

/// Switch names and their values. Names are case-sensitive.
using CommandLine = std::map<std::u16string, std::u16string>;

/// A switch was given twice (run-time error 457, key already present).
class DuplicateArgument : public std::runtime_error {
public:
    explicit DuplicateArgument(std::u16string name)
        : std::runtime_error{"a switch is given twice"}, name_{std::move(name)} {}

    /// The name of the switch as typed.
    const std::u16string& name() const { return name_; }

private:
    std::u16string name_;
};

/// Parses the arguments, without the program's path.
///
/// A switch begins with "/" (even within quotes) or, outside quotes, with "-"; its name ends at a
/// blank or tab, and the words that follow, without the blanks between them, are its value. Double
/// quotes protect blanks and "-" and are removed. The name is stored in lower case when a blank, a
/// tab or the end of the text closes it or its value, and as typed when the next switch does.
/// Throws DuplicateArgument.
CommandLine parseCommandLine(std::u16string_view arguments);

}  // namespace modMain
