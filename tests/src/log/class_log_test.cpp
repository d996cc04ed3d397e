#include "src/log/class_log.h"

#include "engine/ado/recordset.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/src/log/step_fault.h"
#include "tests/support/expected.h"
#include "tests/support/trace_database.h"

#include <gtest/gtest.h>

namespace {

const std::string kFirstLine =
    "09:30:12    Info:(                    [classLog]checkSizeOfLogs) Removing logs older than "
    "2005-02-28 09:30:12 - Log Directory Size: 12.3 MB   400 MB Free   2,000 MB Total \r\n";

std::string header(const std::string& started) {
    const std::string stars(120, '*');
    return "\r\n" + stars + "\r\nVorelleDiagnosticViewer Version: 1.2.3   Started: " + started +
           "\r\n" + stars + "\r\n";
}

class ClassLogTest : public testing::Test {
protected:
    /// What the file holds behind the header and the line about old logs.
    std::string written(classLog& log) {
        log.flush();
        const std::string all = fake_.text(log.strLogFile());
        const std::string begin = header("2005-03-14 09:30:12") + kFirstLine;
        EXPECT_TRUE(all.starts_with(begin)) << all;
        return all.substr(std::min(begin.size(), all.size()));
    }

    static std::string line(const std::string& level, const std::string& label,
                            const std::string& message) {
        return "09:30:12 " + level + ":(" + std::string(45 - label.size(), ' ') + label + ") " +
               message + "\r\n";
    }

