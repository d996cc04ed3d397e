#include "src/log/procedure.h"

#include "engine/ado/error.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

class ProcedureTest : public testing::Test {
protected:
    void SetUp() override {
        setFailureReporter([this](std::u16string_view label, const std::u16string& message) {
            EXPECT_EQ(label, u"[modMain]Main");
            lines_.push_back(message);
        });
    }
    void TearDown() override { setFailureReporter({}); }

    static void fail() { throw ado::Error{-2147467259, "Unrecognized database format."}; }

    std::vector<std::u16string> lines_;
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

}  // namespace
