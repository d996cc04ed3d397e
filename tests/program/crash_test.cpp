// Whatever way a program crashes, its log is whole up to a last line.
#include "tests/program/running_viewer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

struct Way {
    const char* title;
    const wchar_t* name;
    const char* lastLine;
};

class CrashTest : public testing::TestWithParam<Way> {};

TEST_P(CrashTest, LeavesTheLogALastLineAndAMinidump) {
    const ViewerFolder folder{"crash_child.exe"};
    const RunningViewer child{folder, GetParam().name};
    ASSERT_TRUE(child.waitForEnd());
    EXPECT_NE(child.exitCode(), 0u);
    const std::string log = folder.log();
    EXPECT_THAT(log, HasSubstr("[a]b)   gathered\r\n"));
    EXPECT_THAT(log, HasSubstr(GetParam().lastLine));
    EXPECT_TRUE(log.ends_with("\r\n"));
    EXPECT_EQ(folder.logFiles(".LOG.dmp").size(), 1u);
}

// A second thread that crashes while the first crash is being told ends the program; its own crash is
// not told over the first one.
TEST(CrashMeanwhileTest, AddsNothingToTheLog) {
    const ViewerFolder folder{"crash_child.exe"};
    const RunningViewer child{folder, L"meanwhile"};
    ASSERT_TRUE(child.waitForEnd());
    EXPECT_NE(child.exitCode(), 0u);
    const std::string log = folder.log();
    EXPECT_TRUE(
        log.ends_with("The program crashed: Err.Number = 0 Err.Description = the first\r\n"))
        << log;
    EXPECT_THAT(log, testing::Not(HasSubstr("the second")));
}

INSTANTIATE_TEST_SUITE_P(
    Ways, CrashTest,
    testing::Values(Way{"access", L"access", "The program crashed: exception 0xC0000005 at "},
                    Way{"stack", L"stack", "The program crashed: exception 0xC00000FD at "},
                    Way{"exception", L"exception",
                        "The program crashed: Err.Number = 0 Err.Description = "
                        "nobody catches this\r\n"},
                    Way{"thread", L"thread",
                        "The program crashed: Err.Number = 0 Err.Description = nor "
                        "this\r\n"}),
    [](const auto& tested) { return std::string{tested.param.title}; });

}  // namespace