    FakeLogSystem fake_;
};

TEST_F(ClassLogTest, ANewLogHasItsFolderItsNameAndItsFirstLine) {
    classLog log{fake_.system()};
    EXPECT_EQ(fake_.state->folders.count(u"C:\\Viewer\\LOGS"), 1u);
    EXPECT_EQ(log.strLogFile(), u"C:\\Viewer\\LOGS\\VorelleDiagnosticViewer_20050314_093012.LOG");
    EXPECT_EQ(log.nLogLevel, 2);
    EXPECT_FALSE(log.DebugMode());
    EXPECT_EQ(written(log), "");
}

TEST_F(ClassLogTest, TheRootOfADriveGetsNoSecondSeparator) {
    fake_.program.folder = u"D:\\";
    classLog log{fake_.system()};
    EXPECT_TRUE(log.strLogFile().starts_with(u"D:\\LOGS\\Vorelle"));
}

TEST_F(ClassLogTest, WritesLinesAsTheyComeAndInAnsi) {
    classLog log{fake_.system()};
    log.log(u"Hello", 0, u"[modMain]Main");
    log.log(u"no label", 1);
    log.log(u"\u65E5", 2, u"[a]b");
    EXPECT_EQ(written(log), line("   Info", "[modMain]Main", "Hello") +
                                line("Warning", "", "no label") + line("  ERROR", "[a]b", "?"));
}

TEST_F(ClassLogTest, TheThresholdDecidesByLevel) {
    const auto levels = [](int threshold) {
        FakeLogSystem fake;
        classLog log{fake.system()};
        log.nLogLevel = threshold;
        for (int level = 0; level < 4; ++level)
            log.log(u"level " + std::u16string(1, static_cast<char16_t>(u'0' + level)), level,
                    u"x");
        log.flush();
        std::string found;
        const std::string text = fake.text(log.strLogFile());
        for (char digit = '0'; digit < '4'; ++digit) {
            if (text.find(std::string{"level "} + digit) != std::string::npos) found += digit;
        }
        return found;
    };
    EXPECT_EQ(levels(-1), "12");
    EXPECT_EQ(levels(0), "12");
    EXPECT_EQ(levels(1), "12");
    EXPECT_EQ(levels(2), "0123");
    EXPECT_EQ(levels(3), "012");
}

TEST_F(ClassLogTest, DebugAnywhereInTheArgumentsCopiesEveryLine) {
    for (const char16_t* arguments : {u"-DEBUG", u"-db C:\\deBug.mdb", u"debug"}) {
        FakeLogSystem fake;
        fake.program.arguments = arguments;
        classLog log{fake.system()};
        log.nLogLevel = 0;
        fake.state->debugLines.clear();
        log.log(u"Hello", 0, u"[modMain]Main");
        log.log(u"none", 3);
        ASSERT_EQ(fake.state->debugLines.size(), 2u);
        EXPECT_EQ(fake.state->debugLines[0], u"VorelleDiagnosticViewer:([modMain]Main) Hello");
        EXPECT_EQ(fake.state->debugLines[1],
                  u"VorelleDiagnosticViewer:(" + std::u16string(20, u' ') + u") none");
    }
    classLog log{fake_.system()};
    log.log(u"Hello", 0, u"[modMain]Main");
    EXPECT_TRUE(fake_.state->debugLines.empty());
}

TEST_F(ClassLogTest, NestedProceduresAreNumberedIndentedAndTimed) {
    classLog log{fake_.system()};
    fake_.state->tick = 0.25F;
    const std::u16string label = u"[modMain]Main";
    log.enterProc(label);
    log.enterProc(label);
    log.log(u"inside", 0, label);
    log.exitProc(label);
    log.exitProc(label);
    const std::string name = "[modMain]Main";
    EXPECT_EQ(written(log),
              line("   Info", name, "Entering [modMain]Main_0") +
                  line("   Info", name, "  Entering [modMain]Main_1") +
                  line("   Info", name, "    inside") +
                  line("   Info", name,
                       "  Exiting [modMain]Main_1 Start: 34212.75 End: 34213 - Elapsed: 0.25") +
                  line("   Info", name,
                       "Exiting [modMain]Main_0 Start: 34212.5 End: 34213.25 - Elapsed: 0.75"));
}

TEST_F(ClassLogTest, AnExitWithoutAnEntryHasNoTimeAndStaysAtDepthZero) {
    classLog log{fake_.system()};
    log.exitProc(u"[a]b");
    log.exitProc(u"[a]b");
    log.enterProc(u"[a]c");
    EXPECT_EQ(written(log), line("   Info", "[a]b", "Exiting [a]b_-1") +
                                line("   Info", "[a]b", "Exiting [a]b_-1") +
                                line("   Info", "[a]c", "Entering [a]c_0"));
}

TEST_F(ClassLogTest, AnUnknownExitLowersTheDepthOfOthers) {
    classLog log{fake_.system()};
    log.enterProc(u"[a]b");
    log.exitProc(u"[a]c");
    log.log(u"flat", 0, u"[a]b");
    EXPECT_TRUE(written(log).ends_with(line("   Info", "[a]b", "flat")));
}

TEST_F(ClassLogTest, ProceduresOverMidnightTakeNegativeTime) {
    classLog log{fake_.system()};
    fake_.state->seconds = 86399.5F;
    log.enterProc(u"[a]b");
    fake_.state->seconds = 1;
    log.exitProc(u"[a]b");
    EXPECT_NE(written(log).find("Start: 86399.5 End: 1 - Elapsed: -86398.5\r\n"),
              std::string::npos);
}

TEST_F(ClassLogTest, LinesAreGatheredWithinProceduresAndWrittenAtTheirEnds) {
    classLog log{fake_.system()};
    log.enterProc(u"[a]outer");
    const int writes = fake_.state->writes;
    for (int i = 0; i < 50; ++i) {
        log.enterProc(u"[a]inner");
        log.exitProc(u"[a]inner");
    }
    EXPECT_EQ(fake_.state->writes, writes);
    log.log(u"at once", classLog::kError, u"[a]inner");
    EXPECT_EQ(fake_.state->writes, writes + 1);
    log.exitProc(u"[a]outer");
    EXPECT_EQ(fake_.state->writes, writes + 2);
    EXPECT_TRUE(fake_.text(log.strLogFile()).ends_with("Elapsed: 0.0\r\n"));
}

TEST_F(ClassLogTest, AFullBufferIsWrittenInBetween) {
    classLog log{fake_.system()};
    log.enterProc(u"[a]outer");
    const int writes = fake_.state->writes;
    for (int i = 0; i < 1000; ++i) log.log(std::u16string(100, u'x'), 0, u"[a]outer");
    EXPECT_GT(fake_.state->writes, writes);
}

TEST_F(ClassLogTest, TheEndOfTheLogWritesWhatIsGathered) {
    std::u16string file;
    {
        classLog log{fake_.system()};
        file = log.strLogFile();
        log.enterProc(u"[a]outer");
        log.log(u"last", 0, u"[a]outer");
    }
    EXPECT_TRUE(fake_.text(file).ends_with("  last\r\n"));
}

TEST_F(ClassLogTest, LastWordsBringWhatIsGatheredToo) {
    classLog log{fake_.system()};
    log.enterProc(u"[a]outer");
    log.log(u"gathered", 0, u"[a]outer");
    log.lastWords(u"The program crashed", u"[modMain]crash");
    EXPECT_TRUE(fake_.text(log.strLogFile())
                    .ends_with("  gathered\r\n" +
                               line("  ERROR", "[modMain]crash", "  The program crashed")));
}

TEST_F(ClassLogTest, AFolderThatCannotBeWrittenCostsTheLogOnly) {
    fake_.state->noFolder = true;
    classLog log{fake_.system()};
    log.enterProc(u"[a]b");
    log.log(u"lost", classLog::kError, u"[a]b");
    log.exitProc(u"[a]b");
    log.viewCurrentLogFile();
    EXPECT_TRUE(fake_.state->content.empty());
    fake_.state->noFolder = false;
    log.log(u"kept", 0, u"[a]b");
    EXPECT_TRUE(fake_.text(log.strLogFile()).ends_with(line("   Info", "[a]b", "kept")));
}

TEST_F(ClassLogTest, AFailedWriteIsReportedOnceAndLosesItsLineOnly) {
    classLog log{fake_.system()};
    fake_.state->failingWrites = 1;
    log.log(u"lost", 0, u"[a]b");
    log.log(u"kept", 0, u"[a]b");
    EXPECT_EQ(written(log), line("  ERROR", "[classLog]logToFile",
                                 "Err.Number = 61 Err.Description = Disk full") +
                                line("   Info", "[a]b", "kept"));
}

TEST_F(ClassLogTest, UnderDevelopmentAFailedWriteIsRepeated) {
    fake_.program.hostPath = u"c:\\tools\\viewerDEVELOPMENT.exe";
    classLog log{fake_.system()};
    EXPECT_TRUE(log.DebugMode());
    fake_.state->failingWrites = 100;
    log.log(u"lost", 0, u"[a]b");
    EXPECT_EQ(fake_.state->failingWrites, 100 - 11 - 12) << "eleven tries, each of them reported";
}

TEST_F(ClassLogTest, AnUnknownLevelIsAFailureOfTheLine) {
    classLog log{fake_.system()};
    log.log(u"lost", 7, u"[a]b");
    log.log(u"kept", 0, u"[a]b");
    const std::string text = written(log);
    EXPECT_EQ(text.find("lost"), std::string::npos);
    EXPECT_NE(text.find("kept"), std::string::npos);
}

TEST_F(ClassLogTest, CloseLogBeginsAnotherFileWithItsOwnHeader) {
    classLog log{fake_.system()};
    log.log(u"first", 0, u"[a]b");
    const std::u16string first = log.strLogFile();
    fake_.state->time += 61;
    log.closeLog();
    EXPECT_EQ(log.strLogFile(), u"C:\\Viewer\\LOGS\\VorelleDiagnosticViewer_20050314_093113.LOG");
    EXPECT_EQ(fake_.state->content.count(log.strLogFile()), 0u) << "opened by its first line";
    log.log(u"second", 0, u"[a]b");
    EXPECT_EQ(fake_.text(log.strLogFile()), header("2005-03-14 09:31:13") + "09:31:13    Info:(" +
                                                std::string(41, ' ') + "[a]b) second\r\n");
    EXPECT_TRUE(fake_.text(first).ends_with("first\r\n"));
}

TEST_F(ClassLogTest, ViewingShowsTheFileAndBeginsAnother) {
    classLog log{fake_.system()};
    log.enterProc(u"[a]b");
    log.log(u"gathered", 0, u"[a]b");
    const std::u16string first = log.strLogFile();
    fake_.state->time += 1;
    log.viewCurrentLogFile();
    ASSERT_EQ(fake_.state->shown, std::vector<std::u16string>{first});
    EXPECT_TRUE(fake_.text(first).ends_with("gathered\r\n"));
    EXPECT_NE(log.strLogFile(), first);
}

TEST_F(ClassLogTest, TheNameOfTheFileCanBeSet) {
    classLog log{fake_.system()};
    log.closeLog();
    log.setStrLogFile(u"C:\\other.LOG");
    log.log(u"there", 0, u"[a]b");
    EXPECT_TRUE(fake_.text(u"C:\\other.LOG").ends_with("there\r\n"));
}

TEST_F(ClassLogTest, DumpsADictionary) {
    classLog log{fake_.system()};
    log.dumpDictionary({{u"db", u"a.mdb"}, {std::u16string(40, u'k'), u"v"}}, u"[a]b");
    EXPECT_EQ(written(log), line("   Info", "[a]b", std::string(31, ' ') + "db    a.mdb") +
                                line("   Info", "[a]b", std::string(40, 'k') + "    v") +
                                line("   Info", "[a]b", std::string(80, '*')));
}

TEST_F(ClassLogTest, DumpsACommand) {
    classLog log{fake_.system()};
    log.dumpCommandObject({.text = u"SELECT 1", .parameters = {{u"first", u"12"}}}, u"[a]b");
    const std::string stars = line("VerInfo", "[a]b", std::string(80, '*'));
    EXPECT_EQ(written(log),
              stars + line("VerInfo", "[a]b", "Command Object Dump: SELECT 1") + stars +
                  line("VerInfo", "[a]b", "first" + std::string(26 + 4, ' ') + "12") + stars);
}

TEST_F(ClassLogTest, DumpsTheRecordsFromTheCurrentOneOn) {
    const fixture::TemporaryFolder folder;
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"tblTraces", .columns = fixture::traceColumns(fixture::TraceFormat::Oldest)});
    for (const char16_t* text : {u"one", u"two", u"three"}) {
        fixture::Row row(7);
        row[1] = std::u16string{u"MsgSvc"};
        row[6] = std::u16string{text};
        table.insert(row);
    }
    const auto path = folder.write("a.mdb", builder.bytes());
    ado::Connection connection;
    connection.open(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path.u16string());
    ado::Recordset recordset;
    classLog log{fake_.system()};
    log.dumpRecordsets(recordset, u"[a]b");
    EXPECT_EQ(written(log), "") << "a closed recordset";
    recordset.open(u"SELECT Process, Trace FROM tblTraces", connection, ado::adOpenStatic);
    recordset.moveNext();
    log.dumpRecordsets(recordset, u"[a]b");
    const std::string stars = line("   Info", "[a]b", std::string(80, '*'));
    const std::string rule = line("   Info", "[a]b", std::string(80, '-'));
    const std::string process =
        line("   Info", "[a]b", "Process" + std::string(25 + 4, ' ') + "MsgSvc");
    const std::string trace = "Trace" + std::string(27 + 4, ' ');
    const std::string expected = stars + line("   Info", "[a]b", "Object Recordset Dump") + stars +
                                 process + line("   Info", "[a]b", trace + "two") + rule + process +
                                 line("   Info", "[a]b", trace + "three") + rule;
    EXPECT_EQ(written(log), expected);
    EXPECT_TRUE(recordset.eof());
    log.dumpRecordsets(recordset, u"[a]b");
    EXPECT_EQ(written(log), expected) << "a recordset at its end";
    recordset.moveFirst();
    recordset.movePrevious();
    log.dumpRecordsets(recordset, u"[a]b");
    EXPECT_EQ(written(log), expected) << "a recordset before its first record";
}

