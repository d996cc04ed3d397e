// The search for a text in the column Trace, as the find dialog and the main window run it.
//
//   searchTraces(u"[frmMain]myfindText", diags()->rsDiags(),
//                {.text = lastFindText(), .stepFirst = true}, setNotice);
//
// The user-interface thread.
#pragma once

#include "engine/ado/recordset.h"

#include <functional>
#include <string>
#include <string_view>

struct TraceSearch {
    std::u16string text;
    bool backward = false;
    bool stepFirst = false;  ///< starts after the current record
};

/// Moves to the nearest record whose Trace contains the text, ignoring case, without wrapping
/// around. `* ? # [` in the text are wildcards; a single apostrophe makes an invalid criterion.
/// That and any other failure is reported under `label`, and the record where the search started
/// becomes current, with `stepFirst` the neighbour. Only a cancelled search leaves the current
/// record unchanged. `setNotice` gets the text for the user: that the search is running, then
/// nothing, or that the text was not found.
void searchTraces(std::u16string_view label, ado::Recordset& traces, const TraceSearch& search,
                  const std::function<void(const std::u16string&)>& setNotice);

/// The last text typed or chosen in the find dialog; shared by the whole program.
std::u16string& lastFindText();
