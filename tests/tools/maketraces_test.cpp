// The program maketraces, started as a person would start it.
#include "engine/jet/check/check.h"
#include "engine/jet/database.h"
#include "tests/engine/jet/plain_value.h"
#include "tests/support/expected.h"
#include "tests/support/external_program.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <set>

namespace {

using testing::HasSubstr;

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

class Maketraces : public testing::Test {
protected:
    fixture::ProgramResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), VORELLE_MAKETRACES);
        return fixture::runProgram(arguments);
    }

    std::filesystem::path make(const std::string& name, std::vector<std::string> arguments) {
        const auto path = folder_.path() / name;
        arguments.insert(arguments.begin(), path.string());
        const auto result = run(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return path;
    }

    fixture::TemporaryFolder folder_;
};

TEST_F(Maketraces, EveryFormatIsSound) {
    for (const char* format : {"oldest", "older", "newer"}) {
        SCOPED_TRACE(format);
        const auto path =
            make(std::string{format} + ".mdb", {"--rows", "2000", "--format", format, "--macros"});
        const jet::CheckReport report = jet::check(*jet::openFile(path));
        EXPECT_TRUE(report.findings.empty()) << report.findings.front().message;
        const auto database = jet::Database::open(path);
        EXPECT_EQ(jet::plainRows(*database->table(u"tblTraces")).size(), 2000u);
        const bool newer = format == std::string{"newer"};
        EXPECT_EQ(jet::userTables(*database).size(), newer ? 3u : 2u);
        EXPECT_EQ(database->table(u"tblTraces")->definition().columns.size(),
                  newer                            ? 13u
                  : format == std::string{"older"} ? 9u
                                                   : 7u);
    }
}

TEST_F(Maketraces, TheSameArgumentsMakeTheSameBytes) {
    const auto first = make("a.mdb", {"--rows", "500", "--seed", "9", "--macros"});
    const auto second = make("b.mdb", {"--rows", "500", "--seed", "9", "--macros"});
    const auto third = make("c.mdb", {"--rows", "500", "--seed", "10", "--macros"});
    EXPECT_EQ(contentOf(first), contentOf(second));
    EXPECT_NE(contentOf(first), contentOf(third));
}

TEST_F(Maketraces, TracesAreVaried) {
    const auto path = make("varied.mdb", {"--rows", "20000"});
    const auto database = jet::Database::open(path);
    const auto rows = jet::plainRows(*database->table(u"tblTraces"));
    std::set<std::string> processes, sources, components, levels, dates;
    std::size_t outOfOrder = 0;
    std::size_t lines = 0;
    std::size_t foreign = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        dates.insert(*rows[i][0]);
        processes.insert(*rows[i][1]);
        sources.insert(*rows[i][2]);
        components.insert(*rows[i][4]);
        levels.insert(*rows[i][5]);
        outOfOrder += i > 0 && *rows[i][0] < *rows[i - 1][0];
        lines += rows[i][8]->find('\n') != std::string::npos;
        foreign += std::ranges::any_of(*rows[i][8], [](char c) { return c < 0; });
    }
    EXPECT_GE(processes.size(), 25u);
    EXPECT_GE(sources.size(), 25u);
    EXPECT_GE(components.size(), 25u);
    EXPECT_GE(levels.size(), 25u);
    EXPECT_LT(dates.size(), rows.size());  // ties
    EXPECT_GT(outOfOrder, 100u);
    EXPECT_GT(lines, 100u);
    EXPECT_GT(foreign, 100u);
}

TEST_F(Maketraces, MacroTracesAreADozenGroups) {
    const auto groups = [&](const std::filesystem::path& path) {
        std::set<std::string> names;
        const auto database = jet::Database::open(path);
        for (const auto& row : jet::plainRows(*database->table(u"tblMacroTraces"))) {
            const std::string& xml = *row[0];
            const std::size_t begin = xml.find('"') + 1;
            names.insert(xml.substr(begin, xml.find('"', begin) - begin));
        }
        return names.size();
    };
    EXPECT_GE(groups(make("with.mdb", {"--rows", "1", "--macros"})), 12u);
    EXPECT_EQ(groups(make("without.mdb", {"--rows", "1"})), 0u);
}

TEST_F(Maketraces, WrongUseIsRefused) {
    const std::string file = (folder_.path() / "x.mdb").string();
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"--rows", "5"},
                                               {file},
                                               {file, "--rows"},
                                               {file, "--rows", "many"},
                                               {file, "--rows", "5", "--format", "newest"},
                                               {file, "--rows", "5", "--colour"}}) {
        const auto result = run(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.errors, HasSubstr("usage: maketraces FILE"));
    }
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(Maketraces, AFileThatIsThereIsNotReplaced) {
    const auto path = make("there.mdb", {"--rows", "3"});
    const std::string content = contentOf(path);
    const auto result = run({path.string(), "--rows", "5"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("cannot be opened"));
    EXPECT_EQ(contentOf(path), content);
}

}  // namespace
