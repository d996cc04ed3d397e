#include "src/log/procedure.h"

#include "engine/ado/error.h"
#include "tests/src/log/fake_log_system.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <system_error>
#include <vector>

namespace {

class ProcedureTest : public testing::Test {
protected:
    static void fail() { throw ado::Error{-2147467259, "Unrecognized database format."}; }

    std::vector<std::u16string> lines_;
    ReportsTo reporting_{[this](std::u16string_view label, const std::u16string& message) {
        EXPECT_EQ(label, u"[modMain]Main");
        lines_.push_back(message);
    }};
};

TEST_F(ProcedureTest, AFailedStepIsReportedAndTheNextOneRuns) {
    bool ran = false;
    runProcedure(u"[modMain]Main", Limit::None, [&](Procedure& procedure) {
        EXPECT_FALSE(procedure.step(fail));
        EXPECT_TRUE(procedure.step([&] { ran = true; }));
    });
    EXPECT_TRUE(ran);
    ASSERT_EQ(lines_.size(), 1u);
    EXPECT_EQ(lines_[0],
              u"Err.Number = -2147467259 Err.Description = Unrecognized database format.");
}

TEST_F(ProcedureTest, TheEleventhErrorEndsAGuardedProcedure) {
    int steps = 0;
    runProcedure(u"[modMain]Main", Limit::TenErrors, [&](Procedure& procedure) {
        for (; steps < 20; ++steps) procedure.step(fail);
    });
    EXPECT_EQ(steps, 10);
    ASSERT_EQ(lines_.size(), 12u);
    EXPECT_EQ(lines_[10], lines_[0]);
    EXPECT_EQ(lines_[11], u"Error count exceeded, forcing exit from [modMain]Main");
}

TEST_F(ProcedureTest, AnUnguardedProcedureGoesOnForEver) {
    runProcedure(u"[modMain]Main", Limit::None, [&](Procedure& procedure) {
        for (int i = 0; i < 20; ++i) procedure.step(fail);
    });
    EXPECT_EQ(lines_.size(), 20u);
}

TEST_F(ProcedureTest, AQuietProcedureGoesOnAndReportsNothing) {
    int steps = 0;
    runProcedure(u"[modMain]Main", {.quiet = true}, [&](Procedure& procedure) {
        for (; steps < 20; ++steps) procedure.step(fail);
        fail();
    });
    EXPECT_EQ(steps, 20);
    EXPECT_TRUE(lines_.empty());
}

TEST_F(ProcedureTest, AStepThatIsToldSoIsRepeated) {
    int tries = 0;
    runProcedure(u"[modMain]Main", Limit::TenErrors, [&](Procedure& procedure) {
        const bool done = procedure.step(
            [&] {
                if (++tries < 3) fail();
            },
            [](const Failure&) { return Resume::SameStep; });
        EXPECT_TRUE(done);
    });
    EXPECT_EQ(tries, 3);
    EXPECT_TRUE(lines_.empty());
}

TEST_F(ProcedureTest, ARepeatedStepIsBoundedByTheLimit) {
    int tries = 0;
    runProcedure(u"[modMain]Main", Limit::TenErrors, [&](Procedure& procedure) {
        procedure.step(
            [&] {
                ++tries;
                fail();
            },
            [](const Failure&) { return Resume::SameStep; });
        FAIL() << "the procedure went on";
    });
    EXPECT_EQ(tries, 11);
}

TEST_F(ProcedureTest, OtherExceptionsAreFailuresToo) {
    runProcedure(u"[modMain]Main", Limit::None, [&](Procedure& procedure) {
        procedure.step([] { throw std::runtime_error{"broken"}; });
        procedure.step([] { throw 7; });
        procedure.step([] {
            throw RuntimeError{RuntimeError::kSubscript, u"Subscript out of range"};
        });
    });
    ASSERT_EQ(lines_.size(), 3u);
    EXPECT_EQ(lines_[0], u"Err.Number = 0 Err.Description = broken");
    EXPECT_EQ(lines_[1], u"Err.Number = 0 Err.Description = unknown failure");
    EXPECT_EQ(lines_[2], u"Err.Number = 9 Err.Description = Subscript out of range");
}

TEST_F(ProcedureTest, AnErrorOutsideTheStepsEndsTheProcedureOnly) {
    runProcedure(u"[modMain]Main", Limit::None, [&](Procedure&) { fail(); });
    EXPECT_EQ(lines_.size(), 1u);
}

TEST_F(ProcedureTest, SystemErrorsAndMissingMemoryHaveNumbers) {
    runProcedure(u"[modMain]Main", Limit::None, [&](Procedure& procedure) {
        procedure.step([] { throw std::system_error{5, std::generic_category(), "call"}; });
        procedure.step([] { throw std::bad_alloc{}; });
    });
    ASSERT_EQ(lines_.size(), 2u);
    EXPECT_TRUE(lines_[0].starts_with(u"Err.Number = 5 Err.Description = call"));
    EXPECT_EQ(lines_[1], u"Err.Number = 7 Err.Description = Out of memory");
}

TEST_F(ProcedureTest, ALimitPassedInAStepWithinAStepEndsTheProcedure) {
    int steps = 0;
    runProcedure(u"[modMain]Main", Limit::TenErrors, [&](Procedure& procedure) {
        procedure.step([&] {
            for (; steps < 20; ++steps) procedure.step(fail);
        });
        FAIL() << "the procedure went on";
    });
    EXPECT_EQ(steps, 10);
    EXPECT_EQ(lines_.size(), 12u);
}

TEST(ProcedureLogTest, WithoutAReceiverTheSharedLogGetsTheLines) {
    SharedFakeLog log;
    bool ran = false;
    runProcedure(u"[a]b", {.timed = true}, [&](Procedure& procedure) {
        procedure.step([] { throw RuntimeError{0, u""}; });
        procedure.step([&] { ran = true; });
    });
    EXPECT_TRUE(ran);
    const std::vector<std::string> expected{
        "Entering [a]b_0", "Err.Number = 0 Err.Description = ",
        "Exiting [a]b_0 Start: 34212.5 End: 34212.5 - Elapsed: 0.0"};
    EXPECT_EQ(log.messages("[a]b"), expected);
}

TEST(ProcedureLogTest, LinesAreThoseOfTheStepsAndZeroOutsideOfThem) {
    SharedFakeLog log;
    int line = 0;
    runProcedure(u"[a]b", {.numbersLines = true}, [&](Procedure& procedure) {
        line = __LINE__ + 1;
        procedure.step([] { throw RuntimeError{9, u"x"}; });
        throw RuntimeError{9, u"y"};
    });
    const std::vector<std::string> expected{
        "Err.Number = 9 Err.Description = x Line: " + std::to_string(line),
        "Err.Number = 9 Err.Description = y Line: 0"};
    EXPECT_EQ(log.messages("[a]b"), expected);
}

TEST(ProcedureLogTest, UnderDevelopmentAFailedStepIsRepeatedUntilTheLimit) {
    SharedFakeLog log{SharedFakeLog::Mode::Development};
    int tries = 0;
    runProcedure(u"[a]b", {.limit = Limit::TenErrors, .numbersLines = true, .timed = true},
                 [&](Procedure& procedure) {
                     procedure.step([&] {
                         ++tries;
                         throw RuntimeError{-5, u"persistent"};
                     });
                     ADD_FAILURE() << "the step was left behind";
                 });
    EXPECT_EQ(tries, 11);
    const std::vector<std::string> lines = log.messages("[a]b");
    ASSERT_EQ(lines.size(), 14u);
    EXPECT_TRUE(lines[1].starts_with("Err.Number = -5 Err.Description = persistent Line: "));
    EXPECT_EQ(lines[1], lines[10]);
    EXPECT_EQ(lines[11], "Err.Number = -5 Err.Description = persistent");
    EXPECT_EQ(lines[12], "Error count exceeded, forcing exit from [a]b");
    EXPECT_TRUE(lines[13].starts_with("Exiting [a]b_0 "));
}

TEST(ProcedureLogTest, UnderDevelopmentAQuietProcedureRepeatsNothing) {
    SharedFakeLog log{SharedFakeLog::Mode::Development};
    int tries = 0;
    runProcedure(u"[a]b", {.quiet = true}, [&](Procedure& procedure) {
        procedure.step([&] {
            ++tries;
            throw RuntimeError{5, u""};
        });
    });
    EXPECT_EQ(tries, 1);
    EXPECT_TRUE(log.failures("[a]b").empty());
}

TEST(ProcedureLogTest, UnderDevelopmentAStepThatSucceedsAtLastIsDone) {
    SharedFakeLog log{SharedFakeLog::Mode::Development};
    int tries = 0;
    runProcedure(u"[a]b", Limit::None, [&](Procedure& procedure) {
        EXPECT_TRUE(procedure.step([&] {
            if (++tries < 30) throw RuntimeError{5, u"not yet"};
        }));
    });
    EXPECT_EQ(log.failures("[a]b").size(), 29u);
}

TEST(ProcedureLogTest, TheCountBelongsToOneCall) {
    SharedFakeLog log;
    for (int call = 0; call < 2; ++call) {
        runProcedure(u"[a]b", Limit::TenErrors, [&](Procedure& procedure) {
            for (int i = 0; i < 10; ++i) {
                procedure.step([] { throw RuntimeError{5, u""}; });
                procedure.step([] {});
            }
        });
    }
    EXPECT_EQ(log.failures("[a]b").size(), 20u);
}

}  // namespace
