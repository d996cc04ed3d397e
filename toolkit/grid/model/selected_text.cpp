#include "toolkit/grid/model/selected_text.h"

#include <utility>

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

SelectedText::SelectedText(const SourceCursor& cursor, const GroupView& groups,
                           const Geometry& geometry, const Selection& selection,
                           std::function<std::wstring(int group)> groupText)
    : cursor_(cursor),
      groups_(groups),
      geometry_(geometry),
      selection_(selection),
      groupText_(std::move(groupText)) {}

bool SelectedText::append(std::wstring& text, const std::function<bool()>& goesOn) const {
    const Cell current = selection_.current();
    if (!cursor_.source() || current.row == kNoRow) return true;
    if (!selection_.wholeRows() && groups_.groupAt(current.row) == kNoGroup) {
        if (current.column != kNoColumn) {
            cursor_.source()->cellText(cursor_.row(), current.column, text);
        }
        return true;
    }
    for (RowIndex view = selection_.firstRow();
         cursor_.source() && view <= selection_.lastRow() && view < geometry_.rowCount(); ++view) {
        appendRow(view, text);
        text += L"\r\n";
        if (!goesOn()) return false;
    }
    return true;
}

void SelectedText::appendRow(RowIndex view, std::wstring& text) const {
    const Grouping::Place place = groups_.grouping().at(view);
    if (place.group != kNoGroup) {
        text += groupText_(place.group);
        return;
    }
    std::wstring field;
    const ColumnLayout& columns = geometry_.columns();
    const int first = columns.firstVisible();
    for (int column = first; column != kNoColumn; column = columns.next(column, 1)) {
        if (column != first) text += L'\t';
        field.clear();
        cursor_.source()->cellText(place.row, column, field);
        appendQuoted(field, text);
    }
}

}  // namespace grid
