// What surrounds the examples in the toolkit's headers: the names that they use without declaring
// them (see examples.awk). Everything is declared and nothing defined; examples are compiled, never
// run. The generated code includes the headers themselves before this one.
#pragma once

#include <string>
#include <vector>

namespace examples {

struct toolkit {
    HWND hwnd() const;
    forms::Dpi dpi;
    std::wstring text;
};

struct toolkit_forms : toolkit {
    forms::Twips width;
    forms::Window& window;
    forms::Form& form;
};

struct toolkit_forms_accessible_object_h : forms::Window {
    struct Gauge;
};

struct toolkit_forms_accessible_object_h::Gauge : forms::AccessibleObject {
    std::wstring name(LONG child) override;
    long role(LONG child) override;
    long state(LONG child) override;
    RECT location(LONG child) override;
    long childCount() override;
    IDispatch* child(LONG child) override;
    IDispatch* parent() override;
    void focus(VARIANT& answer) override;
    void selection(VARIANT& answer) override;
    void hitTest(POINT screen, VARIANT& answer) override;
    void navigate(long direction, LONG child, VARIANT& answer) override;
    bool select(long flags, LONG child) override;
    bool doAction(LONG child) override;
};

struct toolkit_forms_application_h : toolkit_forms {
    struct frmMain : forms::Form {
        frmMain();
    };
};

struct toolkit_forms_buttons_h : toolkit_forms {
    void cmdFind_Click();
    forms::OptionButton optionDown;
};

struct toolkit_forms_combo_box_h : toolkit_forms {
    void comboFindWhat_Change();
};

struct toolkit_forms_control_h : toolkit_forms {
    forms::Button cmdApply;
    void cmdApply_Click();
};

struct toolkit_forms_dialogs_h : toolkit_forms {
    void open(const std::wstring& path);
};

struct toolkit_forms_label_h : toolkit_forms {
    std::wstring path;
};

struct toolkit_forms_menu_h : toolkit_forms {
    forms::MenuBar menu;
    forms::MenuItem mnuFile;
    forms::MenuItem mnuOpen;
    forms::MenuItem mnuLine;
    forms::MenuItem mnuExit;
    void mnuOpen_Click();
    void mnuExit_Click();
};

struct toolkit_forms_picture_h : toolkit_forms {
    static constexpr int IDI_VIEWER = 1;
};

struct toolkit_forms_progress_bar_h : toolkit_forms {
    int recordCount;
    int position;
};

struct toolkit_forms_tab_strip_h : toolkit_forms {
    void sstabMain_Click(int previous);
};

struct toolkit_forms_text_box_h : toolkit_forms {
    forms::TextBox txtName;
    void txtName_Change();
};

struct toolkit_forms_tree_view_h : toolkit_forms {
    void tvUniqueTraces_NodeCheck(forms::TreeNode& node);
};

struct toolkit_grid : toolkit {
    grid::DataSource& source;
    grid::Grid& dataGrid;
    grid::Grid& tdbgridData;
    HDC dc;
    HDC screenDc;
    HDC canvas;
    grid::Rect rect;
    grid::Rect dirty;
    grid::Style style;
    grid::RowIndex row;
};

struct toolkit_grid_window : toolkit_grid {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    grid::Geometry& geometry;
    grid::Selection selection;
};

struct toolkit_grid_accessible_events_h : toolkit_grid_window {};

struct toolkit_grid_delayed_update_h : toolkit_grid_window {};

struct toolkit_grid_repaint_h : toolkit_grid_window {};

struct toolkit_grid_scroll_bars_h : toolkit_grid_window {};

struct toolkit_grid_cell_measures_h : toolkit_grid {
    const grid::Scene& scene;
    const grid::Column& column;
    void offerTip(const std::wstring& text);
};

struct toolkit_grid_back_buffer_h : toolkit_grid {
    grid::BackBuffer buffer;
    SIZE client;
    void paint(HDC canvas);
};

struct toolkit_grid_cell_text_h : toolkit_grid {
    grid::CellText cell;
    int column;
    bool wrap;
    int width;
    int lines;
    grid::TextFont& font;
    void offerTip(const std::wstring& text);
};

struct toolkit_grid_cell_tip_h : toolkit_grid {
    grid::CellTip tip;
    int column;
    grid::Rect cellOnScreen;
    HFONT font;
};

struct toolkit_grid_drawing_h : toolkit_grid {
    int x;
    int y;
    COLORREF color;
};

struct toolkit_grid_grid_h : toolkit_grid {
    void sortBy(int column);
};

struct toolkit_grid_grid_accessible_h : toolkit_grid {
    int column;
};

struct toolkit_grid_heading_theme_h : toolkit_grid {
    grid::HeadingTheme theme;
};

struct toolkit_grid_messages_h : toolkit_grid {
    HWND gridWindow;
};

struct toolkit_grid_painter_h : toolkit_grid {
    const grid::Scene& scene;
    std::uint64_t count;
};

struct toolkit_grid_text_font_h : toolkit_grid {
    grid::TextFonts fonts;
    grid::Column& column;
};

struct toolkit_grid_model : toolkit {
    grid::RowIndex row;
    grid::RowIndex rowCount;
    int column;
    void draw(grid::RowIndex row);
    void select(grid::RowIndex row);
    grid::Geometry geometry;
    grid::Selection selection;
    grid::Point mouse;
    grid::TextMeasure& measure;
    int width;
    int height;
    int x;
    SIZE client;
    grid::DataSource& source;
    grid::GroupView groups;
};

struct toolkit_grid_model_data_source_h : grid::DataSource {};

struct toolkit_grid_model_selected_text_h : toolkit_grid_model {
    grid::SourceCursor cursor;
    std::wstring groupText(int group) const;
};

struct toolkit_grid_model_content_width_h : toolkit_grid_model {
    std::vector<std::wstring> textsOnView;
    int padding;
    int smallest;
    int largest;
};

struct toolkit_grid_model_group_area_h : toolkit_grid_model {
    int componentWidth;
    int levelWidth;
    int gap;
};

struct toolkit_grid_model_grouping_h : toolkit_grid_model {
    std::vector<std::uint32_t> ranksOfComponent;
    std::vector<std::uint32_t> ranksOfLevel;
    void draw(const grid::Grouping::Place& place);
};

struct toolkit_grid_model_scroll_range_h : toolkit_grid_model {
    grid::RowIndex rowsOnAPage;
    grid::RowIndex topRow;
    int trackPosition;
    void setBar(int maximum, int page, int position);
};

struct toolkit_grid_model_text_layout_h : toolkit_grid_model {
    std::size_t maxCharacters;
};

struct toolkit_grid_model_text_units_h : toolkit_grid_model {
    std::size_t position;
};

struct toolkit_grid_model_trimmed_h : toolkit_grid_model {
    std::wstring caption;
    std::wstring value;
};

struct toolkit_grid_model_wheel_h : toolkit_grid_model {
    grid::Wheel wheel;
    int delta;
    int linesPerNotch;
    int rowHeight;
};

}  // namespace examples