TEST_F(ClassLogTest, AnEntryThatFailsIsReportedAndLeft) {
    classLog log{fake_.system()};
    {
        const FailingSteps failing{u"[classLog]enterProc"};
        log.enterProc(u"[a]b");
    }
    log.exitProc(u"[a]b");
    EXPECT_EQ(written(log), line("  ERROR", "[classLog]enterProc",
                                 "Err.Number = 70 Err.Description = Permission denied") +
                                line("   Info", "[a]b", "Exiting [a]b_-1"));
}

class PruningTest : public testing::Test {
protected:
    void put(const std::u16string& name, int daysOld, int seconds = 0) {
        state().content[u"C:\\Viewer\\LOGS\\" + name].modified =
            state().time - daysOld * 86400 - seconds;
    }
    bool has(const std::u16string& name) {
        return state().content.count(u"C:\\Viewer\\LOGS\\" + name) != 0;
    }
    FakeLogSystem::State& state() { return *fake_.state; }

    FakeLogSystem fake_;
};

TEST_F(PruningTest, RetentionFollowsTheFreeBytes) {
    EXPECT_EQ(retentionDays(500'000'001), 30);
    EXPECT_EQ(retentionDays(500'000'000), 14);
    EXPECT_EQ(retentionDays(100'000'000), 14);
    EXPECT_EQ(retentionDays(99'999'999), 10);
    EXPECT_EQ(retentionDays(0), 10);
}

