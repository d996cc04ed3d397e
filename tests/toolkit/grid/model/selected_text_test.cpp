#include "toolkit/grid/model/selected_text.h"

#include "tests/toolkit/grid/trace_source.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

// Source, component and level are on view, in this order.
class SelectedTextTest : public testing::Test {
protected:
    SelectedTextTest() {
        cursor.bind(&source);
        geometry.resetColumns(source.columnCount(), 100);
        geometry.setRowCount(20);
        for (const int hidden : {TraceSource::kDate, TraceSource::kProcess, TraceSource::kNumber,
                                 TraceSource::kTrace}) {
            geometry.setColumnVisible(hidden, false);
        }
    }

    void goTo(Cell cell) {
        cursor.moveTo(cell.row);
        cursor.take(20);
        selection.moveTo(cell);
    }

    std::wstring text() const {
        std::wstring text;
        EXPECT_TRUE(copy.append(text, [] { return true; }));
        return text;
    }

    TraceSource source{20};
    SourceCursor cursor;
    GroupView groups;
    Geometry geometry;
    Selection selection;
    SelectedText copy{cursor, groups, geometry, selection,
                      [this](int group) { return groups.text(group, L"By", source); }};
};

TEST_F(SelectedTextTest, WithoutACurrentRowThereIsNone) {
    EXPECT_EQ(text(), L"");
    selection.selectRow({0, 0});
    cursor.bind(nullptr);
    EXPECT_EQ(text(), L"");
}

TEST_F(SelectedTextTest, OneCellIsCopiedAsItIs) {
    source.put(2, TraceSource::kComponent, L"a\t\"b\"\r\nc");
    goTo({2, TraceSource::kComponent});
    EXPECT_EQ(text(), L"a\t\"b\"\r\nc");
    goTo({2, kNoColumn});
    EXPECT_EQ(text(), L"");
}

TEST_F(SelectedTextTest, RowsAreCopiedInTheOrderOfTheColumns) {
    geometry.moveColumn(TraceSource::kLevel, 0);
    selection.selectRow({1, 3});
    EXPECT_EQ(text(), L"1\tsource1.cpp\tDialer\r\n");
    selection.extendTo({3, 3});
    EXPECT_EQ(text(),
              L"1\tsource1.cpp\tDialer\r\n2\tsource2.cpp\tQueue\r\n"
              L"3\tsource3.cpp\tStore\r\n");
}

TEST_F(SelectedTextTest, EachOfTheCharactersThatBreakATableIsQuoted) {
    selection.selectRow({0, 3});
    for (const auto& [field, quoted] : {std::pair{L"a\tb", L"\"a\tb\""},
                                        {L"a\rb", L"\"a\rb\""},
                                        {L"a\nb", L"\"a\nb\""},
                                        {L"a\"b", L"\"a\"\"b\""},
                                        {L"a b,c;d", L"a b,c;d"},
                                        {L"", L""}}) {
        source.forget();
        source.put(0, TraceSource::kComponent, field);
        EXPECT_EQ(text(), L"source0.cpp\t" + std::wstring(quoted) + L"\t0\r\n");
    }
}

TEST_F(SelectedTextTest, SelectedRowsThatAreGoneAreLeftOut) {
    selection.selectRows(18, 25);
    selection.extendTo({25, 3});
    EXPECT_EQ(text(), L"source4.cpp\tQueue\t3\r\nsource5.cpp\tStore\t4\r\n");
}

TEST_F(SelectedTextTest, AGroupIsCopiedAsItReads) {
    groups.setColumns({{TraceSource::kComponent}});
    groups.group(source);
    groups.setUnfolded(0, true, source);
    geometry.setRowCount(groups.grouping().viewCount());
    selection.moveTo({0, 3});
    EXPECT_EQ(text(), L"By: Dialer  (5)\r\n") << "also where no whole row is selected";
    selection.extendTo({1, 3});
    EXPECT_EQ(text(), L"By: Dialer  (5)\r\nsource1.cpp\tDialer\t1\r\n");
}

TEST_F(SelectedTextTest, CanBeBrokenOffAfterAnyRow) {
    selection.selectRows(0, 9);
    selection.extendTo({9, 3});
    int rows = 0;
    std::wstring copied;
    EXPECT_FALSE(copy.append(copied, [&] { return ++rows < 3; }));
    EXPECT_EQ(rows, 3);
}

TEST_F(SelectedTextTest, WhatGoesMeanwhileIsLeftOut) {
    selection.selectRow({0, 3});
    selection.extendTo({9, 3});
    std::wstring copied;
    EXPECT_TRUE(copy.append(copied, [&] {
        cursor.bind(nullptr);
        return true;
    }));
    EXPECT_EQ(copied, L"source0.cpp\tSession\t0\r\n");
}

TEST_F(SelectedTextTest, FieldsOfARowThatIsGoneAreEmpty) {
    source.setRowCount(1);
    selection.selectRow({0, 3});
    selection.extendTo({1, 3});
    EXPECT_EQ(text(), L"source0.cpp\tSession\t0\r\n\t\t\r\n");
}

}  // namespace
}  // namespace grid
