#include "tests/toolkit/grid/grid_window.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace grid {
namespace {

TEST(GridColumns, OneForEveryField) {
    GridWindow window(10);
    ASSERT_EQ(window.grid.columnCount(), 7);
    EXPECT_EQ(window.grid.columnIndex(L"Component"), TraceSource::kComponent);
    EXPECT_EQ(window.grid.column(L"Date").index(), 0);
    EXPECT_EQ(window.grid.column(3).dataField(), L"TraceNumber");
    EXPECT_EQ(window.grid.column(3).caption(), L"TraceNumber");
    EXPECT_EQ(window.grid.column(3).headingStyle(), L"Heading");
}

TEST(GridColumns, UnknownFieldsAreRefused) {
    GridWindow window(10);
    EXPECT_EQ(window.grid.columnIndex(L"date"), -1);
    EXPECT_THROW(window.grid.column(L"Port"), std::out_of_range);
    EXPECT_THROW(window.grid.column(7), std::out_of_range);
}

TEST(GridColumns, AnotherSourceMakesNewColumns) {
    GridWindow window(10);
    window.grid.column(L"Date").setCaption(L"When");
    window.grid.setDataSource(nullptr);
    EXPECT_EQ(window.grid.columnCount(), 0);
    EXPECT_EQ(window.grid.approxCount(), 0);
    EXPECT_EQ(window.grid.row(), -1);
    TraceSource other(3);
    window.grid.setDataSource(&other);
    EXPECT_EQ(window.grid.column(L"Date").caption(), L"Date");
    EXPECT_EQ(window.grid.approxCount(), 3);
    window.grid.setDataSource(nullptr);
}

TEST(GridColumns, WidthsAreTwips) {
    GridWindow window(10, forms::Dpi(144));
    window.grid.column(1).setWidth(forms::Twips(1440));
    EXPECT_EQ(window.grid.geometry().columns().width(1), 144);
    EXPECT_EQ(window.grid.column(1).width(), forms::Twips(1440));
}

TEST(GridColumns, AutoSizeShowsEveryVisibleTextWhole) {
    GridWindow window(500);
    window.source.put(2, TraceSource::kSource, L"a rather long name of a source file.cpp");
    Column& column = window.grid.column(TraceSource::kSource);
    column.setWidth(forms::Twips(300));
    forms::Twips narrow = column.width();
    column.autoSize();
    forms::Twips wide = column.width();
    EXPECT_GT(wide, narrow * 3);
    bool asked = false;
    window.grid.onFetchCellTips = [&](int, std::int64_t, std::wstring&, bool&) { asked = true; };
    window.grid.setFirstRow(0);
    window.hover(window.middleOf({2, TraceSource::kSource}));
    EXPECT_FALSE(asked) << "the text is cut off";
    // The long text is no longer on view.
    window.grid.setFirstRow(100);
    column.autoSize();
    EXPECT_LT(column.width(), wide);
}

TEST(GridColumns, AutoSizeLooksOnlyAtWhatIsOnView) {
    GridWindow window(1'000'000);
    window.grid.setFirstRow(5000);
    window.source.resetCounts();
    window.grid.column(1).autoSize();
    EXPECT_GE(window.source.firstAsked(), 5000);
    EXPECT_LT(window.source.lastAsked(), 5030);
}

TEST(GridColumns, AutoSizeLeavesRoomForHeadingAndItsPicture) {
    GridWindow window(0);
    Column& column = window.grid.column(1);
    column.setCaption(L"A caption wider than most");
    column.autoSize();
    forms::Twips plain = column.width();
    column.setHeadingStyle(L"Ascending");
    column.autoSize();
    EXPECT_GT(column.width(), plain);
    column.setHeadingStyle(L"Heading");
    column.autoSize();
    EXPECT_EQ(column.width(), plain);
}

TEST(GridColumns, AutoSizeIsBoundedByTheView) {
    GridWindow window(10);
    Column& trace = window.grid.column(TraceSource::kTrace);
    window.source.put(0, TraceSource::kTrace, std::wstring(100'000, L'W'));
    trace.autoSize();
    int width = forms::toPixels(trace.width(), forms::Dpi(96)).value;
    EXPECT_EQ(width, window.grid.geometry().dataArea().width());
}

TEST(GridColumns, TheFillingColumnTakesTheRest) {
    GridWindow window(10);
    const Geometry& geometry = window.grid.geometry();
    EXPECT_EQ(geometry.columns().totalWidth(), geometry.dataArea().width());
    window.grid.column(0).setWidth(forms::Twips(3000));
    EXPECT_EQ(geometry.columns().totalWidth(), geometry.dataArea().width());
    window.grid.column(TraceSource::kTrace).setWidth(forms::Twips(15'000));
    EXPECT_EQ(geometry.columns().width(TraceSource::kTrace), 1000);
}

TEST(GridColumns, HiddenColumnsTakeNoRoom) {
    GridWindow window(10);
    window.grid.column(0).setVisible(false);
    const Geometry& geometry = window.grid.geometry();
    EXPECT_EQ(geometry.columns().left(1), 0);
    EXPECT_EQ(geometry.columns().totalWidth(), geometry.dataArea().width())
        << "the column that fills the rest has it";
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridColumns, RowHeightIsThatOfTheFontUntilItIsSet) {
    GridWindow window(10);
    Grid plain;
    plain.create(window.host, {});
    forms::Twips one = plain.rowHeight();
    EXPECT_GT(one, forms::Twips(150));
    EXPECT_EQ(window.grid.rowHeight(), 2 * one);
    forms::Font big = plain.font();
    big.points = 24;
    plain.setFont(big);
    EXPECT_GT(plain.rowHeight(), one * 1.5);
    plain.setRowHeight(forms::Twips(600));
    EXPECT_EQ(plain.geometry().measures().rowHeight, 40);
    EXPECT_EQ(plain.rowHeight(), forms::Twips(600));
    plain.destroy();
}

TEST(GridColumns, AnotherDpiScalesEverything) {
    GridWindow window(10);
    Measures before = window.grid.geometry().measures();
    int width = window.grid.geometry().columns().width(0);
    window.host.setDpi(forms::Dpi(192));
    window.grid.applyDpi();
    Measures after = window.grid.geometry().measures();
    EXPECT_EQ(after.rowHeight, 2 * before.rowHeight);
    EXPECT_EQ(after.selectorWidth, 2 * before.selectorWidth);
    EXPECT_GT(after.headingHeight, before.headingHeight * 3 / 2);
    EXPECT_EQ(window.grid.geometry().columns().width(0), 2 * width);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridColumns, AGridCanBeDestroyedAndMadeAgain) {
    GridWindow window(1000);
    window.hover(window.middleOf({3, TraceSource::kTrace}));
    window.source.setRowCount(2000);
    window.grid.rowCountChanged();
    window.grid.destroy();
    EXPECT_FALSE(window.grid.cellTip().shown());
    window.grid.rowCountChanged();
    window.grid.setFirstRow(50);
    forms::ControlPlace place;
    place.width = forms::Twips(6000);
    place.height = forms::Twips(3000);
    window.grid.create(window.host, place);
    window.pump();
    EXPECT_EQ(window.grid.columnCount(), 7);
    EXPECT_GT(window.grid.paintedRows(), 3);
    EXPECT_TRUE(window.looksAsPaintedAnew());
}

TEST(GridStyles, EveryGridHasTheNamedOnes) {
    Grid grid;
    for (const wchar_t* name :
         {L"Normal", L"Heading", L"Footing", L"Selected", L"Caption", L"HighlightRow", L"EvenRow",
          L"OddRow", L"RecordSelector", L"FilterBar", L"Ascending", L"Descending", L"BigRed",
          L"imgSubscriber"}) {
        EXPECT_NO_THROW(grid.style(name)) << name;
    }
    EXPECT_EQ(grid.style(L"Ascending").picture, HeadingPicture::ascending);
    EXPECT_EQ(grid.style(L"Descending").picture, HeadingPicture::descending);
    EXPECT_EQ(grid.style(L"Heading").picture, HeadingPicture::none);
}

TEST(GridStyles, UnknownNamesAreRefused) {
    GridWindow window(10);
    EXPECT_THROW(window.grid.style(L"Loud"), std::out_of_range);
    EXPECT_THROW(window.grid.column(0).setHeadingStyle(L"Loud"), std::out_of_range);
    EXPECT_EQ(window.grid.column(0).headingStyle(), L"Heading");
}

TEST(GridStyles, ColorsFollowTheSystemAndHighContrastIsNotMixed) {
    Color tint = Color::tint(COLOR_HIGHLIGHT, 20, COLOR_HIGHLIGHT);
    EXPECT_EQ(tint.resolve(true), GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_NE(tint.resolve(false), GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(Color::system(COLOR_BTNTEXT).resolve(false), GetSysColor(COLOR_BTNTEXT));
    EXPECT_EQ(Color::rgb(1, 2, 3).resolve(true), RGB(1, 2, 3));
}

TEST(GridStyles, AStyleThatIsSetIsPainted) {
    GridWindow window(10);
    Style style = window.grid.style(L"Normal");
    style.back = Color::rgb(10, 200, 30);
    window.grid.setStyle(L"Normal", style);
    window.pump();
    Rect cell = window.grid.geometry().cellRect({3, 1});
    EXPECT_GT(Snapshot::ofClient(window.grid.hwnd()).count(cell, RGB(10, 200, 30)), 500);
}

}  // namespace
}  // namespace grid
