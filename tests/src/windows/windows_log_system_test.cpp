// The log on the system's real volume and clock.
#include "src/platform/windows_log_system.h"

#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/text/text.h"
#include "tests/support/expected.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <iterator>

namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

class WindowsLogTest : public testing::Test {
protected:
    LogSystem system() {
        LogSystem made = windowsLogSystem();
        made.program.folder = fromWide(folder_.path().wstring());
        made.program.arguments.clear();
        return made;
    }
    std::filesystem::path logs() const { return folder_.path() / "LOGS"; }
    static std::string written(const classLog& log) { return contentOf(toWide(log.strLogFile())); }

    fixture::TemporaryFolder folder_;
};

TEST_F(WindowsLogTest, KnowsTheProgramItIsIn) {
    const LogProgram program = windowsLogSystem().program;
    EXPECT_EQ(program.baseName, u"viewer_tests");
    EXPECT_TRUE(program.hostPath.ends_with(u"viewer_tests.exe"));
    EXPECT_TRUE(program.hostPath.starts_with(program.folder));
}

TEST_F(WindowsLogTest, MakesFolderAndFileAndOthersMayReadThem) {
    classLog log{system()};
    log.log(u"Gr\u00FC\u00DFe \u20AC \u65E5", 0, u"[a]b");
    const std::string text = written(log);
    EXPECT_TRUE(text.starts_with("\r\n****"));
    EXPECT_TRUE(
        text.ends_with("[a]b) Gr\xFC\xDF"
                       "e \x80 ?\r\n"))
        << text;
}

// As when two runs begin within one second.
TEST_F(WindowsLogTest, AFileThatIsThereGrows) {
    const std::filesystem::path path = folder_.path() / "there.LOG";
    std::ofstream{path} << "before";
    const auto volume = system().volume;
    volume->append(fromWide(path.wstring()))->write(" and");
    volume->append(fromWide(path.wstring()))->write(" after");
    EXPECT_EQ(contentOf(path), "before and after");
}

TEST_F(WindowsLogTest, LinesOfARunningProcedureAreOnDiskAtItsEnd) {
    classLog log{system()};
    log.enterProc(u"[a]b");
    EXPECT_NE(written(log).find("Entering [a]b_0"), std::string::npos);
    log.log(u"gathered", 0, u"[a]b");
    EXPECT_EQ(written(log).find("gathered"), std::string::npos);
    log.exitProc(u"[a]b");
    EXPECT_NE(written(log).find("gathered"), std::string::npos);
}

TEST_F(WindowsLogTest, OldFilesGoReadOnlyOnesStay) {
    std::filesystem::create_directories(logs());
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours{24 * 31};
    for (const char* name : {"old.LOG", "kept.LOG", "old.log", "new.LOG"}) {
        std::ofstream{logs() / name} << "x";
        if (name[0] != 'n') std::filesystem::last_write_time(logs() / name, old);
    }
    ::SetFileAttributesW((logs() / "kept.LOG").c_str(), FILE_ATTRIBUTE_READONLY);
    classLog log{system()};
    EXPECT_FALSE(std::filesystem::exists(logs() / "old.LOG"));
    EXPECT_TRUE(std::filesystem::exists(logs() / "new.LOG"));
    // Names that differ in case only are one name here.
    EXPECT_TRUE(std::filesystem::exists(logs() / "kept.LOG"));
    EXPECT_NE(written(log).find("[classLog]checkSizeOfLogs) Err.Number = 75"), std::string::npos);
    ::SetFileAttributesW((logs() / "kept.LOG").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsLogTest, FoldersAreNotListed) {
    std::filesystem::create_directories(logs() / "folder.LOG");
    std::ofstream{logs() / "file.LOG"} << "x";
    const auto files = system().volume->files(fromWide(logs().wstring()));
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].name, u"file.LOG");
}

TEST_F(WindowsLogTest, AFileInTheFoldersPlaceCostsTheLogOnly) {
    std::ofstream{folder_.path() / "LOGS"} << "x";
    classLog log{system()};
    log.enterProc(u"[a]b");
    log.log(u"lost", 2, u"[a]b");
    log.exitProc(u"[a]b");
    EXPECT_EQ(contentOf(folder_.path() / "LOGS"), "x");
}

/// The user's program for log files, until the end of the block.
class LogAssociation {
public:
    explicit LogAssociation(const std::wstring& command) {
        set(L".LOG", L"vorelle_test_log");
        set(L"vorelle_test_log\\shell\\open\\command", command);
    }
    ~LogAssociation() {
        ::RegDeleteTreeW(HKEY_CLASSES_ROOT, L"vorelle_test_log");
        ::RegDeleteTreeW(HKEY_CLASSES_ROOT, L".LOG");
    }
    LogAssociation(const LogAssociation&) = delete;
    LogAssociation& operator=(const LogAssociation&) = delete;

private:
    static void set(const wchar_t* key, const std::wstring& value) {
        ::RegSetKeyValueW(HKEY_CLASSES_ROOT, key, nullptr, REG_SZ, value.c_str(),
                          static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    }
};

TEST_F(WindowsLogTest, ViewingOpensTheFileWithTheUsersProgram) {
    const std::filesystem::path shown = folder_.path() / "shown.txt";
    const LogAssociation association{L"C:\\windows\\system32\\cmd.exe /c copy \"%1\" \"" +
                                     shown.wstring() + L"\""};
    classLog log{system()};
    log.enterProc(u"[a]b");
    log.log(u"gathered", 0, u"[a]b");
    const std::string before = contentOf(toWide(log.strLogFile()));
    log.viewCurrentLogFile();
    const ULONGLONG end = ::GetTickCount64() + 20000;
    while (!contentOf(shown).ends_with("gathered\r\n") && ::GetTickCount64() < end) ::Sleep(20);
    EXPECT_TRUE(contentOf(shown).starts_with(before));
    EXPECT_TRUE(contentOf(shown).ends_with("gathered\r\n"));
}

double secondsSinceMidnight() {
    SYSTEMTIME time{};
    ::GetLocalTime(&time);
    return time.wHour * 3600.0 + time.wMinute * 60.0 + time.wSecond + time.wMilliseconds / 1000.0;
}

// Asked between two looks at the clock, it lies between them, however long a busy machine takes.
TEST_F(WindowsLogTest, TheTimerStandsBesideTheClock) {
    LogSystem made = system();
    const double before = secondsSinceMidnight();
    const double timer = static_cast<double>(made.clock->timer());
    const double after = secondsSinceMidnight();
    const bool notEarlier = timer >= before - 1;
    const bool notLater = timer <= after + 1;
    const bool midnightBetween = after < before;
    EXPECT_TRUE(midnightBetween ? notEarlier || notLater : notEarlier && notLater)
        << before << " " << timer << " " << after;
    EXPECT_LT(made.clock->timer(), 86400.0F);
}

TEST_F(WindowsLogTest, EntriesAndExitsCostMicroseconds) {
    classLog log{system()};
    log.enterProc(u"[a]outer");
    constexpr int kPairs = 20000;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < kPairs; ++i) {
        log.enterProc(u"[a]inner");
        log.exitProc(u"[a]inner");
    }
    const std::chrono::duration<double, std::micro> passed =
        std::chrono::steady_clock::now() - begin;
    log.exitProc(u"[a]outer");
    RecordProperty("microseconds_a_pair", std::to_string(passed.count() / kPairs));
    std::printf("%.2f microseconds an entry and exit\n", passed.count() / kPairs);
    EXPECT_TRUE(written(log).ends_with("\r\n"));
}

}  // namespace
