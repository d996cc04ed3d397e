#include "toolkit/grid/model/source_cursor.h"

#include "tests/toolkit/grid/trace_source.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace grid {
namespace {

TEST(SourceCursor, WithoutASourceThereIsNothing) {
    SourceCursor cursor;
    EXPECT_EQ(cursor.source(), nullptr);
    EXPECT_EQ(cursor.rowCount(), 0);
    EXPECT_EQ(cursor.look(100), kNoRow);
    EXPECT_FALSE(cursor.take(100));
    cursor.moveTo(3);
    EXPECT_EQ(cursor.row(), kNoRow);
}

TEST(SourceCursor, NoRowIsCurrentUntilItIsTaken) {
    TraceSource source(10);
    SourceCursor cursor;
    cursor.bind(&source);
    EXPECT_EQ(cursor.rowCount(), 10);
    EXPECT_EQ(cursor.row(), kNoRow);
    EXPECT_EQ(cursor.look(10), 0);
    EXPECT_EQ(cursor.row(), kNoRow);
    EXPECT_TRUE(cursor.take(10));
    EXPECT_EQ(cursor.row(), 0);
    EXPECT_FALSE(cursor.take(10)) << "it is the same";
    cursor.bind(&source);
    EXPECT_EQ(cursor.row(), kNoRow);
}

TEST(SourceCursor, ARowThatIsNotKnownYetIsNone) {
    TraceSource source(10);
    source.setCurrentRow(7);
    SourceCursor cursor;
    cursor.bind(&source);
    EXPECT_EQ(cursor.look(7), kNoRow);
    EXPECT_EQ(cursor.look(8), 7);
    source.setCurrentRow(-1);
    EXPECT_EQ(cursor.look(8), kNoRow);
}

// Notes what it is asked, and what its cursor says meanwhile.
class AskedSource : public TraceSource {
public:
    using TraceSource::TraceSource;
    void setCurrentRow(std::int64_t row) override {
        asked.push_back(row);
        movingMeanwhile = cursor->moving();
        if (fails) throw std::runtime_error("no");
        TraceSource::setCurrentRow(row);
    }
    std::vector<std::int64_t> asked;
    bool movingMeanwhile = false;
    bool fails = false;
    SourceCursor* cursor = nullptr;
};

TEST(SourceCursor, MovesTheSourceAndSaysSoMeanwhile) {
    AskedSource source(10);
    SourceCursor cursor;
    source.cursor = &cursor;
    cursor.bind(&source);
    cursor.moveTo(4);
    EXPECT_TRUE(source.movingMeanwhile);
    EXPECT_FALSE(cursor.moving());
    cursor.moveTo(4);
    cursor.moveTo(kNoRow);
    EXPECT_EQ(source.asked, std::vector<std::int64_t>{4}) << "neither is a move";
    EXPECT_TRUE(cursor.take(10));
    EXPECT_EQ(cursor.row(), 4);
}

TEST(SourceCursor, AMoveThatFailsIsOver) {
    AskedSource source(10);
    SourceCursor cursor;
    source.cursor = &cursor;
    source.fails = true;
    cursor.bind(&source);
    EXPECT_THROW(cursor.moveTo(4), std::runtime_error);
    EXPECT_FALSE(cursor.moving());
}

}  // namespace
}  // namespace grid
