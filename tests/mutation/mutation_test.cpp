// Damaged databases, read by the tools as a person would: every mutant is opened, printed and
// checked, and compared with its intact twin and with what an independent reader rescues.
//
// VORELLE_MUTANTS sets their number, VORELLE_MUTATION_SEED the first seed; a failure names the seed
// of its mutant, which comes again with that seed and the number 1.
#include "tests/mutation/mutation.h"

#include "tests/support/expected.h"
#include "tests/support/external_program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using fixture::ByteVector;
using fixture::ProgramResult;
using Lines = std::vector<std::string>;  ///< sorted

constexpr int kSound = 0;
constexpr int kDamaged = 3;
constexpr const char* kUnreadable = "\\?";

#ifdef VORELLE_SANITIZED
constexpr bool kSanitized = true;  // takes more time and memory
#else
constexpr bool kSanitized = false;
#endif

constexpr std::chrono::seconds kMaxProcessorTime{2};
constexpr std::size_t kMaxMemory = std::size_t{256} << 20;

Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// The rows of a table, behind the line of headings.
Lines rowsOf(const ProgramResult& result) {
    Lines rows = linesOf(result.output);
    if (!rows.empty()) rows.erase(rows.begin());
    std::ranges::sort(rows);
    return rows;
}

ProgramResult jetsql(const std::string& file, const std::string& table) {
    return fixture::runProgram({VORELLE_JETSQL, file, "SELECT * FROM [" + table + "]"});
}

ProgramResult jetcheck(const std::string& file) {
    return fixture::runProgram({VORELLE_JETCHECK, file});
}

/// mdb-export runs in circles on some mutants, printing all the time.
ProgramResult mdbExport(const std::string& file, const std::string& table) {
    const std::string format = "%Y-%m-%d %H:%M:%S";
    return fixture::runProgram({"sh", "-c",
                                "timeout 3 \"$@\" 2>/dev/null | head -n 20000 | head -c 2000000",
                                "-", "mdb-export", "-d", "\t", "-Q", "-e", "-0", "\\N", "-D",
                                format, "-T", format, "-b", "hex", file, table});
}

Lines common(const Lines& a, const Lines& b) {
    Lines both;
    std::ranges::set_intersection(a, b, std::back_inserter(both));
    return both;
}

Lines onlyIn(const Lines& a, const Lines& b) {
    Lines rest;
    std::ranges::set_difference(a, b, std::back_inserter(rest));
    return rest;
}

Lines fieldsOf(const std::string& row) {
    Lines fields;
    std::istringstream stream{row};
    for (std::string field; std::getline(stream, field, '\t');) fields.push_back(field);
    return fields;
}

/// How many fields of a row are neither as in the intact one nor marked as unreadable.
std::size_t wrongFields(const std::string& row, const std::string& intact) {
    const Lines got = fieldsOf(row);
    const Lines expected = fieldsOf(intact);
    if (got.size() != expected.size()) return std::max(got.size(), expected.size());
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (got[i] != expected[i] && got[i] != kUnreadable) ++wrong;
    }
    return wrong;
}

/// Of rows that are not in the intact table: the fewest wrong fields against any row that is
/// missing. 0 means that what is wrong is marked.
std::size_t wrongFields(const std::string& row, const Lines& missing) {
    std::size_t fewest = fieldsOf(row).size() + 1;
    for (const std::string& intact : missing) {
        fewest = std::min(fewest, wrongFields(row, intact));
    }
    return fewest;
}

/// A table of an intact file, as both readers print it.
struct Table {
    std::string name;
    Lines ours;
    Lines theirs;
};

struct Sample {
    std::filesystem::path path;
    ByteVector bytes;
    std::vector<Table> tables;
};

ByteVector read(const std::filesystem::path& path) {
    std::ifstream in{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{in}, {}};
}