TEST_F(PruningTest, EachRuleKeepsAndRemovesToTheSecond) {
    for (const auto& [available, days] :
         {std::pair{600'000'000ULL, 30}, {200'000'000ULL, 14}, {50'000'000ULL, 10}}) {
        state().content.clear();
        state().volumeSpace.available = available;
        put(u"older.LOG", days, 1);
        put(u"just.LOG", days);
        put(u"newer.LOG", days - 1);
        const classLog log{fake_.system()};
        EXPECT_FALSE(has(u"older.LOG")) << days;
        EXPECT_TRUE(has(u"just.LOG")) << days;
        EXPECT_TRUE(has(u"newer.LOG")) << days;
    }
}

TEST_F(PruningTest, OnlyNamesWithLogInCapitalsAreTouched) {
    put(u"notes.LOG.txt", 99);
    put(u"xLOGx", 99);
    put(u"x.log", 99);
    put(u"x.Log", 99);
    put(u"readme.txt", 99);
    const classLog log{fake_.system()};
    EXPECT_FALSE(has(u"notes.LOG.txt"));
    EXPECT_FALSE(has(u"xLOGx"));
    EXPECT_TRUE(has(u"x.log"));
    EXPECT_TRUE(has(u"x.Log"));
    EXPECT_TRUE(has(u"readme.txt"));
}

