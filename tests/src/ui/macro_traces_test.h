// Databases whose macro traces the test writes itself, opened in the main window.
#pragma once

#include "src/macros/frm_macro_traces.h"
#include "src/macros/mdl_traces.h"
#include "src/text/text.h"
#include "tests/src/ui/main_window.h"

#include <optional>
#include <string>
#include <vector>

/// Rows of tblMacroTraces; nullopt is Null.
using MacroRows = std::vector<std::optional<std::u16string>>;

class MacroTracesTest : public MainWindowTest {
protected:
    /// A file with these macro traces and a few trace records.
    std::filesystem::path makeMacroFile(const std::string& name, const MacroRows& macroRows) {
        fixture::FixtureBuilder builder;
        auto& macros = builder.addTable(
            {.name = u"tblMacroTraces", .columns = {fixture::memoColumn(u"Data")}});
        for (const auto& row : macroRows)
            macros.insert({row ? fixture::Cell{*row} : fixture::kNull});
        return folder.write(name, builder.bytes());
    }

    /// Reads macro traces past the open database, which stays as it is.
    void read(const MacroRows& macroRows) {
        const auto path = makeMacroFile("macros" + std::to_string(++files_) + ".mdb", macroRows);
        ado::Connection connection;
        connection.setConnectionString(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" +
                                       path.u16string());
        connection.open();
        ado::Recordset recordset;
        recordset.open(u"SELECT * FROM tblMacroTraces", connection, ado::adOpenStatic);
        reports.clear();
        mdlTraces::initMacroTraces(recordset);
    }

    /// "A[t1 t3] B[t2]": the document's groups and traces by name.
    static std::wstring outline() {
        std::wstring text;
        for (const xml::Node& group :
             mdlTraces::xmlMacroTraces().asNode().select(L"HYBRIDTRACES/GA")) {
            if (!text.empty()) text += L" ";
            text += group.attribute(L"NAME") + L"[";
            bool first = true;
            for (const xml::Node& trace : group.select(L"TRACE")) {
                text += (first ? L"" : L" ") + trace.attribute(L"NAME");
                first = false;
            }
            text += L"]";
        }
        return text;
    }

    bool reported(std::u16string_view label, std::u16string_view text) const {
        for (const std::u16string& report : reports) {
            if (report.starts_with(label) && report.find(text) != std::u16string::npos) return true;
        }
        return false;
    }

private:
    int files_ = 0;
};

/// A row with one trace: a group, the trace's name, its content behind the description.
inline std::u16string macroRow(const std::u16string& group, const std::u16string& trace,
                               const std::u16string& content = u"",
                               const std::u16string& attributes = u"") {
    return u"<GA NAME=\"" + group + u"\"" + attributes + u"><TRACE NAME=\"" + trace +
           u"\"><DESCRIPTION>about " + trace + u"</DESCRIPTION>" + content + u"</TRACE></GA>";
}