/// The files that both readers read alike and completely, with their tables that have rows.
std::vector<Sample> readSamples(const std::filesystem::path& folder) {
    std::vector<Sample> samples;
    for (const auto& entry : std::filesystem::recursive_directory_iterator{folder}) {
        if (entry.path().extension() != ".mdb") continue;
        Sample sample{entry.path(), read(entry.path()), {}};
        const std::string file = entry.path().string();
        for (const std::string& line :
             linesOf(fixture::runProgram({VORELLE_JETSQL, file}).output)) {
            const std::string name = line.substr(0, line.find('\t'));
            const ProgramResult ours = jetsql(file, name);
            const ProgramResult theirs = mdbExport(file, name);
            if (ours.exitCode != 0 || theirs.exitCode != 0) continue;
            Table table{name, rowsOf(ours), rowsOf(theirs)};
            if (!table.ours.empty() && table.ours.size() == table.theirs.size()) {
                sample.tables.push_back(std::move(table));
            }
        }
        if (!sample.tables.empty()) samples.push_back(std::move(sample));
    }
    std::ranges::sort(samples, {}, &Sample::path);
    return samples;
}

/// What became of the mutants of one kind.
struct Tally {
    int mutants = 0;
    std::size_t ours = 0;    ///< right rows
    std::size_t theirs = 0;  ///< right rows of mdb-export
    int behind = 0;          ///< mutants on which mdb-export has more right rows
    int silent = 0;          ///< that lost something without a word
    int wrong = 0;           ///< with a wrong row where mdb-export is right
    int sound = 0;           ///< called sound though rows differ
    int unknowable = 0;      ///< one value changed in place, which no reader can know
};

class Mutants : public testing::Test {
protected:
    void SetUp() override {
        const auto folder = fixture::testDataFolder();
        if (!folder) GTEST_SKIP() << fixture::kNoTestData;
        if (!fixture::hasProgram("mdb-export")) GTEST_SKIP() << "mdb-export is not installed";
        samples_ = readSamples(*folder);
        ASSERT_FALSE(samples_.empty());
    }

    /// Expects what holds for every run of a tool on every file.
    void expectBounds(const ProgramResult& result) {
        EXPECT_NE(result.exitCode, -1) << label_ << ": " << result.errors;
        if (kSanitized) return;
        EXPECT_LE(result.processorTime, kMaxProcessorTime) << label_;
        EXPECT_LE(result.peakMemory, kMaxMemory) << label_;
    }

    void tryTable(const Table& table, const std::string& file, int checked, Tally& tally) {
        const ProgramResult result = jetsql(file, table.name);
        expectBounds(result);
        EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1 || result.exitCode == kDamaged)
            << label_ << ": " << result.exitCode;
        const bool mute = result.errors.empty();
        EXPECT_FALSE(mute && result.exitCode != 0) << label_;

        const Lines ours = rowsOf(result);
        const Lines theirs = rowsOf(mdbExport(file, table.name));
        const Lines right = common(ours, table.ours);
        const Lines rightTheirs = common(theirs, table.theirs);
        tally.ours += right.size();
        tally.theirs += rightTheirs.size();
        if (right.size() < rightTheirs.size() && !torn_) {
            complain(tally.behind, "fewer right rows", table);
        }

