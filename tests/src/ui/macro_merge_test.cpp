// Reading macro traces with the system's XML parser.
#include "tests/src/ui/macro_traces_test.h"

#include <chrono>
#include <fstream>

namespace {

constexpr std::u16string_view kLabel = u"[mdlTraces]initMacroTraces: ";

std::u16string repeated(const std::u16string& part, int times) {
    std::u16string text;
    for (int i = 0; i < times; ++i) text += part;
    return text;
}

using MacroMergeTest = MacroTracesTest;

TEST_F(MacroMergeTest, AnEmptyTableLeavesTheRootAlone) {
    read({macroRow(u"A", u"t1")});
    read({});
    EXPECT_EQ(outline(), L"");
    EXPECT_EQ(mdlTraces::xmlMacroTraces().elements(L"HYBRIDTRACES").size(), 1u);
    EXPECT_TRUE(reports.empty());
}

TEST_F(MacroMergeTest, RowsOfAGroupAreGathered) {
    read({macroRow(u"A", u"t1"), macroRow(u"B", u"t2"), macroRow(u"A", u"t3")});
    EXPECT_EQ(outline(), L"A[t1 t3] B[t2]");
    EXPECT_TRUE(reports.empty());
}

TEST_F(MacroMergeTest, TheFirstRowOfAGroupDecidesWhetherItIsHidden) {
    read({macroRow(u"A", u"t1"), macroRow(u"A", u"t2", u"", u" DONTSHOW=\"1\""),
          macroRow(u"B", u"t1", u"", u" DONTSHOW=\"\""), macroRow(u"B", u"t2")});
    const auto groups = mdlTraces::xmlMacroTraces().elements(L"GA");
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_FALSE(groups[0].hasAttribute(L"DONTSHOW"));
    EXPECT_TRUE(groups[1].hasAttribute(L"DONTSHOW"));
}

TEST_F(MacroMergeTest, OnlyTheFirstTraceOfALaterRowCounts) {
    const std::u16string two =
        u"<GA NAME='A'><DESCRIPTION>dropped</DESCRIPTION>"
        u"<TRACE NAME='x'/><TRACE NAME='y'/></GA>";
    read({macroRow(u"A", u"t1"), two, u"<GA NAME='B'><TRACE NAME='x'/><TRACE NAME='y'/></GA>"});
    EXPECT_EQ(outline(), L"A[t1 x] B[x y]");
    EXPECT_FALSE(mdlTraces::xmlMacroTraces().elements(L"GA")[0].find(L"DESCRIPTION").exists());
}

// A group may stand within another element; its traces are looked for at the top only.
TEST_F(MacroMergeTest, AWrappedGroupComesWholeButAddsNothing) {
    const std::u16string wrapped = u"<X><GA NAME='A'><TRACE NAME='w'/></GA></X>";
    read({wrapped, macroRow(u"A", u"t1"), wrapped});
    EXPECT_EQ(outline(), L"A[w t1]");
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reported(kLabel, u"Err.Number = 91 "));
}

TEST_F(MacroMergeTest, GroupNamesAreToldApartByCaseAndTracesMayRepeat) {
    read({macroRow(u"abc", u"t"), macroRow(u"ABC", u"t"), macroRow(u"abc", u"t")});
    EXPECT_EQ(outline(), L"abc[t t] ABC[t]");
}

TEST_F(MacroMergeTest, EachFaultyRowIsReportedAndLeftOut) {
    const MacroRows faulty{u"<GA NAME='x'><TRACE></GA>",
                           u"",
                           u"no markup",
                           std::nullopt,
                           u"<OTHER NAME='x'/>",
                           u"<GA><TRACE NAME='t'/></GA>",
                           u"<GA NAME='A'/>",
                           macroRow(u"O'Hara", u"t"),
                           macroRow(u"' or '1'='1", u"t")};
    MacroRows all{macroRow(u"A", u"t1")};
    all.insert(all.end(), faulty.begin(), faulty.end());
    // More faults than a guarded procedure would bear.
    all.insert(all.end(), faulty.begin(), faulty.end());
    all.push_back(macroRow(u"A", u"last"));
    read(all);
    EXPECT_EQ(outline(), L"A[t1 last]");
    EXPECT_EQ(reports.size(), faulty.size() * 2);
    EXPECT_TRUE(reported(kLabel, u"Err.Number = 91 "));
    EXPECT_TRUE(reported(kLabel, u"Err.Number = 94 "));
    EXPECT_TRUE(reported(kLabel, u"O'Hara"));
}

TEST_F(MacroMergeTest, NamesWithDoubleQuotesAndForeignLettersAreFound) {
    read({macroRow(u"Say &quot;hi&quot;", u"\u65e5\u672c\u8a9e"),
          macroRow(u"Say &quot;hi&quot;", u"\U0001F600 &amp; ]")});
    EXPECT_EQ(outline(), L"Say \"hi\"[\u65e5\u672c\u8a9e \xd83d\xde00 & ]]");
    EXPECT_TRUE(mdlTraces::findTrace(L"Say \"hi\"", L"\u65e5\u672c\u8a9e").exists());
    EXPECT_TRUE(mdlTraces::findTrace(L"Say \"hi\"", L"\xd83d\xde00 & ]").exists());
    EXPECT_FALSE(mdlTraces::findTrace(L"Say \"hi\"", L"other").exists());
}

