#include "engine/sql/like/like.h"

#include "engine/jet/text.h"
#include "engine/sql/values/error.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

namespace {

bool like(std::u16string_view text, std::u16string_view pattern) {
    return sql::LikePattern{pattern}.matches(text);
}

TEST(Like, KnowsItsSigns) {
    EXPECT_TRUE(like(u"abc", u"a*"));
    EXPECT_TRUE(like(u"abc", u"*c"));
    EXPECT_TRUE(like(u"abc", u"a?c"));
    EXPECT_TRUE(like(u"a1c", u"a#c"));
    EXPECT_FALSE(like(u"abc", u"a#c"));
    EXPECT_TRUE(like(u"", u"*"));
    EXPECT_TRUE(like(u"", u""));
    EXPECT_FALSE(like(u"a", u""));
    EXPECT_FALSE(like(u"", u"?"));
    EXPECT_TRUE(like(u"b", u"[a-c]"));
    EXPECT_FALSE(like(u"b", u"[!a-c]"));
    EXPECT_TRUE(like(u"d", u"[!a-c]"));
    EXPECT_TRUE(like(u"*", u"[*]"));
    EXPECT_TRUE(like(u"a[b", u"a[[]b"));
    EXPECT_TRUE(like(u"-", u"[a-]"));
    EXPECT_TRUE(like(u"!", u"[!]"));
    EXPECT_TRUE(like(u"ab", u"a[]b"));
    EXPECT_TRUE(like(u"a]", u"a]"));
}

TEST(Like, IgnoresCase) {
    EXPECT_TRUE(like(u"STRASSE", u"str*"));
    EXPECT_TRUE(like(u"ÄRGER", u"är*"));
    EXPECT_FALSE(like(u"ÄRGER", u"ar*"));
    EXPECT_TRUE(like(u"ЖУК", u"жу?"));
    EXPECT_TRUE(like(u"Q", u"[p-r]"));
}

TEST(Like, RefusesBrokenLists) {
    EXPECT_THROW(like(u"a", u"[a"), sql::Error);
    EXPECT_THROW(like(u"a", u"[z-a]"), sql::Error);
}

TEST(Like, IsNotSlowedDownByManyRuns) {
    const std::u16string text(5000, u'a');
    std::u16string pattern;
    for (int i = 0; i < 200; ++i) pattern += u"*a";
    EXPECT_FALSE(like(text, pattern + u"b"));
    EXPECT_TRUE(like(text, pattern));
}

/// The definition of the signs, one step at a time.
bool plainLike(std::u16string_view text, std::u16string_view pattern) {
    if (pattern.empty()) return text.empty();
    if (pattern[0] == u'*') {
        for (std::size_t taken = 0; taken <= text.size(); ++taken) {
            if (plainLike(text.substr(taken), pattern.substr(1))) return true;
        }
        return false;
    }
    if (pattern[0] == u'[') {
        const std::size_t end = pattern.find(u']');
        const bool negated = pattern[1] == u'!';
        const auto list = pattern.substr(negated ? 2 : 1, end - (negated ? 2 : 1));
        if (text.empty()) return false;
        bool listed = false;
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (i + 2 < list.size() && list[i + 1] == u'-') {
                listed |= text[0] >= list[i] && text[0] <= list[i + 2];
                i += 2;
            } else {
                listed |= text[0] == list[i];
            }
        }
        return listed != negated && plainLike(text.substr(1), pattern.substr(end + 1));
    }
    if (text.empty()) return false;
    const bool fits = pattern[0] == u'?' || pattern[0] == text[0] ||
                      (pattern[0] == u'#' && text[0] >= u'0' && text[0] <= u'9');
    return fits && plainLike(text.substr(1), pattern.substr(1));
}

TEST(Like, AgreesWithItsDefinition) {
    constexpr std::u16string_view kParts[] = {u"*", u"?",    u"#",     u"A",      u"B",
                                              u"1", u"[AB]", u"[!A1]", u"[1A-B]", u"*"};
    fixture::Random random{5};
    int matched = 0;
    for (int round = 0; round < 20000; ++round) {
        std::u16string pattern;
        for (std::uint32_t i = random.below(7); i > 0; --i) {
            pattern += random.pick<std::u16string_view>(kParts);
        }
        std::u16string text;
        for (std::uint32_t i = random.below(8); i > 0; --i) text += u"AB12"[random.below(4)];
        const bool expected = plainLike(text, pattern);
        matched += expected;
        ASSERT_EQ(like(text, pattern), expected)
            << jet::toUtf8(text) << " LIKE " << jet::toUtf8(pattern);
    }
    EXPECT_GT(matched, 1000);
}

}  // namespace
