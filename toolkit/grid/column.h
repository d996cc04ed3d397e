// Column: the properties of a grid's column.
//
//   Column& date = dataGrid.column(L"Date");
//   date.setCaption(L"Date");
//   date.autoSize();
//
// The grid makes one column for every field of its data source and destroys them all when another
// source is set. The user-interface thread.
#pragma once

#include "toolkit/forms/font.h"
#include "toolkit/forms/units.h"

#include <optional>
#include <string>

namespace grid {

class Grid;

class Column {
public:
    Column(Grid& grid, int index, std::wstring dataField);

    Column(const Column&) = delete;
    Column& operator=(const Column&) = delete;

    int index() const { return index_; }
    const std::wstring& dataField() const { return dataField_; }

    /// The text of the heading; at first the field's name.
    const std::wstring& caption() const { return caption_; }
    void setCaption(const std::wstring& caption);

    forms::Twips width() const { return width_; }
    void setWidth(forms::Twips width);
    /// The width that shows the heading and every cell now on view, but no wider than the view.
    void autoSize();

    /// Whether the column grows to fill the room that the others leave.
    bool fillsRest() const { return fillsRest_; }
    void setFillsRest(bool fills);

    /// Whether a cell wraps its text to as many lines as fit the row's height.
    bool wrapText() const { return wrapText_; }
    void setWrapText(bool wrap);

    /// Whether the user can drag the heading's border.
    bool allowSizing() const { return allowSizing_; }
    void setAllowSizing(bool allow) { allowSizing_ = allow; }

    /// Whether the user can group the rows by the column.
    bool allowGrouping() const { return allowGrouping_; }
    void setAllowGrouping(bool allow) { allowGrouping_ = allow; }

    bool visible() const { return visible_; }
    void setVisible(bool visible);

    /// The grid's font unless another one was set.
    const forms::Font& font() const;
    void setFont(const forms::Font& font);

    /// The name of one of the grid's styles; at first "Heading". setHeadingStyle throws
    /// std::out_of_range for a name the grid does not have.
    const std::wstring& headingStyle() const { return headingStyle_; }
    void setHeadingStyle(const std::wstring& name);

private:
    Grid& grid_;
    int index_;
    std::wstring dataField_;
    std::wstring caption_;
    forms::Twips width_;
    std::optional<forms::Font> font_;
    std::wstring headingStyle_ = L"Heading";
    bool fillsRest_ = false;
    bool wrapText_ = false;
    bool allowSizing_ = true;
    bool allowGrouping_ = true;
    bool visible_ = true;
};

}  // namespace grid
