#include "src/macros/mdl_traces.h"

#include "src/log/procedure.h"
#include "src/text/text.h"

#include <map>
#include <optional>

namespace mdlTraces {
namespace {

constexpr std::int32_t kInvalidUseOfNull = 94;
constexpr HRESULT kPathNotValid = E_FAIL;

/// The document outlives every other user of COM, and may be used before any.
std::optional<xml::Document>& theDocument() {
    static auto* const document = [] {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        return new std::optional<xml::Document>;
    }();
    return *document;
}

/// Paths put names between single quotes and have no means to write one.
void requireNoQuote(const std::wstring& name) {
    if (name.find(L'\'') == std::wstring::npos) return;
    throw RuntimeError{kPathNotValid, u"The path is not valid: the name " + fromWide(name) +
                                          u" holds a single quote"};
}

std::wstring dataOf(ado::Recordset& recordset) {
    const jet::Value value = recordset.fields()[u"Data"].value();
    if (jet::isNull(value)) throw RuntimeError{kInvalidUseOfNull, u"Invalid use of Null"};
    const auto* const text = std::get_if<std::u16string>(&value);
    if (text == nullptr) throw RuntimeError{RuntimeError::kTypeMismatch, u"Type mismatch"};
    return toWide(*text);
}

class Merge {
public:
    explicit Merge(xml::Node root) : root_{std::move(root)} {}

    /// The first row of a group brings the group itself, each later one its first trace.
    void add(const std::wstring& data) {
        scratch_.load(data);
        const std::vector<xml::Node> elements = scratch_.elements(L"GA");
        const xml::Node row = elements.empty() ? xml::Node{} : elements.front();
        const std::wstring name = row.attribute(L"NAME");
        requireNoQuote(name);
        const auto known = groups_.find(name);
        if (known == groups_.end()) {
            root_.append(row);
            groups_.emplace(name, row);
        } else {
            known->second.append(scratch_.asNode().first(L"GA/TRACE"));
        }
    }

private:
    xml::Node root_;
    xml::Document scratch_;
    std::map<std::wstring, xml::Node> groups_;  ///< spares a walk over all groups for each row
};

void mergeRows(Procedure& procedure, ado::Recordset& recordset, Merge& merge) {
    bool atRow = procedure.step([&] { recordset.moveFirst(); });
    while (atRow && !recordset.eof()) {
        procedure.step([&] { merge.add(dataOf(recordset)); });
        atRow = procedure.step([&] { recordset.moveNext(); });
    }
}

}  // namespace

void initMacroTraces(ado::Recordset& recordset) {
    runProcedure(u"[mdlTraces]initMacroTraces", {.timed = true}, [&](Procedure& procedure) {
        std::optional<Merge> merge;
        procedure.step([&] { merge.emplace(theDocument().emplace().addRoot(L"HYBRIDTRACES")); });
        int count = 0;
        procedure.step([&] { count = recordset.recordCount(); });
        if (merge && count > 0) mergeRows(procedure, recordset, *merge);
    });
}

const xml::Document& xmlMacroTraces() {
    std::optional<xml::Document>& document = theDocument();
    return document ? *document : document.emplace();
}

xml::Node findTrace(const std::wstring& group, const std::wstring& trace) {
    requireNoQuote(group);
    requireNoQuote(trace);
    return xmlMacroTraces().asNode().find(L"HYBRIDTRACES/GA[@NAME='" + group + L"']/TRACE[@NAME='" +
                                          trace + L"']");
}

}  // namespace mdlTraces
