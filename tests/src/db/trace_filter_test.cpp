#include "src/db/trace_filter.h"

#include <gtest/gtest.h>

namespace {

UniqueTrace trace(const char16_t* key, bool selected = true) {
    UniqueTrace made;
    made.selected = selected;
    made.qrxIndex = std::u16string{key};
    return made;
}

TEST(TraceFilterTest, TermsAreJoinedWithDoubledBlanks) {
    EXPECT_EQ(
        whereClause(constructFilterExpression({trace(u"A"), trace(u"B"), trace(u"C", false)})),
        u"WHERE  ( qrxIndex = 'A' )  OR  ( qrxIndex = 'B' ) ");
}

TEST(TraceFilterTest, EverythingTickedIsAlwaysTrue) {
    EXPECT_EQ(constructFilterExpression({trace(u"A"), trace(u"B")}), u"-1");
    EXPECT_EQ(whereClause(u"-1"), u"WHERE -1");
}

TEST(TraceFilterTest, NothingTickedIsNeverTrue) {
    EXPECT_EQ(constructFilterExpression({trace(u"A", false)}), u"");
    EXPECT_EQ(whereClause(u""), u"WHERE -1 = 1");
}

TEST(TraceFilterTest, NoUniqueTracesAtAllFilterNothing) {
    EXPECT_EQ(constructFilterExpression({}), u"-1");
}

TEST(TraceFilterTest, QuotesInKeysStand) {
    EXPECT_EQ(constructFilterExpression({trace(u"it's"), trace(u"", false)}),
              u" ( qrxIndex = 'it's' ) ");
}

TEST(TraceFilterTest, ItemsAreLaidOutInColumns) {
    UniqueTrace made;
    made.component = std::u16string{u"Notifier"};
    made.process = std::u16string{u"MsgSvc"};
    made.traceLevel = std::int16_t{12};
    made.source = std::u16string{u"CSession"};
    EXPECT_EQ(itemText(made),
              u"MsgSvc Process" + std::u16string(19, u' ') + u"  Level: 12    Source: CSession");
    EXPECT_EQ(componentKey(made), u"c-Notifier");
    EXPECT_EQ(componentText(made), u"Notifier Component");
}

TEST(TraceFilterTest, NullIsShownAsNothing) {
    EXPECT_EQ(componentText(UniqueTrace{}), u" Component");
    EXPECT_EQ(componentKey(UniqueTrace{}), u"c-");
}

TEST(TraceFilterTest, LongNamesMoveTheRest) {
    UniqueTrace made;
    made.process = std::u16string(50, u'p');
    made.traceLevel = std::int16_t{-12345};
    EXPECT_EQ(itemText(made), std::u16string(50, u'p') + u" Process  Level: -12345   Source: ");
}

TEST(TraceFilterTest, KeysNameTheirRows) {
    EXPECT_EQ(itemKey(0), u"Item:0");
    EXPECT_EQ(itemKey(4711), u"Item:4711");
    EXPECT_EQ(rowOfKey(u"Item:4711"), 4711u);
    EXPECT_FALSE(rowOfKey(u"c-Item").has_value());
    EXPECT_FALSE(rowOfKey(u"Item:").has_value());
}

}  // namespace
