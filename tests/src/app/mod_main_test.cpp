// The order of start-up, played through with parts that write down when they are asked.
#include "src/app/mod_main.h"

#include "src/platform/running_on_server.h"
#include "tests/src/log/fake_log_system.h"

#include <gtest/gtest.h>

namespace {

using modMain::CommandLine;

class RecordingStartUp : public modMain::StartUp {
public:
    bool hasPreviousInstance() override { return previous; }
    void activatePreviousInstance() override { note("activatePreviousInstance"); }
    void InitalizeLanguages() override { note("InitalizeLanguages"); }
    VersionRecord getVersion() override {
        note("getVersion");
        return {.major = serverMajor};
    }
    bool ChangePriority(std::uint32_t priorityClass) override {
        note("ChangePriority " + std::to_string(priorityClass));
        return priorityChanges;
    }
    std::optional<CommandLine> parseCommandLine() override {
        note("parseCommandLine");
        return arguments;
    }
    std::u16string selectDatabase() override {
        note("selectDatabase");
        return chosen;
    }
    void doEvents() override { note("doEvents"); }
    void createDiags() override { note("createDiags"); }
    void connectToDB(const std::u16string& path) override {
        note("connectToDB " + std::string{path.begin(), path.end()});
    }
    void openRecordsets() override { note("openRecordsets"); }
    void reloadDBGrid() override { note("reloadDBGrid"); }
    void showMainWindow() override { note("showMainWindow"); }

    bool previous = false;
    std::int16_t serverMajor = 0;
    bool priorityChanges = true;
    std::optional<CommandLine> arguments = CommandLine{};
    std::u16string chosen;
    std::string failing;  ///< the part that throws
    std::vector<std::string> asked;

private:
    void note(const std::string& what) {
        asked.push_back(what);
        if (!failing.empty() && what.starts_with(failing)) {
            throw RuntimeError{RuntimeError::kInvalidCall, u"Invalid procedure call or argument"};
        }
    }
};

class MainTest : public testing::Test {
protected:
    void SetUp() override { modMain::runningOnServer = false; }
    void TearDown() override { modMain::runningOnServer = false; }

