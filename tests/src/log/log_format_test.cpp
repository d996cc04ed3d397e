#include "src/log/log_format.h"

#include "src/log/procedure.h"

#include <gtest/gtest.h>

namespace {

const LocalSeconds kMorning = logformat::fromCalendar(2005, 3, 14, 9, 5, 7);

std::u16string lineOf(int level, std::u16string_view label, std::u16string_view message) {
    return logformat::line({.time = kMorning, .level = level, .label = label, .message = message});
}

TEST(LogLineTest, EveryLevelHasItsPlace) {
    const std::u16string blanks(45 - 13, u' ');
    EXPECT_EQ(lineOf(0, u"[modMain]Main", u"m"),
              u"09:05:07    Info:(" + blanks + u"[modMain]Main) m");
    EXPECT_EQ(lineOf(1, u"[modMain]Main", u"m"),
              u"09:05:07 Warning:(" + blanks + u"[modMain]Main) m");
    EXPECT_EQ(lineOf(2, u"[modMain]Main", u"m"),
              u"09:05:07   ERROR:(" + blanks + u"[modMain]Main) m");
    EXPECT_EQ(lineOf(3, u"[modMain]Main", u"m"),
              u"09:05:07 VerInfo:(" + blanks + u"[modMain]Main) m");
}

TEST(LogLineTest, ALevelThatThereIsNotIsRefused) {
    EXPECT_THROW(lineOf(4, u"x", u""), RuntimeError);
    EXPECT_THROW(lineOf(-1, u"x", u""), RuntimeError);
}

TEST(LogLineTest, LongLabelsAreCutAndShortOnesPushedToTheRight) {
    const std::u16string label = std::u16string(44, u'a') + u"bc";
    EXPECT_EQ(lineOf(0, label, u"m"), u"09:05:07    Info:(" + std::u16string(44, u'a') + u"b) m");
    EXPECT_EQ(lineOf(0, label.substr(0, 45), u"m"), lineOf(0, label, u"m"));
    EXPECT_EQ(lineOf(0, u"", u"m"), u"09:05:07    Info:(" + std::u16string(45, u' ') + u") m");
}

TEST(LogLineTest, AMissingLabelIsAllBlanks) {
    EXPECT_EQ(logformat::line({.time = kMorning, .message = u"m"}),
              u"09:05:07    Info:(" + std::u16string(45, u' ') + u") m");
}

TEST(LogLineTest, TheIndentStandsBeforeTheMessage) {
    const std::u16string line =
        logformat::line({.time = kMorning, .label = u"l", .indent = u"    ", .message = u"m"});
    EXPECT_TRUE(line.ends_with(u"l)     m"));
}

TEST(LogLineTest, MomentsBeforeTheEpochHaveATimeToo) {
    EXPECT_TRUE(logformat::line({.time = -1, .message = u"m"}).starts_with(u"23:59:59 "));
}

TEST(LogHeaderTest, IsExactToTheByte) {
    const LogProgram program{.folder = u"",
                             .baseName = u"VorelleDiagnosticViewer",
                             .hostPath = u"",
                             .arguments = u"",
                             .major = 1,
                             .minor = 20,
                             .revision = 3};
    const std::u16string stars(120, u'*');
    EXPECT_EQ(logformat::header(program, u"14.03.2005 09:05:07"),
              u"\r\n" + stars + u"\r\nVorelleDiagnosticViewer Version: 1.20.3   Started: " +
                  u"14.03.2005 09:05:07\r\n" + stars + u"\r\n");
}

TEST(LogFileNameTest, CarriesTheMoment) {
    EXPECT_EQ(logformat::fileName(u"Viewer", logformat::fromCalendar(2005, 3, 14, 9, 30, 12)),
              u"Viewer_20050314_093012.LOG");
    EXPECT_EQ(logformat::fileName(u"Viewer", logformat::fromCalendar(1999, 12, 31, 23, 59, 59)),
              u"Viewer_19991231_235959.LOG");
    EXPECT_EQ(logformat::fileName(u"Viewer", logformat::fromCalendar(2024, 2, 29, 0, 0, 0)),
              u"Viewer_20240229_000000.LOG");
}

TEST(LogNumberTest, ElapsedHasOneToSixDecimals) {
    EXPECT_EQ(logformat::elapsed(0, u'.'), u"0.0");
    EXPECT_EQ(logformat::elapsed(1.5, u'.'), u"1.5");
    EXPECT_EQ(logformat::elapsed(0.015625, u','), u"0,015625");
    EXPECT_EQ(logformat::elapsed(0.0078125, u'.'), u"0.007813");
    EXPECT_EQ(logformat::elapsed(0.00390625, u'.'), u"0.003906");
    EXPECT_EQ(logformat::elapsed(12345.25, u'.'), u"12345.25");
    EXPECT_EQ(logformat::elapsed(-86399.5, u'.'), u"-86399.5");
}

TEST(LogNumberTest, MillionsOfBytes) {
    EXPECT_EQ(logformat::millionsWithTenths(12'340'000, u'.'), u"12.3");
    EXPECT_EQ(logformat::millionsWithTenths(250'000, u'.'), u"0.3");
    EXPECT_EQ(logformat::millionsWithTenths(12'000'000, u'.'), u"12.");
    EXPECT_EQ(logformat::millionsWithTenths(0, u','), u"0,");
    EXPECT_EQ(logformat::millions(0, u','), u"");
    EXPECT_EQ(logformat::millions(400'000, u','), u"");
    EXPECT_EQ(logformat::millions(500'000, u','), u"1");
    EXPECT_EQ(logformat::millions(999'400'000, u','), u"999");
    EXPECT_EQ(logformat::millions(1'234'567'000'000, u','), u"1,234,567");
    EXPECT_EQ(logformat::millions(100'000'000'000, u'.'), u"100.000");
}

TEST(LogNumberTest, DatesBeforeTheEpochAreDatesToo) {
    EXPECT_EQ(logformat::isoDate(-1), u"1969-12-31 23:59:59");
    EXPECT_EQ(logformat::isoDate(0), u"1970-01-01 00:00:00");
}

}  // namespace
