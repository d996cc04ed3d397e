#include "engine/jet/text.h"
#include "engine/sql/parse/token.h"

#include <gtest/gtest.h>

namespace {

using sql::TokenKind;

/// Literals are shown by the place of their type in jet::Value.
std::string shown(std::u16string_view text) {
    std::string result;
    for (const sql::Token& token : sql::tokenize(text)) {
        switch (token.kind) {
            case TokenKind::Name:
                result += (token.quoted ? "[" : "<") + jet::toUtf8(token.text) +
                          (token.quoted ? "]" : ">");
                break;
            case TokenKind::Symbol:
                result += jet::toUtf8(token.text);
                break;
            case TokenKind::Literal:
                result += "#" + std::to_string(token.value.index());
                break;
            case TokenKind::End:
                return result + ".";
        }
    }
    return result;
}

jet::Value literal(std::u16string_view text) {
    const auto tokens = sql::tokenize(text);
    EXPECT_EQ(tokens.size(), 2u);
    return tokens.front().value;
}

std::string errorOf(std::u16string_view text) {
    try {
        sql::tokenize(text);
    } catch (const sql::Error& error) {
        EXPECT_EQ(error.fault(), sql::Fault::Syntax);
        return error.what();
    }
    return "none";
}

TEST(Lexer, TellsNamesFromSymbols) {
    EXPECT_EQ(shown(u"a.[b c]=`d`"), "<a>.[b c]=[d].");
    EXPECT_EQ(shown(u"a<=b<>c>=d<e>f"), "<a><=<b><><c>>=<d><<e>><f>.");
    EXPECT_EQ(shown(u"Zeile_2\u00A0größe$"), "<Zeile_2><größe$>.");
    EXPECT_EQ(shown(u"a\u3000b"), "<a><b>.") << "the blank of Japanese texts";
    EXPECT_EQ(shown(u" \t\r\n"), ".");
}

TEST(Lexer, ReadsNumbers) {
    EXPECT_EQ(literal(u"42"), jet::Value{std::int32_t{42}});
    EXPECT_EQ(literal(u"2147483648"), jet::Value{2147483648.0});
    EXPECT_EQ(literal(u"1.5"), jet::Value{1.5});
    EXPECT_EQ(literal(u".25"), jet::Value{0.25});
    EXPECT_EQ(literal(u"5."), jet::Value{5.0});
    EXPECT_EQ(literal(u"1.5E+3"), jet::Value{1500.0});
    EXPECT_EQ(literal(u"2e-2"), jet::Value{0.02});
    EXPECT_NE(errorOf(u"12abc"), "none");
    EXPECT_NE(errorOf(u"1e999"), "none");
}

TEST(Lexer, ReadsTextsWithDoubledQuotes) {
    EXPECT_EQ(literal(u"'it''s'"), jet::Value{std::u16string{u"it's"}});
    EXPECT_EQ(literal(u"\"say \"\"yes\"\"\""), jet::Value{std::u16string{u"say \"yes\""}});
    EXPECT_EQ(literal(u"'\"'"), jet::Value{std::u16string{u"\""}});
    EXPECT_EQ(literal(u"''"), jet::Value{std::u16string{}});
}

TEST(Lexer, NamesThePlaceOfAnError) {
    EXPECT_NE(errorOf(u"a = 'open").find("near ''open'"), std::string::npos);
    EXPECT_NE(errorOf(u"a [open").find("near '[open'"), std::string::npos);
    EXPECT_NE(errorOf(u"a []"), "none");
    EXPECT_NE(errorOf(u"a ? b").find("near '? b'"), std::string::npos);
    EXPECT_NE(errorOf(u"#13/45/2000#"), "none");
    EXPECT_NE(errorOf(u"#1/1/2000"), "none");
}

TEST(Lexer, KeepsPositions) {
    const auto tokens = sql::tokenize(u"ab  'c' <>");
    ASSERT_EQ(tokens.size(), 4u);
    EXPECT_EQ(tokens[1].position, 4u);
    EXPECT_EQ(tokens[2].position, 8u);
    EXPECT_EQ(tokens[3].position, 10u);
}

}  // namespace
