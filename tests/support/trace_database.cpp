#include "tests/support/trace_database.h"

#include <algorithm>

namespace fixture {

using jet::ColumnType;

namespace {

constexpr unsigned kNameCharacters = 50;
constexpr unsigned kKeyCharacters = 160;

template <typename T>
Cell optionalCell(const std::optional<T>& value) {
    return value ? Cell{*value} : kNull;
}

void addMacroTraces(FixtureBuilder& builder, bool compressed) {
    TableBuilder& table =
        builder.addTable({.name = u"tblMacroTraces", .columns = {memoColumn(u"Data", compressed)}});
    for (const std::u16string& data : macroTraces()) table.insert({data});
}

void addUniqueFilters(FixtureBuilder& builder, const std::vector<TraceOrigin>& origins,
                      const std::vector<bool>& met, bool compressed) {
    TableBuilder& table =
        builder.addTable({.name = u"tblUniqueFilters",
                          .columns = {textColumn(u"Component", kNameCharacters, compressed),
                                      textColumn(u"Process", kNameCharacters, compressed),
                                      column(u"TraceLevel", ColumnType::Integer),
                                      textColumn(u"Source", kNameCharacters, compressed),
                                      textColumn(u"qrxIndex", kKeyCharacters, compressed)}});
    for (std::size_t i = 0; i < origins.size(); ++i) {
        if (!met[i]) continue;
        const TraceOrigin& origin = origins[i];
        table.insert({origin.component, origin.process, origin.level, origin.source, origin.key()});
    }
}

}  // namespace

std::vector<ColumnSpec> traceColumns(TraceFormat format, bool compressed) {
    std::vector<ColumnSpec> columns{
        column(u"Date", ColumnType::Date),
        textColumn(u"Process", kNameCharacters, compressed),
        textColumn(u"Source", kNameCharacters, compressed),
        column(u"TraceNumber", ColumnType::Long),
        textColumn(u"Component", kNameCharacters, compressed),
        column(u"TraceLevel", ColumnType::Integer),
    };
    if (format != TraceFormat::Oldest) {
        columns.push_back(column(u"Port", ColumnType::Long));
        columns.push_back(textColumn(u"CallId", kNameCharacters, compressed));
    }
    columns.push_back(memoColumn(u"Trace", compressed));
    if (format == TraceFormat::Newer) {
        columns.push_back(column(u"Highlight", ColumnType::Boolean));
        columns.push_back(textColumn(u"qrxIndex", kKeyCharacters, compressed));
        columns.push_back(column(u"NotePresent", ColumnType::Boolean));
        columns.push_back(textColumn(u"Notes", 255, compressed));
    }
    return columns;
}

void fillTraceRow(const Trace& trace, const TraceOrigin& origin, TraceFormat format, Row& row) {
    row.assign(
        {trace.date, origin.process, origin.source, trace.number, origin.component, origin.level});
    if (format != TraceFormat::Oldest) {
        row.push_back(optionalCell(trace.port));
        row.push_back(optionalCell(trace.callId));
    }
    row.push_back(trace.text);
    if (format == TraceFormat::Newer) {
        row.push_back(trace.highlight);
        row.push_back(origin.key());
        row.push_back(trace.note.has_value());
        row.push_back(optionalCell(trace.note));
    }
}

TableBuilder& addTraceTables(FixtureBuilder& builder, const TraceOptions& options,
                             TraceFormat format, bool compressed) {
    TableSpec spec{.name = u"tblTraces", .columns = traceColumns(format, compressed)};
    if (format == TraceFormat::Newer) {
        spec.indexes.push_back({.name = u"qrxIndex", .columns = {{u"qrxIndex"}}});
    }
    TableBuilder& traces = builder.addTable(std::move(spec));
    TraceGenerator generator{options};
    std::vector<bool> met(generator.origins().size());
    Trace trace;
    Row row;
    while (generator.next(trace)) {
        met[trace.origin] = true;
        fillTraceRow(trace, generator.origins()[trace.origin], format, row);
        traces.insert(row);
    }
    if (format == TraceFormat::Newer) {
        addUniqueFilters(builder, generator.origins(), met, compressed);
    }
    addMacroTraces(builder, compressed);
    return traces;
}

ByteVector traceDatabase(const TraceOptions& options, TraceFormat format) {
    FixtureBuilder builder;
    addTraceTables(builder, options, format);
    return builder.bytes();
}

void writeTraceDatabase(const std::filesystem::path& path, const TraceOptions& options,
                        TraceFormat format) {
    FixtureBuilder builder{path};
    addTraceTables(builder, options, format);
    builder.finish();
}

std::vector<std::u16string> macroTraces() {
    const auto trace = [](const std::u16string& name, const std::u16string& groups) {
        return u"<TRACE NAME=\"" + name + u"\"><DESCRIPTION>What to switch on for " + name +
               u"</DESCRIPTION>" + groups + u"</TRACE>";
    };
    const auto group = [](const std::u16string& name, const std::u16string& flags) {
        return u"<DIAG GROUP=\"" + name + u"\">" + flags + u"</DIAG>";
    };
    const std::u16string few = u"<FLAG ID=\"2\"/><FLAG ID=\"11\"/>";
    const std::u16string many = few + u"<FLAG ID=\"17\"/><FLAG ID=\"23\"/><FLAG ID=\"30\"/>";
    return {
        u"<GA NAME=\"Calls\"><DESCRIPTION>From ringing to clearing</DESCRIPTION>" +
            trace(u"Incoming calls", group(u"CallRouter", few) + group(u"LineMonitor", few)) +
            u"</GA>",
        u"<GA NAME=\"Messages\"><DESCRIPTION>Recording and delivery</DESCRIPTION>" +
            trace(u"Delivery", group(u"MailRelay", many)) + u"</GA>",
        u"<GA NAME=\"Calls\"><DESCRIPTION>From ringing to clearing</DESCRIPTION>" +
            trace(u"Transfers, all steps", group(u"HuntGroup", many) + group(u"OutDial", many)) +
            u"</GA>",
    };
}

}  // namespace fixture
