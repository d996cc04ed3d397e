#include "src/app/command_line.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using modMain::CommandLine;
using modMain::DuplicateArgument;
using modMain::parseCommandLine;

TEST(CommandLineTest, NoArgumentsGiveAnEmptyDictionary) {
    EXPECT_TRUE(parseCommandLine(u"").empty());
    EXPECT_TRUE(parseCommandLine(u"  \t ").empty());
}

TEST(CommandLineTest, DashAndSlashAndUpperCaseAreTheSameSwitch) {
    const CommandLine expected{{u"db", u"C:\\traces\\a.mdb"}};
    EXPECT_EQ(parseCommandLine(u"-db C:\\traces\\a.mdb"), expected);
    EXPECT_EQ(parseCommandLine(u"/DB C:\\traces\\a.mdb"), expected);
    EXPECT_EQ(parseCommandLine(u"/db\tC:\\traces\\a.mdb"), expected);
}

TEST(CommandLineTest, NameClosedByTheNextSwitchStaysAsTyped) {
    const CommandLine expected{{u"DB", u""}, {u"x", u""}};
    EXPECT_EQ(parseCommandLine(u"-DB -x"), expected);
}

TEST(CommandLineTest, ValueClosedByTheNextSwitchKeepsTheNameAsTyped) {
    const CommandLine expected{{u"DB", u"a.mdb"}, {u"x", u""}};
    EXPECT_EQ(parseCommandLine(u"-DB a.mdb-X"), expected);
}

TEST(CommandLineTest, QuotesKeepBlanksAndDashes) {
    const CommandLine expected{{u"db", u"C:\\My Traces\\a-b.mdb"}};
    EXPECT_EQ(parseCommandLine(u"-db \"C:\\My Traces\\a-b.mdb\""), expected);
}

TEST(CommandLineTest, DashInAnUnquotedValueBeginsASwitch) {
    const CommandLine expected{{u"db", u"C:\\a"}, {u"b.mdb", u""}};
    EXPECT_EQ(parseCommandLine(u"-db C:\\a-b.mdb"), expected);
}

TEST(CommandLineTest, SlashBeginsASwitchEvenInQuotes) {
    const CommandLine expected{{u"db", u"C:"}, {u"a b.mdb", u""}};
    EXPECT_EQ(parseCommandLine(u"-db \"C:/a b.mdb\""), expected);
}

TEST(CommandLineTest, WordsWithoutASwitchAreCarriedIntoTheNextValue) {
    // "two" comes after the pair is closed by the blank, so it waits for the next switch.
    const CommandLine expected{{u"db", u"one"}, {u"x", u"twothree"}};
    EXPECT_EQ(parseCommandLine(u"-db one two -x three"), expected);
}

TEST(CommandLineTest, WordsBeforeTheFirstSwitchAreDropped) {
    const CommandLine expected{{u"db", u"a.mdb"}};
    EXPECT_EQ(parseCommandLine(u"stray -db a.mdb"), expected);
}

TEST(CommandLineTest, OtherSwitchesAreKept) {
    const CommandLine expected{{u"debug", u""}, {u"db", u"a.mdb"}};
    EXPECT_EQ(parseCommandLine(u"-debug -db a.mdb"), expected);
}

TEST(CommandLineTest, ASwitchGivenTwiceIsAnError) {
    try {
        parseCommandLine(u"-db a.mdb -db b.mdb");
        FAIL() << "the second -db was accepted";
    } catch (const DuplicateArgument& error) {
        EXPECT_EQ(error.name(), u"db");
    }
}

TEST(CommandLineTest, TheErrorNamesTheSwitchAsTyped) {
    try {
        parseCommandLine(u"-db a.mdb -Db b.mdb");
        FAIL() << "the second switch was accepted";
    } catch (const DuplicateArgument& error) {
        EXPECT_EQ(error.name(), u"Db");
    }
}

TEST(CommandLineTest, SpellingsCollideOnlyWhenBothWereLowered) {
    EXPECT_THROW(parseCommandLine(u"-DB a -db b"), DuplicateArgument);
    EXPECT_NO_THROW(parseCommandLine(u"-DB -db"));
}

/// The rules once more, as one plain loop over states, to compare with.
CommandLine reference(const std::u16string& text) {
    bool quotes = false;
    bool name = false;
    bool value = false;
    std::u16string n;
    std::u16string v;
    CommandLine d;
    const auto lower = [](std::u16string s) {
        for (char16_t& c : s) {
            if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
        }
        return s;
    };
    const auto put = [&](const std::u16string& key) {
        if (d.count(key) != 0) throw DuplicateArgument{n};
        d[key] = v;
        n.clear();
        v.clear();
    };
    for (const char16_t c : text) {
        const bool blank = c == u' ' || c == u'\t';
        if (c == u'/' || (c == u'-' && !quotes)) {
            name = true;
            value = false;
            if (!n.empty()) put(n);
        } else if (c == u'"') {
            quotes = !quotes;
        } else if (!blank || quotes) {
            if (name) {
                n += c;
            } else if (value) {
                v += c;
            }
        } else if (name) {
            name = false;
            value = true;
        } else if (!n.empty()) {
            put(lower(n));
        }
    }
    if (!n.empty()) put(lower(n));
    return d;
}

TEST(CommandLineTest, RandomTextsParseAsTheReferenceDoes) {
    constexpr std::u16string_view kAlphabet = u"aBd-/\" \tx";
    std::mt19937 random{20060314};
    int duplicates = 0;
    for (int round = 0; round < 20000; ++round) {
        std::u16string text(random() % 24, u' ');
        std::generate(text.begin(), text.end(),
                      [&] { return kAlphabet[random() % kAlphabet.size()]; });
        CommandLine expected;
        try {
            expected = reference(text);
        } catch (const DuplicateArgument&) {
            ++duplicates;
            EXPECT_THROW(parseCommandLine(text), DuplicateArgument);
            continue;
        }
        EXPECT_EQ(parseCommandLine(text), expected);
    }
    EXPECT_GT(duplicates, 100);
}

}  // namespace
