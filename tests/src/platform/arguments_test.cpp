#include "src/platform/arguments.h"

#include <gtest/gtest.h>

namespace program {
namespace {

TEST(ArgumentsTest, TheProgramsPathIsCutOff) {
    EXPECT_EQ(argumentsOf(u"\"C:\\Program Files\\v.exe\" -db a.mdb"), u"-db a.mdb");
    EXPECT_EQ(argumentsOf(u"v.exe   -db a.mdb"), u"-db a.mdb");
    EXPECT_EQ(argumentsOf(u"v.exe"), u"");
    EXPECT_EQ(argumentsOf(u""), u"");
}

}  // namespace
}  // namespace program