TEST_F(PruningTest, AFileThatStaysDoesNotStopTheOthers) {
    put(u"a.LOG", 99);
    put(u"b.LOG", 99);
    state().undeletable.insert(u"C:\\Viewer\\LOGS\\a.LOG");
    classLog log{fake_.system()};
    EXPECT_TRUE(has(u"a.LOG"));
    EXPECT_FALSE(has(u"b.LOG"));
    log.flush();
    EXPECT_NE(fake_.text(log.strLogFile())
                  .find("[classLog]checkSizeOfLogs) Err.Number = 75 Err.Description = Path/File "
                        "access error\r\n"),
              std::string::npos);
}

TEST_F(PruningTest, AVolumeThatDoesNotAnswerLeavesFourteenDays) {
    state().noSpace = true;
    put(u"a.LOG", 15);
    put(u"b.LOG", 13);
    const classLog log{fake_.system()};
    EXPECT_FALSE(has(u"a.LOG"));
    EXPECT_TRUE(has(u"b.LOG"));
}

TEST(SharedLogTest, IsTheOneInUse) {
    FakeLogSystem fake;
    classLog log{fake.system()};
    theLog().log(u"lost", 0, u"[a]b");
    {
        const ServicesInUse inUse{servicesWith(&Services::log, &log)};
        theLog().log(u"one", 0, u"[a]b");
    }
    theLog().log(u"lost too", 0, u"[a]b");
    log.flush();
    const std::string text = fake.text(log.strLogFile());
    EXPECT_TRUE(text.ends_with("one\r\n"));
    EXPECT_EQ(text.find("lost"), std::string::npos);
}

}  // namespace
