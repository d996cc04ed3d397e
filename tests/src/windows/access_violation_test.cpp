// An access violation in a step is a failure like any other.
#include "src/crash/access_violation.h"

#include "src/log/procedure.h"
#include "tests/src/log/fake_log_system.h"

#include <gtest/gtest.h>

#ifdef __x86_64__

namespace {

volatile int* nowhere = nullptr;

class Counted {
public:
    explicit Counted(int& count) : count_{count} { ++count_; }
    ~Counted() { --count_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    int& count_;
};

[[gnu::noinline]] void writeNowhere(int& alive) {
    const Counted counted{alive};
    *nowhere = 1;
}

TEST(AccessViolationTest, IsLoggedAndTheNextStepRuns) {
    catchAccessViolationsInSteps();
    SharedFakeLog log;
    int alive = 0;
    bool ran = false;
    for (int call = 0; call < 3; ++call) {
        runProcedure(u"[a]b", Limit::None, [&](Procedure& procedure) {
            procedure.step([&] { writeNowhere(alive); });
            procedure.step([&] { *nowhere = 2; });
            procedure.step([&] { ran = true; });
        });
    }
    EXPECT_TRUE(ran);
    EXPECT_EQ(alive, 0) << "the objects on the way were not destroyed";
    const std::vector<std::string> failures = log.failures("[a]b");
    ASSERT_EQ(failures.size(), 6u);
    EXPECT_EQ(failures[0], "Err.Number = -1073741819 Err.Description = Access violation");
}

}  // namespace

#endif
