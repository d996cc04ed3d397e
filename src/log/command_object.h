// A statement with its parameters, as the log shows it.
//
//   const CommandObject command{.text = u"SELECT * FROM tblTraces", .parameters = {}};
//
// A plain value; any thread.
#pragma once

#include <string>
#include <vector>

struct CommandObject {
    struct Parameter {
        std::u16string name;
        std::u16string value;
    };

    std::u16string text;
    std::vector<Parameter> parameters;
};
