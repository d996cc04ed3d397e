// What every guarded procedure has in common: the eleventh failure ends it.
//
//   expectGuarded("[modDatabase]connectToDB", Lines::Numbered,
//                 [] { modDatabase::connectToDB(u"no such file"); });
#pragma once

#include "tests/src/log/fake_log_system.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

enum class Lines { Plain, Numbered };

/// Under development a failure that persists is repeated, and so is the way to eleven of them.
inline void expectGuarded(const std::string& label, Lines lines,
                          const std::function<void()>& call) {
    SharedFakeLog log{SharedFakeLog::Mode::Development};
    call();
    const std::vector<std::string> failures = log.failures(label);
    ASSERT_EQ(failures.size(), 12u) << label;
    const std::string text = "Err\\.Number = -?\\d+ Err\\.Description = .*";
    const std::regex usual{lines == Lines::Numbered ? text + " Line: [1-9]\\d*" : text};
    const std::regex numbered{".* Line: \\d+"};
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(std::regex_match(failures[i], usual)) << failures[i];
        EXPECT_EQ(std::regex_match(failures[i], numbered), lines == Lines::Numbered);
    }
    EXPECT_TRUE(std::regex_match(failures[10], std::regex{text})) << failures[10];
    EXPECT_FALSE(std::regex_match(failures[10], numbered)) << failures[10];
    EXPECT_EQ(failures[11], "Error count exceeded, forcing exit from " + label);
}

/// Outside of development: each failure once, under the label, and the procedure returns.
inline void expectOneFailure(const std::string& label, const std::function<void()>& call) {
    SharedFakeLog log;
    call();
    const std::vector<std::string> failures = log.failures(label);
    ASSERT_GE(failures.size(), 1u) << label;
    EXPECT_TRUE(failures[0].starts_with("Err.Number = ")) << failures[0];
}
