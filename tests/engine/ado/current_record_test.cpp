// The steps of the current record, at both ends and while rows are added.
#include "engine/ado/current_record.h"

#include "tests/engine/ado/recordset_fixture.h"

namespace {

using namespace ado;

template <typename Step>
void expectNoRecord(Step step) {
    EXPECT_EQ(errorNumber(step), adErrNoCurrentRecord);
}

TEST(CurrentRecord, BeginsOnTheFirstRow) {
    const CurrentRecord current;
    EXPECT_FALSE(current.bof(2));
    EXPECT_FALSE(current.eof(2));
    EXPECT_EQ(current.position(), 0u);
    EXPECT_EQ(current.absolutePosition(2), 1);
}

TEST(CurrentRecord, WithoutRowsIsAtBothEndsUntilOneComes) {
    const CurrentRecord current;
    EXPECT_TRUE(current.bof(0));
    EXPECT_TRUE(current.eof(0));
    EXPECT_EQ(current.absolutePosition(0), adPosUnknown);
    expectNoRecord([&] { current.requireRow(0); });
    expectNoRecord([&] { current.next(0); });
    expectNoRecord([&] { current.previous(0); });
    expectNoRecord([] { CurrentRecord::first(0); });
    expectNoRecord([] { CurrentRecord::last(0); });
    EXPECT_NO_THROW(current.requireRow(1));
    EXPECT_EQ(current.absolutePosition(1), 1);
}

TEST(CurrentRecord, StepsOnAndBehindTheLastRow) {
    const CurrentRecord second = CurrentRecord{}.next(2);
    EXPECT_EQ(second.position(), 1u);
    const CurrentRecord behind = second.next(2);
    EXPECT_TRUE(behind.eof(2));
    EXPECT_FALSE(behind.bof(2));
    EXPECT_EQ(behind.absolutePosition(2), adPosEOF);
    expectNoRecord([&] { behind.next(2); });
    expectNoRecord([&] { behind.requireRow(2); });
    EXPECT_EQ(behind.previous(2), second);
}

TEST(CurrentRecord, StepsBackAndBeforeTheFirstRow) {
    const CurrentRecord before = CurrentRecord{}.previous(2);
    EXPECT_TRUE(before.bof(2));
    EXPECT_FALSE(before.eof(2));
    EXPECT_EQ(before.absolutePosition(2), adPosBOF);
    expectNoRecord([&] { before.previous(2); });
    expectNoRecord([&] { before.requireRow(2); });
    EXPECT_EQ(before.next(2), CurrentRecord{});
    EXPECT_EQ(CurrentRecord::last(5).previous(5).position(), 3u);
}

TEST(CurrentRecord, BehindTheLastRowStaysThereWhenRowsAreAdded) {
    const CurrentRecord behind = CurrentRecord{}.next(1);
    EXPECT_TRUE(behind.eof(3));
    EXPECT_EQ(behind.previous(3).position(), 2u);
}

TEST(CurrentRecord, APositionWithoutARowIsBehindTheLastOne) {
    EXPECT_EQ(CurrentRecord::at(4, 5), CurrentRecord::last(5));
    EXPECT_EQ(CurrentRecord::at(5, 5), CurrentRecord::behind());
    EXPECT_EQ(CurrentRecord::at(9, 5), CurrentRecord::behind());
    EXPECT_NE(CurrentRecord::before(), CurrentRecord::behind());
    EXPECT_EQ(CurrentRecord::first(5), CurrentRecord{});
}

}  // namespace
