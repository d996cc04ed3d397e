#include "src/search/trace_search.h"

#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"

#include <memory>

using modLocalize::myLoadResString;

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

/// At the record found, or outside if there is none.
void find(ado::Recordset& view, const TraceSearch& search) {
    if (search.stepFirst && !isOutside(view)) {
        if (search.backward) {
            view.movePrevious();
        } else {
            view.moveNext();
        }
    }
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
        procedure.step([&] { setNotice(myLoadResString(1038) + search.text + u"..."); });
        const bool searched = procedure.step([&] { find(*view, search); });
        const bool found = searched && !isOutside(*view);
        // A search that failed has no outcome to tell; the notice that it runs goes all the same.
        procedure.step([&] {
            const bool tellAbsence = searched && !found;
            setNotice(tellAbsence ? search.text + myLoadResString(1004) : std::u16string{});
        });
        if (found) {
            procedure.step([&] { traces.setAbsolutePosition(view->absolutePosition()); });
        }
    });
}

std::u16string& lastFindText() {
    static std::u16string text;
    return text;
}
