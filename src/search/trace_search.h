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
    bool stepFirst = false;  ///< leaves out the current record
};

/// Makes the nearest record current whose Trace contains the text in upper or lower case; there is
/// no wrap-around. `* ? # [` in the text are a pattern's signs, and one apostrophe makes a criterion
/// that cannot be understood. That and every other failure is reported under `label`; the record
/// where the search began is current then, which is the neighbour with `stepFirst`. Only a search
/// that was cancelled leaves the current record. `setNotice` gets what the user is to read: that the
/// search runs, then nothing, or that the text was not found.
void searchTraces(std::u16string_view label, ado::Recordset& traces, const TraceSearch& search,
                  const std::function<void(const std::u16string&)>& setNotice);

/// The text of the find dialog as it was last typed or chosen; the whole program shares it.
std::u16string& lastFindText();
