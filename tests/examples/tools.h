// What surrounds the examples in the tools' headers: the names that they use without declaring them
// (see examples.awk). Everything is declared and nothing defined; examples are compiled, never run.
// The generated code includes the headers themselves before this one.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace examples {

struct tools {
    template <typename... Values>
    void use(const Values&...);

    std::shared_ptr<jet::Database> database;
    std::shared_ptr<const sql::Query> query;
    jet::PageReader& pages;
    const jet::Record& record;
    const jet::Column& column;
    std::FILE* out;
    unsigned threads;
    std::vector<traces::TraceOrigin> origins;
};

struct tools_plain_form_h : tools {
    std::string out;
};

}  // namespace examples
