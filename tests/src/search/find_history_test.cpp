#include "src/search/find_history.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::u16string>;

TEST(FindHistoryTest, ANewTextStandsFirst) {
    FindHistory history;
    history.use(u"one");
    const FindHistory::Use use = history.use(u"two");
    EXPECT_TRUE(use.added);
    EXPECT_EQ(use.index, 0);
    EXPECT_EQ(history.texts(), (Texts{u"two", u"one"}));
}

TEST(FindHistoryTest, AKnownTextKeepsItsPlace) {
    FindHistory history;
    history.use(u"one");
    history.use(u"two");
    const FindHistory::Use use = history.use(u"one");
    EXPECT_FALSE(use.added);
    EXPECT_EQ(use.index, 1);
    EXPECT_EQ(history.texts(), (Texts{u"two", u"one"}));
}

TEST(FindHistoryTest, UpperAndLowerCaseAreTwoTexts) {
    FindHistory history;
    history.use(u"error");
    EXPECT_TRUE(history.use(u"ERROR").added);
    EXPECT_TRUE(history.use(u"error ").added);
    EXPECT_EQ(history.texts(), (Texts{u"error ", u"ERROR", u"error"}));
}

}  // namespace
