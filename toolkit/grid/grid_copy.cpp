// Copying: the selected rows as text.
#include "toolkit/forms/application.h"
#include "toolkit/grid/clipboard.h"
#include "toolkit/grid/grid.h"

#include <functional>
#include <new>

namespace grid {
namespace {

void appendQuoted(const std::wstring& field, std::wstring& text) {
    if (field.find_first_of(L"\t\r\n\"") == std::wstring::npos) {
        text += field;
        return;
    }
    text += L'"';
    for (const wchar_t c : field) {
        text.append(c == L'"' ? 2 : 1, c);
    }
    text += L'"';
}

}  // namespace

std::wstring Grid::selectedText() const {
    std::wstring text;
    appendSelectedText(text, [] { return true; });
    return text;
}

// False if it was broken off. Whatever the window shows may change between two rows.
bool Grid::appendSelectedText(std::wstring& text, const std::function<bool()>& goesOn) const {
    const Cell current = selection_.current();
    if (!source_ || current.row == kNoRow) return true;
    const bool onGroup = grouping_.at(current.row).group != kNoGroup;
    if (!selection_.wholeRows() && !onGroup) {
        if (current.column != kNoColumn) source_->cellText(sourceRow_, current.column, text);
        return true;
    }
    for (RowIndex view = selection_.firstRow();
         source_ && view <= selection_.lastRow() && view < geometry_.rowCount(); ++view) {
        appendRowText(view, text);
        text += L"\r\n";
        if (!goesOn()) return false;
    }
    return true;
}

void Grid::appendRowText(RowIndex view, std::wstring& text) const {
    const Grouping::Place place = grouping_.at(view);
    if (place.group != kNoGroup) {
        text += groupText(place.group);
        return;
    }
    std::wstring field;
    const ColumnLayout& columns = geometry_.columns();
    const int first = columns.firstVisible();
    for (int column = first; column != kNoColumn; column = columns.next(column, 1)) {
        if (column != first) text += L'\t';
        field.clear();
        source_->cellText(place.row, column, field);
        appendQuoted(field, text);
    }
}

void Grid::copy() {
    const HCURSOR pointer = ::SetCursor(::LoadCursorW(nullptr, IDC_WAIT));
    bool copied = false;
    try {
        forms::SteppedWork work;
        std::wstring text;
        copied = appendSelectedText(text, [&] { return work.goesOn(); }) && isCreated() &&
                 putOnClipboard(hwnd(), text);
    } catch (const std::bad_alloc&) {
        // More rows than there is room for: what is on the clipboard stays, as when Escape ends it.
    }
    ::SetCursor(pointer);
    if (!copied) ::MessageBeep(MB_ICONWARNING);
}

}  // namespace grid