TEST_F(MacroMergeTest, PathsWithQuotesAreRefused) {
    EXPECT_THROW(mdlTraces::findTrace(L"it's", L"t"), RuntimeError);
    EXPECT_THROW(mdlTraces::findTrace(L"A", L"it's"), RuntimeError);
    // Paths that would be valid, and find what was not asked for.
    read({macroRow(u"A", u"t1")});
    EXPECT_THROW(mdlTraces::findTrace(L"x' or 'x'='x", L"t1"), RuntimeError);
    EXPECT_THROW(mdlTraces::findTrace(L"A", L"x' or 'x'='x"), RuntimeError);
}

TEST_F(MacroMergeTest, FaultyPathsAreErrors) {
    read({macroRow(u"A", u"t1")});
    const xml::Node document = mdlTraces::xmlMacroTraces().asNode();
    for (const wchar_t* path : {L"R/A[", L"A[@N='it's']", L"A[@N='x]", L""}) {
        EXPECT_THROW(document.find(path), RuntimeError) << path;
        EXPECT_THROW(document.select(path), RuntimeError) << path;
    }
}

TEST_F(MacroMergeTest, EntitiesAndOtherFilesAreNotFollowed) {
    const std::filesystem::path secret = folder.path() / "secret.txt";
    std::ofstream{secret} << "secret";
    const std::u16string file = u"<!DOCTYPE GA [<!ENTITY s SYSTEM \"" + secret.u16string() +
                                u"\">]><GA NAME=\"A\"><DESCRIPTION>&s;</DESCRIPTION></GA>";
    std::u16string bomb = u"<!DOCTYPE GA [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 12; ++i) {
        bomb += u"<!ENTITY a" + toText(i) + u" \"" + repeated(u"&a" + toText(i - 1) + u";", 10) +
                u"\">";
    }
    bomb += u"]><GA NAME=\"B\"><DESCRIPTION>&a11;</DESCRIPTION></GA>";
    read({file, bomb, macroRow(u"C", u"t")});
    EXPECT_EQ(outline(), L"C[t]");
    EXPECT_EQ(reports.size(), 2u);
}

TEST_F(MacroMergeTest, VeryDeepAndVeryLongTextsAreSurvived) {
    const std::u16string deep =
        u"<GA NAME=\"A\">" + repeated(u"<x>", 100'000) + repeated(u"</x>", 100'000) + u"</GA>";
    const std::u16string wide =
        u"<GA NAME=\"B\">" + repeated(u"<TRACE NAME=\"t\"/>", 20'000) + u"</GA>";
    const std::u16string attribute = macroRow(u"C", std::u16string(10'000'000, u'n'));
    const auto start = std::chrono::steady_clock::now();
    xml::Document document;
    EXPECT_THROW(document.load(toWide(deep)), RuntimeError);
    document.load(toWide(wide));
    EXPECT_EQ(document.elements(L"TRACE").size(), 20'000u);
    document.load(toWide(attribute));
    document.load(toWide(macroRow(u"D", u"t")));
    EXPECT_EQ(document.elements(L"GA")[0].attribute(L"NAME"), L"D");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds{30});
}

TEST_F(MacroMergeTest, ThousandsOfGroupsAreMergedWithoutWalkingAllOfThem) {
    MacroRows many;
    for (int i = 0; i < 3000; ++i) many.push_back(macroRow(u"G" + toText(i / 2), u"t" + toText(i)));
    read(many);
    EXPECT_EQ(mdlTraces::xmlMacroTraces().elements(L"GA").size(), 1500u);
    EXPECT_EQ(mdlTraces::xmlMacroTraces().elements(L"TRACE").size(), 3000u);
    EXPECT_TRUE(reports.empty());
}

TEST_F(MacroMergeTest, AnotherDatabaseReplacesTheDefinitions) {
    read({macroRow(u"A", u"t1")});
    modDatabase::connectToDB(
        folder.write("bad.mdb", std::vector<std::uint8_t>(100, 'x')).u16string());
    modDatabase::openMacroTraces();
    EXPECT_EQ(outline(), L"");
}

TEST_F(MacroMergeTest, TheSampleFilesFaultyRowsAreSurvived) {
    const auto samples = fixture::testDataFolder();
    if (!samples) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    for (const char* name : {"old-odd", "old-many"}) {
        modDatabase::connectToDB((*samples / (std::string{name} + ".mdb")).u16string());
        reports.clear();
        modDatabase::openMacroTraces();
        EXPECT_TRUE(outline().ends_with(L"After The Faults[last]")) << name;
        EXPECT_NE(outline().find(L"Two Traces[one two three]"), std::wstring::npos) << name;
        EXPECT_NE(outline().find(L"call flow[other case]"), std::wstring::npos) << name;
        EXPECT_GE(reports.size(), 7u) << name;
    }
}

}  // namespace
