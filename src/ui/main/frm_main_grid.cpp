// The main window's first tab: the grid of the traces and the full text of the current one.
#include "src/db/class_diags.h"
#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"
#include "src/text/text.h"
#include "src/ui/main/frm_main.h"
#include "toolkit/forms/application.h"

using modLocalize::text;
using modLocalize::Text;
using modLocalize::wideText;
using namespace forms::literals;
using forms::Twips;

namespace {

/// The trace column takes the room that the others leave, but never less than this.
constexpr Twips kTraceWidth = 3000_tw;

constexpr Convention kGridEvent{.limit = Limit::TenErrors, .timed = true};

struct GridColumn {
    const wchar_t* dataField;
    Text caption;
    bool isTrace;
};

/// The columns that the grid sets up; others of the recordset are shown as they are.
constexpr GridColumn kGridColumns[] = {
    {L"Date", Text::DateHeading, false},           {L"Process", Text::ProcessHeading, false},
    {L"Source", Text::SourceHeading, false},       {L"TraceNumber", Text::NumberHeading, false},
    {L"Component", Text::ComponentHeading, false}, {L"TraceLevel", Text::LevelHeading, false},
    {L"Trace", Text::DiagnosticHeading, true},
};

/// The text box wants CR LF at the ends of lines, and ends a text at a zero character.
std::wstring forTextBox(std::u16string_view text) {
    std::wstring lines;
    lines.reserve(text.size());
    char16_t previous = 0;
    for (const char16_t c : text) {
        if (c == u'\n' && previous != u'\r') lines.push_back(L'\r');
        lines.push_back(c == 0 ? L' ' : static_cast<wchar_t>(c));
        previous = c;
    }
    return lines;
}

}  // namespace

void frmMain::reloadDBGrid(ado::Recordset& recordset) {
    load();
    // A grid without columns, as after a filter that was not valid, has nothing to say about them.
    if (tdbgridData.columnCount() > 0) arrangement_.emplace(tdbgridData);
    tdbgridData.setDataSource(nullptr);
    recordset_ = &recordset;
    source_ = std::make_unique<TraceSource>(recordset);
    recordset.moveComplete = [this] { tdbgridData.currentRowChanged(); };
    recordset.orderChanged = [this] { tdbgridData.dataChanged(); };
    tdbgridData.setDataSource(source_.get());
    tdbgridData.setRowHeight(savedRowHeight_ * 2);
    if (arrangement_) arrangement_->applyTo(tdbgridData);
    setupTraceGrid();
    if (recordset.state() == ado::adStateClosed) showNoRecord();
    tdbgridData_RowColChange();
    populateUniqueTracesTree();
}

void frmMain::setupTraceGrid() {
    if (tdbgridData.columnCount() < 2) return;
    runProcedure(u"setupTraceGrid", Limit::None, [this](Procedure& procedure) {
        procedure.step([] { forms::doEvents(); });
        for (const GridColumn& wanted : kGridColumns) {
            procedure.step([&] {
                grid::Column& column = tdbgridData.column(wanted.dataField);
                column.setCaption(wideText(wanted.caption));
                column.setWrapText(wanted.isTrace);
                column.setFillsRest(wanted.isTrace);
                // The trace text is neither sorted nor grouped: hardly two are the same, and all
                // of them would have to be read.
                column.setAllowGrouping(!wanted.isTrace);
                if (wanted.isTrace) {
                    column.setWidth(kTraceWidth);
                } else {
                    column.autoSize();
                }
            });
        }
    });
}

void frmMain::tdbgridData_HeadClick(int ColIndex) {
    runProcedure(u"tdbgridData_HeadClick", kGridEvent, [&](Procedure& procedure) {
        std::wstring field;
        if (!procedure.step([&] { field = tdbgridData.column(ColIndex).dataField(); })) return;
        if (field != L"Trace") {
            procedure.step([&] { displayStatus(text(Text::SortingPleaseWait), false); });
            procedure.step([&] {
                for (int i = 0; i < tdbgridData.columnCount(); ++i) {
                    tdbgridData.column(i).setHeadingStyle(L"Heading");
                }
            });
            const std::u16string name = fromWide(field);
            const std::u16string& current = recordset_->sort();
            const bool reverse = current.find(name) != std::u16string::npos &&
                                 current.find(u"ASC") != std::u16string::npos;
            procedure.step([&] {
                tdbgridData.column(ColIndex).setHeadingStyle(reverse ? L"Descending"
                                                                     : L"Ascending");
            });
            procedure.step([&] { recordset_->setSort(name + (reverse ? u" DESC" : u" ASC")); });
            procedure.step([&] { hideStatus(); });
        }
        procedure.step([&] { setupTraceGrid(); });
    });
}

void frmMain::tdbgridData_ColResize(int column, bool& cancel) {
    cancel = tdbgridData.column(column).dataField() == L"Trace";
}

void frmMain::tdbgridData_RowColChange() {
    if (recordset_ == nullptr || recordset_->state() == ado::adStateClosed) return;
    showPosition();
    const bool empty = recordset_->bof() && recordset_->eof();
    txtTrace.setText(empty ? L"" : forTextBox(recordset_->fields()[u"Trace"].text()));
}

/// "  Line n of m  ": the place of the current record and the number of rows in the grid.
void frmMain::showPosition() {
    statusbarMain.panel(kPositionPanel)
        .setText(toWide(text(Text::PositionLine) + toText(diags()->rsDiags().absolutePosition()) +
                        text(Text::PositionOf) + toText(tdbgridData.approxCount()) + u"  "));
}

void frmMain::showNoRecord() {
    txtTrace.setText(L"");
    statusbarMain.panel(kPositionPanel).setText(L"");
}

void frmMain::tdbgridData_FetchCellTips(std::int64_t row, bool& wrap) {
    runProcedure(u"tdbgridData_FetchCellTips", kGridEvent,
                 [&](Procedure& procedure) { procedure.step([&] { wrap = wrap || row >= 0; }); });
}
