#include "src/search/trace_search.h"

#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"

#include <memory>

using modLocalize::text;
using modLocalize::Text;

namespace {

bool isOutside(const ado::Recordset& rows) { return rows.bof() || rows.eof(); }

/// A second view at the same place and in the same order: searching it moves nothing in the grid.
std::unique_ptr<ado::Recordset> viewOf(ado::Recordset& traces) {
    auto view = traces.clone();
    view->setSort(traces.sort());
    const int position = traces.absolutePosition();
    if (position >= 1) view->setAbsolutePosition(position);
    return view;
}

void stepOff(ado::Recordset& view, bool backward) {
    if (isOutside(view)) return;
    if (backward) {
        view.movePrevious();
    } else {
        view.moveNext();
    }
}

/// At the record found, or outside if there is none.
void find(ado::Recordset& view, const TraceSearch& search) {
    if (isOutside(view)) return;
    view.find(u"Trace Like '*" + search.text + u"*'", 0,
              search.backward ? ado::adSearchBackward : ado::adSearchForward);
}

}  // namespace

void searchTraces(std::u16string_view label, ado::Recordset& traces, const TraceSearch& search,
                  const std::function<void(const std::u16string&)>& setNotice) {
    runProcedure(label, Limit::None, [&](Procedure& procedure) {
        std::unique_ptr<ado::Recordset> view;
        if (!procedure.step([&] { view = viewOf(traces); })) return;
        procedure.step([&] { setNotice(text(Text::SearchingFor) + search.text + u"..."); });
        procedure.step([&] {
            if (search.stepFirst) stepOff(*view, search.backward);
        });
        bool cancelled = false;
        procedure.step([&] { find(*view, search); },
                       [&](const Failure& failure) {
                           cancelled = failure.number == ado::adErrOperationCancelled;
                           return Resume::AsUsual;
                       });
        if (cancelled) {
            procedure.step([&] { setNotice(u""); });
            return;
        }
        // As after every failed step, what follows a criterion that failed is done: the view
        // stands where it was, which is the next record if the search left out the current one.
        const bool found = !isOutside(*view);
        procedure.step([&] { setNotice(found ? u"" : search.text + text(Text::NotFound)); });
        if (found) procedure.step([&] { traces.setAbsolutePosition(view->absolutePosition()); });
    });
}

std::u16string& lastFindText() {
    static std::u16string text;
    return text;
}
