#include "src/macros/harmless_xml.h"

#include "src/log/procedure.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using macros::kDeepestElement;
using macros::requireHarmlessXml;

bool refused(const std::u16string& text) {
    try {
        requireHarmlessXml(text);
        return false;
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.failure().number, 5);
        return true;
    }
}

std::u16string repeated(const std::u16string& part, int times) {
    std::u16string text;
    for (int i = 0; i < times; ++i) text += part;
    return text;
}

TEST(HarmlessXmlTest, PlainTextsPass) {
    EXPECT_FALSE(refused(u""));
    EXPECT_FALSE(refused(u"no markup"));
    EXPECT_FALSE(refused(u"<GA NAME='a'><TRACE NAME=\"b\"/></GA>"));
    EXPECT_FALSE(refused(u"<?xml version='1.0'?><!-- c --><GA><![CDATA[a < b]]></GA>"));
}

TEST(HarmlessXmlTest, DocumentTypesAreRefusedWhereverTheyStand) {
    EXPECT_TRUE(refused(u"<!DOCTYPE GA [<!ENTITY a 'b'>]><GA/>"));
    EXPECT_TRUE(
        refused(u"\xfeff <?xml version='1.0'?>\r\n<!-- c --><!DOCTYPE GA SYSTEM 'x'><GA/>"));
    EXPECT_TRUE(refused(u"<GA><!ENTITY a 'b'></GA>"));
}

TEST(HarmlessXmlTest, WordsOfADocumentTypeInTextsAreNone) {
    EXPECT_FALSE(refused(u"<!-- <!DOCTYPE GA> --><GA/>"));
    EXPECT_FALSE(refused(u"<GA><![CDATA[<!DOCTYPE GA>]]></GA>"));
    EXPECT_FALSE(refused(u"<GA NAME='<!DOCTYPE'/>"));
    EXPECT_FALSE(refused(u"<?pi <!DOCTYPE ?><GA/>"));
}

TEST(HarmlessXmlTest, DepthIsCountedByOpenElements) {
    const std::u16string open = repeated(u"<a>", kDeepestElement);
    EXPECT_FALSE(refused(open + repeated(u"</a>", kDeepestElement)));
    EXPECT_FALSE(refused(open + u"<b/></a><a x='/>'>"));
    EXPECT_TRUE(refused(open + u"<a>"));
    EXPECT_FALSE(refused(repeated(u"<a></a><b/>", 100'000)));
}

TEST(HarmlessXmlTest, UnfinishedConstructsEnd) {
    for (const char16_t* text : {u"<", u"<!", u"<!-", u"<!--", u"<![CDATA[", u"<?", u"</", u"<a",
                                 u"<a b='", u"<a b=\">", u"<>", u"</>"}) {
        SCOPED_TRACE(std::u16string{text}.size());
        refused(text);
    }
}

TEST(HarmlessXmlTest, TenMillionCharactersTakeNoTimeWorthMentioning) {
    EXPECT_FALSE(refused(u"<GA NAME='" + std::u16string(10'000'000, u'x') + u"'/>"));
    EXPECT_FALSE(refused(repeated(u"<!--", 2'500'000)));
    EXPECT_TRUE(refused(repeated(u"<a ", 3'000'000) + repeated(u"<b>", 1000)));
}

TEST(HarmlessXmlTest, RandomMarkupNeitherHangsNorReadsBeyondItsEnd) {
    constexpr std::u16string_view kAlphabet = u"<>/!-?[]'\" aD";
    std::mt19937 random{4711};
    for (int round = 0; round < 20'000; ++round) {
        std::u16string text(random() % 40, u'<');
        for (char16_t& c : text) c = kAlphabet[random() % kAlphabet.size()];
        refused(text);
    }
}

}  // namespace