        const Lines missing = onlyIn(table.ours, ours);
        Lines wrong = onlyIn(ours, table.ours);
        std::size_t fewest = 0;
        std::erase_if(wrong, [&](const std::string& row) {
            fewest = std::max(fewest, wrongFields(row, missing));
            return wrongFields(row, missing) == 0;
        });
        const bool differs = !missing.empty() || !wrong.empty();
        // A number or a letter that was changed in its place: nothing contradicts it.
        const bool unknowable = wrong.size() == 1 && missing.size() == 1 && fewest == 1;
        if (unknowable && mute) {
            ++tally.unknowable;
            return;
        }
        if (differs && mute) complain(tally.silent, "silent", table);
        if (differs && checked == kSound) complain(tally.sound, "called sound", table);
        if (!wrong.empty() && right.size() < rightTheirs.size()) {
            complain(tally.wrong, "wrong: " + wrong.front(), table);
        }
    }

    ProgramResult change(const std::string& file, const std::string& statement) {
        const ProgramResult result = fixture::runProgram({VORELLE_JETSQL, file, statement});
        expectBounds(result);
        return result;
    }

    /// A statement that writes either is refused, and the file stays as it was, or does what it says
    /// to the rows that can be read; of others it says so.
    void tryWriting(const std::string& table, const std::string& file) {
        const Lines before = rowsOf(jetsql(file, table));
        ByteVector content = read(file);
        if (change(file, "ALTER TABLE [" + table + "] ADD COLUMN Probe TEXT(5)").exitCode != 0) {
            EXPECT_EQ(read(file), content) << label_ << ": refused, but changed";
            return;
        }
        content = read(file);
        const ProgramResult update = change(file, "UPDATE [" + table + "] SET Probe = 'probe'");
        if (update.exitCode != 0) {
            EXPECT_EQ(read(file), content) << label_ << ": refused, but changed";
        }
        const ProgramResult result = jetsql(file, table);
        Lines after = rowsOf(result);
        for (std::string& row : after) {
            const std::string_view end = row.ends_with("\tprobe") ? "\tprobe" : "\t\\N";
            EXPECT_TRUE(row.ends_with(end)) << label_ << ": " << row;
            row.resize(row.size() - end.size());
        }
        std::ranges::sort(after);
        EXPECT_EQ(onlyIn(after, before), Lines{}) << label_ << ": other rows than before";
        if (!result.errors.empty() || !update.errors.empty()) return;
        EXPECT_EQ(after, before) << label_ << ": fewer rows than before, without a word";
    }

    void complain(int& count, const std::string& what, const Table& table) {
        ++count;
        complaints_.push_back(label_ + ", " + table.name + ": " + what);
    }

    void tryMutant(std::uint64_t seed) {
        fixture::Random random{seed};
        const Sample& sample = samples_[random.below(static_cast<std::uint32_t>(samples_.size()))];
        const mutation::Kind kind = random.pick(mutation::allKinds());
        label_ = "seed " + std::to_string(seed) + ", " + mutation::nameOf(kind) + ", " +
                 sample.path.filename().string();
        const ByteVector mutant = mutation::mutate(kind, sample.bytes, random);
        const std::string file = folder_.write("mutant.mdb", mutant).string();
        torn_ = mutant.size() % jet::kPageSize != 0;
        Tally& tally = tallies_[kind];
        ++tally.mutants;
        const ProgramResult checked = jetcheck(file);
        expectBounds(checked);
        for (const Table& table : sample.tables) tryTable(table, file, checked.exitCode, tally);
        EXPECT_EQ(read(file), mutant) << label_ << ": the file was changed";
        tryWriting(sample.tables.front().name, file);
    }

    void tryMutants(int count) {
        const std::uint64_t first = number("VORELLE_MUTATION_SEED", 1);
        for (std::uint64_t i = 0; i < number("VORELLE_MUTANTS", static_cast<std::uint64_t>(count));
             ++i) {
            tryMutant(first + i);
        }
        report();
    }

    void report() {
        std::cout << "kind             mutants  right rows  mdb-export  behind  silent  wrong  "
                     "called sound  unknowable\n";
        for (const auto& [kind, tally] : tallies_) {
            char line[160];
            std::snprintf(line, sizeof line, "%-15s %8d %11zu %11zu %7d %7d %6d %13d %11d\n",
                          mutation::nameOf(kind), tally.mutants, tally.ours, tally.theirs,
                          tally.behind, tally.silent, tally.wrong, tally.sound, tally.unknowable);
            std::cout << line;
        }
        for (const std::string& complaint : complaints_) ADD_FAILURE() << complaint;
    }

    static std::uint64_t number(const char* name, std::uint64_t otherwise) {
        const char* const value = std::getenv(name);
        return value == nullptr ? otherwise : std::strtoull(value, nullptr, 10);
    }

    fixture::TemporaryFolder folder_;
    std::vector<Sample> samples_;
    std::map<mutation::Kind, Tally> tallies_;
    std::vector<std::string> complaints_;
    std::string label_;  ///< of the mutant in hand
    bool torn_ =
        false;  ///< its last page is not whole: mdb-export reads the rows of its first part
};

TEST_F(Mutants, AreRead) { tryMutants(kSanitized ? 40 : 300); }
TEST_F(Mutants, LongAreRead) { tryMutants(5000); }

}  // namespace