    using Asked = std::vector<std::string>;
    RecordingStartUp startUp_;
};

TEST_F(MainTest, WithADatabaseOnTheCommandLineNothingIsAsked) {
    SharedFakeLog log;
    startUp_.arguments = CommandLine{{u"db", u"a.mdb"}};
    modMain::Main(startUp_);
    const Asked expected{"InitalizeLanguages", "getVersion",   "parseCommandLine",
                         "doEvents",           "createDiags",  "connectToDB a.mdb",
                         "openRecordsets",     "reloadDBGrid", "showMainWindow"};
    EXPECT_EQ(startUp_.asked, expected);
    EXPECT_FALSE(modMain::runningOnServer);
    const Asked lines{"Entering [modMain]Main_0",
                      "Exiting [modMain]Main_0 Start: 34212.5 End: 34212.5 - Elapsed: 0.0"};
    EXPECT_EQ(log.messages("[modMain]Main"), lines);
}

TEST_F(MainTest, WithoutOneTheUserChooses) {
    SharedFakeLog log;
    startUp_.chosen = u"b.mdb";
    modMain::Main(startUp_);
    const Asked expected{"InitalizeLanguages", "getVersion",     "parseCommandLine",
                         "selectDatabase",     "doEvents",       "createDiags",
                         "connectToDB b.mdb",  "openRecordsets", "reloadDBGrid",
                         "showMainWindow"};
    EXPECT_EQ(startUp_.asked, expected);
}

TEST_F(MainTest, WhoCancelsGetsAnEmptyWindow) {
    SharedFakeLog log;
    modMain::Main(startUp_);
    const Asked expected{"InitalizeLanguages", "getVersion",  "parseCommandLine", "selectDatabase",
                         "doEvents",           "createDiags", "showMainWindow"};
    EXPECT_EQ(startUp_.asked, expected);
}

TEST_F(MainTest, AnEmptyPathOnTheCommandLineIsNoDatabaseAndNoQuestion) {
    SharedFakeLog log;
    startUp_.arguments = CommandLine{{u"db", u""}};
    modMain::Main(startUp_);
    const Asked expected{"InitalizeLanguages", "getVersion",  "parseCommandLine",
                         "doEvents",           "createDiags", "showMainWindow"};
    EXPECT_EQ(startUp_.asked, expected);
}

TEST_F(MainTest, AParserThatYieldsNothingIsNoArguments) {
    SharedFakeLog log;
    startUp_.arguments = std::nullopt;
    modMain::Main(startUp_);
    EXPECT_EQ(startUp_.asked[3], "selectDatabase");
    EXPECT_TRUE(log.failures("[modMain]Main").empty());
}

TEST_F(MainTest, AnUpperCaseSwitchBeforeAnotherOneIsNotFound) {
    SharedFakeLog log;
    startUp_.arguments = modMain::parseCommandLine(u"-DB -x");
    modMain::Main(startUp_);
    EXPECT_EQ(startUp_.asked[3], "selectDatabase");
}

TEST_F(MainTest, OnAServerThePriorityIsLowered) {
    SharedFakeLog log;
    startUp_.serverMajor = 4;
    modMain::Main(startUp_);
    EXPECT_EQ(startUp_.asked[2], "ChangePriority 16384");
    EXPECT_TRUE(modMain::runningOnServer);
}

TEST_F(MainTest, TheFirstVersionIsAServerToo) {
    SharedFakeLog log;
    startUp_.serverMajor = 1;
    modMain::Main(startUp_);
    EXPECT_TRUE(modMain::runningOnServer);
}

TEST_F(MainTest, AVersionOfZeroOrLessIsNoServer) {
    SharedFakeLog log;
    startUp_.serverMajor = -1;
    modMain::Main(startUp_);
    EXPECT_EQ(startUp_.asked[2], "parseCommandLine");
    EXPECT_FALSE(modMain::runningOnServer);
}

TEST_F(MainTest, APriorityThatCannotBeChangedIsAWarningOnly) {
    SharedFakeLog log;
    startUp_.serverMajor = 4;
    startUp_.priorityChanges = false;
    modMain::Main(startUp_);
    EXPECT_TRUE(modMain::runningOnServer);
    EXPECT_EQ(log.messages("[modMain]Main")[1], "Unable to change process priority.");
    const std::string text = log.fake.text(theLog().strLogFile());
    EXPECT_NE(text.find(" Warning:(" + std::string(32, ' ') +
                        "[modMain]Main)   Unable to change process priority.\r\n"),
              std::string::npos);
    EXPECT_EQ(startUp_.asked.back(), "showMainWindow");
}

TEST_F(MainTest, ASecondInstanceThatFindsNoFirstStartsLikeOne) {
    SharedFakeLog log;
    startUp_.previous = true;
    modMain::Main(startUp_);
    EXPECT_EQ(startUp_.asked.front(), "activatePreviousInstance");
    EXPECT_EQ(startUp_.asked.back(), "showMainWindow");
}

TEST_F(MainTest, AFailedStepIsLoggedAndTheNextOnesRun) {
    SharedFakeLog log;
    startUp_.arguments = CommandLine{{u"db", u"a.mdb"}};
    startUp_.failing = "openRecordsets";
    modMain::Main(startUp_);
    EXPECT_EQ(startUp_.asked.back(), "showMainWindow");
    const Asked expected{"Err.Number = 5 Err.Description = Invalid procedure call or argument"};
    EXPECT_EQ(log.failures("[modMain]Main"), expected);
}

TEST_F(MainTest, UnderDevelopmentElevenFailuresEndIt) {
    SharedFakeLog log{SharedFakeLog::Mode::Development};
    startUp_.failing = "doEvents";
    modMain::Main(startUp_);
    EXPECT_NE(startUp_.asked.back(), "showMainWindow");
    const Asked failures = log.failures("[modMain]Main");
    ASSERT_EQ(failures.size(), 12u);
    EXPECT_EQ(failures.back(), "Error count exceeded, forcing exit from [modMain]Main");
    EXPECT_TRUE(log.messages("[modMain]Main").back().starts_with("Exiting [modMain]Main_0"));
}

}  // namespace
