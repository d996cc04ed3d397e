// Priority, help and launching through the system's own calls.
#include "src/platform/mdl_html_help.h"
#include "src/platform/mdl_priority.h"
#include "src/platform/program.h"
#include "src/platform/utilities.h"
#include "src/text/text.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/src/ui/language_libraries.h"
#include "tests/support/expected.h"

#include <windows.h>
#include <gtest/gtest.h>

namespace {

TEST(ChangePriorityTest, SetsThePriorityAndLogsTheAnswer) {
    SharedFakeLog log;
    EXPECT_TRUE(mdlPriority::ChangePriority(mdlPriority::kBelowNormal));
    EXPECT_EQ(::GetPriorityClass(::GetCurrentProcess()), DWORD{BELOW_NORMAL_PRIORITY_CLASS});
    EXPECT_EQ(log.messages("[mdlPriority]ChangePriority"),
              std::vector<std::string>{"SetPriorityClass(16384) returned = 1"});
    EXPECT_TRUE(mdlPriority::ChangePriority(NORMAL_PRIORITY_CLASS));
}

TEST(ChangePriorityTest, AClassThatIsRefusedIsLoggedWithTheSystemsText) {
    SharedFakeLog log;
    EXPECT_FALSE(mdlPriority::ChangePriority(0x12345));
    const std::vector<std::string> lines = log.messages("[mdlPriority]ChangePriority");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].starts_with("SetPriorityClass failed: 87 ")) << lines[0];
    EXPECT_GT(lines[0].size(), std::string{"SetPriorityClass failed: 87 "}.size());
    EXPECT_EQ(::GetPriorityClass(::GetCurrentProcess()), DWORD{NORMAL_PRIORITY_CLASS});
}

TEST(HelpFileTest, TheLanguagesFileComesFirstAndEnglishOtherwise) {
    const fixture::TemporaryFolder folder;
    const std::u16string path = fromWide(folder.path().wstring());
    const std::u16string german = path + u"\\VorelleDiagnosticViewer_DEU.chm";
    const std::u16string english = path + u"\\VorelleDiagnosticViewer_ENU.chm";
    EXPECT_EQ(mdlHTMLHelp::helpFileIn(path, u"DEU"), english) << "not even English is there";
    folder.write("VorelleDiagnosticViewer_ENU.chm", {1});
    EXPECT_EQ(mdlHTMLHelp::helpFileIn(path, u"DEU"), english);
    folder.write("VorelleDiagnosticViewer_DEU.chm", {1});
    EXPECT_EQ(mdlHTMLHelp::helpFileIn(path, u"DEU"), german);
    EXPECT_EQ(mdlHTMLHelp::helpFileIn(path, u"ENU"), english);
}

TEST(HelpFileTest, AFolderOfThatNameIsNoHelp) {
    const fixture::TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "VorelleDiagnosticViewer_DEU.chm");
    const std::u16string path = fromWide(folder.path().wstring());
    EXPECT_EQ(mdlHTMLHelp::helpFileIn(path, u"DEU"), path + u"\\VorelleDiagnosticViewer_ENU.chm");
}

TEST(HelpFileTest, LiesBesideTheProgram) {
    SharedFakeLog log;
    EXPECT_EQ(mdlHTMLHelp::getHelpFileName(u"ENU"),
              program::folder() + u"\\VorelleDiagnosticViewer_ENU.chm");
    EXPECT_TRUE(log.failures("[mdlHTMLHelp]getHelpFileName").empty());
}

TEST(HelpFileTest, IsInTheLanguageInUseIfItIsThere) {
    SharedFakeLog log;
    for (const auto& [language, code] : {std::pair{1031, u"DEU"}, {1041, u"JPN"}, {1036, u"ENU"}}) {
        LanguageFolder::use(static_cast<std::uint16_t>(language));
        const std::u16string file =
            mdlHTMLHelp::getHelpFileName(modLocalize::currentLanguageCode());
        EXPECT_EQ(file, program::folder() + u"\\VorelleDiagnosticViewer_" + std::u16string{code} +
                            u".chm");
        EXPECT_TRUE(std::filesystem::exists(toWide(file)));
    }
    LanguageFolder::use(kEnglish);
    EXPECT_TRUE(log.failures("[mdlHTMLHelp]getHelpFileName").empty());
}

TEST(ShowHelpTest, AMissingFileIsLeftToTheHelpViewerAndTheAnswerLogged) {
    SharedFakeLog log;
    mdlHTMLHelp::showCHMHelp(nullptr, u"C:\\no such file.chm");
    mdlHTMLHelp::showCHMHelp(nullptr, u"C:\\no such file.chm", 1000);
    EXPECT_EQ(log.messages("[mdlHTMLHelp]showCHMHelp"),
              (std::vector<std::string>{"hwndHelp returned = 0", "hwndHelp returned = 0"}));
    mdlHTMLHelp::closeHelp();
}

TEST(LaunchTest, WhatCannotBeOpenedIsLogged) {
    SharedFakeLog log;
    Utilities::LaunchApplication(u"C:\\no such file.nothing");
    ASSERT_EQ(log.failures("[Utilities]LaunchApplication").size(), 1u);
    EXPECT_TRUE(log.failures("[Utilities]LaunchApplication")[0].starts_with(
        "Err.Number = 2 Err.Description = Unable to open C:\\no such file.nothing"));
    Utilities::LaunchInternetExplorer(u"nosuchscheme-at-all://x");
    EXPECT_EQ(log.failures("[Utilities]LaunchInternetExplorer").size(), 1u);
}

}  // namespace
