// A statement with its parameters, as the log shows it.
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
