// The program jetcheck, started as a person would start it.
#include "tests/engine/jet/write/crashed.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"
#include "tests/support/external_program.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

fixture::ProgramResult jetcheck(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VORELLE_JETCHECK);
    return fixture::runProgram(arguments);
}

auto lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

class Jetcheck : public testing::Test {
protected:
    Jetcheck() {
        for (int n = 0; n < 30; ++n) rows_.push_back(table_.insert({n, u"text"}));
        bytes_ = builder_.bytes();
    }

    std::string write(const fixture::ByteVector& file, std::string_view name = "file.mdb") {
        return folder_.write(name, file).string();
    }

    /// Each row claims to have too many columns, and the definition to count fewer rows.
    fixture::ByteVector spoilt() {
        fixture::ByteVector file = bytes_;
        for (const jet::RowId row : rows_) {
            fixture::poke16(file, fixture::rowOffset(file, row), 9);
        }
        fixture::poke32(file, fixture::pageOffset(table_.definitionPage()) + 16, 29);
        return file;
    }

    fixture::TemporaryFolder folder_;
    fixture::FixtureBuilder builder_;
    fixture::TableBuilder& table_ = builder_.addTable(
        {.name = u"Größen",
         .columns = {fixture::column(u"N", jet::ColumnType::Long), fixture::textColumn(u"T", 9)},
         .indexes = {{.name = u"byN", .columns = {{u"N"}}}}});
    std::vector<jet::RowId> rows_;
    fixture::ByteVector bytes_;
};

TEST_F(Jetcheck, SaysThatAFileIsSound) {
    const auto result = jetcheck({write(bytes_)});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(lines(result.output), 1);
    EXPECT_THAT(result.output, StartsWith("sound: 0 errors, 0 warnings; "));
    EXPECT_THAT(result.output,
                EndsWith(" 5 tables, 57 rows, 0 long values, 8 indexes, 66 entries\n"));
}

TEST_F(Jetcheck, NamesPageAndRow) {
    const auto result = jetcheck({write(spoilt(), "Prüfling.mdb")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(lines(result.output), 32);
    EXPECT_THAT(result.output, StartsWith("error: page " + std::to_string(raw(rows_[0].page())) +
                                          ", row 0, Größen: record: "));
    EXPECT_THAT(result.output,
                HasSubstr("\nwarning: page " + std::to_string(raw(table_.definitionPage())) +
                          ", Größen: row count: "));
    EXPECT_THAT(result.output, HasSubstr("\nfaulty: 30 errors, 1 warnings; "));
}

TEST_F(Jetcheck, SaysWhatLiesBesideTheFileAsItsJournal) {
    jet::Crashed crashed{bytes_};
    const std::string file = write(crashed.crashed);
    auto journal = crashed.journal();
    write(journal, "file.mdb-journal");
    auto result = jetcheck({file});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("warning: page 0: journal: A change was interrupted; 4 "));
    EXPECT_THAT(result.output, HasSubstr("file.mdb-journal"));

    journal.resize(10000);
    write(journal, "file.mdb-journal");
    result = jetcheck({file});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, StartsWith("error: page 0: journal: "));

    write({'D', 'i', 'a', 'r', 'y'}, "file.mdb-journal");
    result = jetcheck({write(bytes_)});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("is not the journal of this database."));

    write({}, "file.mdb-journal");
    result = jetcheck({file});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("is what is left of a complete change."));
}

TEST_F(Jetcheck, PrintsFewerIfAsked) {
    const std::string file = write(spoilt());
    const auto some = jetcheck({"--limit", "7", file});
    EXPECT_EQ(lines(some.output), 7 + 1 + 1 + 1);
    EXPECT_THAT(some.output, HasSubstr("\n... and 23 more errors\nwarning: "));
    EXPECT_EQ(some.exitCode, 1);

    const auto quiet = jetcheck({file, "--quiet"});
    EXPECT_EQ(lines(quiet.output), 1);
    EXPECT_THAT(quiet.output, StartsWith("faulty: 30 errors"));
    EXPECT_EQ(quiet.exitCode, 1);
}

TEST_F(Jetcheck, WarningsAreNoFaults) {
    fixture::ByteVector file = bytes_;
    fixture::poke32(file, fixture::pageOffset(table_.definitionPage()) + 16, 29);
    const auto result = jetcheck({write(file)});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, StartsWith("warning: page "));
    EXPECT_THAT(result.output, HasSubstr("\nsound: 0 errors, 1 warnings; "));
}

/// A name out of the file may hold anything.
TEST_F(Jetcheck, KeepsEachFindingOnItsLine) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"a\nsound: \u001b[1m", .columns = {fixture::textColumn(u"T", 9)}});
    table.setStoredRowCount(7);
    const auto result = jetcheck({write(builder.bytes())});
    EXPECT_EQ(lines(result.output), 2);
    EXPECT_THAT(result.output, HasSubstr(", a sound:  [1m: row count: "));
}

TEST_F(Jetcheck, SaysWhatIsNoDatabase) {
    const auto failure = [](const std::string& file) {
        const auto result = jetcheck({file});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.output, "");
        return result.errors;
    };
    EXPECT_EQ(failure(write(fixture::pngFile())), "error: The file is not a Jet database.\n");
    EXPECT_THAT(failure(write(fixture::olderDatabase())), HasSubstr("Jet 3"));
    EXPECT_THAT(failure(write({})), StartsWith("error: "));
    EXPECT_THAT(failure((folder_.path() / "none.mdb").string()), StartsWith("error: "));
}

TEST_F(Jetcheck, ExplainsItsUsage) {
    const std::string file = write(bytes_);
    for (const auto& result :
         {jetcheck({}), jetcheck({"--limit", file}), jetcheck({"--limit", "x", file}),
          jetcheck({"--unknown", file}), jetcheck({file, file})}) {
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.errors, StartsWith("usage: "));
        EXPECT_EQ(result.output, "");
    }
}

TEST_F(Jetcheck, OpensLongPaths) {
    auto folder = folder_.path();
    for (int i = 0; i < 6; ++i) folder /= std::string(60, static_cast<char>('a' + i));
    std::filesystem::create_directories(folder);
    const auto file = folder / "long.mdb";
    std::filesystem::copy_file(write(bytes_), file);
    EXPECT_EQ(jetcheck({file.string()}).exitCode, 0);
}

}  // namespace
