// Makes a trace database of made-up lines, as a server's diagnostic tool might have written it.
//
//   maketraces FILE --rows N [--seed S] [--format older|newer|oldest] [--macros]
//
// The same arguments make the same bytes. Exit 0, 1 if the file cannot be made, 2 for wrong usage.
#include "engine/jet/database.h"
#include "engine/jet/text.h"
#include "engine/jet/write/new_database.h"
#include "engine/jet/write/schema.h"
#include "engine/jet/write/table_writer.h"
#include "tools/console.h"
#include "tools/traces/macro_definitions.h"
#include "tools/traces/trace_generator.h"

#include <charconv>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using jet::ColumnType;
using jet::Value;

constexpr const char* kUsage =
    "usage: maketraces FILE --rows N [--seed S] [--format older|newer|oldest] [--macros]\n";

/// When every database made here says it was made: 2006-05-02.
constexpr jet::Date kMade{38839};

enum class Format { Oldest, Older, Newer };

struct Request {
    std::filesystem::path file;
    traces::TraceOptions options;
    Format format = Format::Older;
    bool macros = false;
};

std::uint64_t parseNumber(const std::string& text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
        throw std::invalid_argument{"'" + text + "' is no number"};
    }
    return number;
}

Format parseFormat(const std::string& name) {
    if (name == "older") return Format::Older;
    if (name == "newer") return Format::Newer;
    if (name == "oldest") return Format::Oldest;
    throw std::invalid_argument{"--format takes older, newer or oldest"};
}

Request parse(const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments[0].starts_with("--")) {
        throw std::invalid_argument{"a file is missing"};
    }
    Request request{.file = std::filesystem::path{jet::toUtf16(arguments[0])}, .options = {}};
    bool rows = false;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& option = arguments[i];
        if (option == "--macros") {
            request.macros = true;
            continue;
        }
        if (i + 1 == arguments.size()) throw std::invalid_argument{option + " needs a value"};
        const std::string& value = arguments[++i];
        if (option == "--rows") {
            request.options.rows = parseNumber(value);
            rows = true;
        } else if (option == "--seed") {
            request.options.seed = parseNumber(value);
        } else if (option == "--format") {
            request.format = parseFormat(value);
        } else {
            throw std::invalid_argument{"unknown option " + option};
        }
    }
    if (!rows) throw std::invalid_argument{"--rows is missing"};
    return request;
}

// ---- Tables -------------------------------------------------------------------------------------

jet::NewColumn text(std::u16string name, unsigned characters) {
    return {.name = std::move(name),
            .type = ColumnType::Text,
            .size = static_cast<std::uint16_t>(2 * characters)};
}

jet::NewColumn column(std::u16string name, ColumnType type) {
    return {.name = std::move(name), .type = type};
}

constexpr unsigned kNameCharacters = 50;
constexpr unsigned kKeyCharacters = 160;

std::vector<jet::NewColumn> traceColumns(Format format) {
    std::vector<jet::NewColumn> columns{
        column(u"Date", ColumnType::Date),   text(u"Process", kNameCharacters),
        text(u"Source", kNameCharacters),    column(u"TraceNumber", ColumnType::Long),
        text(u"Component", kNameCharacters), column(u"TraceLevel", ColumnType::Integer)};
    if (format != Format::Oldest) {
        columns.push_back(column(u"Port", ColumnType::Long));
        columns.push_back(text(u"CallId", kNameCharacters));
    }
    columns.push_back(column(u"Trace", ColumnType::Memo));
    if (format == Format::Newer) {
        columns.push_back(column(u"Highlight", ColumnType::Boolean));
        columns.push_back(text(u"qrxIndex", kKeyCharacters));
        columns.push_back(column(u"NotePresent", ColumnType::Boolean));
        columns.push_back(text(u"Notes", 255));
    }
    return columns;
}

template <typename T>
Value optionalValue(const std::optional<T>& value) {
    return value ? Value{*value} : Value{};
}

void fillRow(const traces::Trace& trace, const traces::TraceOrigin& origin, Format format,
             std::vector<Value>& row) {
    row.assign(
        {trace.date, origin.process, origin.source, trace.number, origin.component, origin.level});
    if (format != Format::Oldest) {
        row.push_back(optionalValue(trace.port));
        row.push_back(optionalValue(trace.callId));
    }
    row.emplace_back(trace.text);
    if (format == Format::Newer) {
        row.emplace_back(trace.highlight);
        row.emplace_back(origin.key());
        row.emplace_back(trace.note.has_value());
        row.push_back(optionalValue(trace.note));
    }
}

/// Adds all lines; returns which origins occur.
std::vector<bool> addTraces(jet::WriteContext& context, traces::TraceGenerator& generator,
                            Format format) {
    jet::TableWriter table{context, context.database.table(u"tblTraces")->definition()};
    std::vector<bool> met(generator.origins().size());
    traces::Trace trace;
    std::vector<Value> row;
    while (generator.next(trace)) {
        met[trace.origin] = true;
        fillRow(trace, generator.origins()[trace.origin], format, row);
        table.insert(row);
    }
    table.finish();
    return met;
}

void addUniqueFilters(jet::WriteContext& context, const std::vector<traces::TraceOrigin>& origins,
                      const std::vector<bool>& met) {
    jet::createTable(context, u"tblUniqueFilters",
                     {text(u"Component", kNameCharacters), text(u"Process", kNameCharacters),
                      column(u"TraceLevel", ColumnType::Integer), text(u"Source", kNameCharacters),
                      text(u"qrxIndex", kKeyCharacters)});
    jet::TableWriter table{context, context.database.table(u"tblUniqueFilters")->definition()};
    for (std::size_t i = 0; i < origins.size(); ++i) {
        if (!met[i]) continue;
        const traces::TraceOrigin& origin = origins[i];
        table.insert(std::vector<Value>{origin.component, origin.process, origin.level,
                                        origin.source, origin.key()});
    }
    table.finish();
}

void addMacros(jet::WriteContext& context, const std::vector<traces::TraceOrigin>& origins) {
    jet::TableWriter table{context, context.database.table(u"tblMacroTraces")->definition()};
    for (const std::u16string& xml : traces::macroDefinitions(origins)) {
        table.insert(std::vector<Value>{xml});
    }
    table.finish();
}

void make(const Request& request) {
    jet::createDatabase(request.file, kMade);
    const auto database = jet::Database::open(request.file);
    database->setClock([] { return kMade; });
    traces::TraceGenerator generator{request.options};
    database->write([&](jet::WriteContext& context) {
        jet::createTable(context, u"tblTraces", traceColumns(request.format));
        jet::createTable(context, u"tblMacroTraces", {column(u"Data", ColumnType::Memo)});
        const std::vector<bool> met = addTraces(context, generator, request.format);
        if (request.format == Format::Newer) {
            jet::createIndex(context, u"tblTraces",
                             {.name = u"qrxIndex", .columns = {{u"qrxIndex"}}});
            addUniqueFilters(context, generator.origins(), met);
        }
        if (request.macros) addMacros(context, generator.origins());
    });
    database->commit();
}

int run(const std::vector<std::string>& arguments) {
    Request request;
    try {
        request = parse(arguments);
    } catch (const std::invalid_argument& error) {
        std::cerr << "maketraces: " << error.what() << '\n' << kUsage;
        return 2;
    }
    try {
        make(request);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "maketraces: " << error.what() << '\n';
        return 1;
    }
}

}  // namespace

int main(int count, char** values) { return run(plain::arguments(count, values)); }
