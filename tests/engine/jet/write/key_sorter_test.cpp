// Keys in memory and in runs: the order, and that nothing is left behind.
#include "engine/jet/write/key_sorter.h"

#include "engine/jet/error.h"
#include "tests/support/expected.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace jet {
namespace {

using fixture::Random;

/// A folder of its own for the temporary files of a test.
class TemporaryFiles {
public:
    TemporaryFiles() {
        if (const char* before = std::getenv(kVariable)) before_ = before;
        set(folder_.path().string());
    }
    ~TemporaryFiles() { set(before_); }
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;

    std::size_t count() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator{folder_.path()}, {}));
    }
    const std::filesystem::path& folder() const { return folder_.path(); }

private:
#ifdef _WIN32
    static constexpr const char* kVariable = "TMP";
    static void set(const std::string& value) { ::_putenv_s(kVariable, value.c_str()); }
#else
    static constexpr const char* kVariable = "TMPDIR";
    static void set(const std::string& value) {
        value.empty() ? ::unsetenv(kVariable) : ::setenv(kVariable, value.c_str(), 1);
    }
#endif

    fixture::TemporaryFolder folder_;
    std::string before_;
};

using Entry = std::pair<Key, RowId>;

Key keyOf(std::uint32_t number) {
    // Long and short ones, some of which begin alike; of different bytes above and below 0x80.
    Key key(number % 40, static_cast<std::uint8_t>(number % 3 * 100));
    for (int shift = 24; shift >= 0; shift -= 8) {
        key.push_back(static_cast<std::uint8_t>(number >> shift));
    }
    return key;
}

RowId rowOf(std::uint32_t number) { return RowId{PageNumber{number / 200 + 1}, number % 200}; }

std::vector<Entry> drain(KeySorter& sorter) {
    std::vector<Entry> entries;
    sorter.forEach([&](const Key& key, RowId row) { entries.emplace_back(key, row); });
    return entries;
}

/// Adds `count` rows, with keys out of `distinct`, in a random order of rows.
std::vector<Entry> addAll(KeySorter& sorter, std::uint32_t count, std::uint32_t distinct) {
    Random random{count + distinct};
    std::vector<std::uint32_t> rows(count);
    for (std::uint32_t i = 0; i < count; ++i) rows[i] = i;
    for (std::uint32_t i = count; i > 1; --i) std::swap(rows[i - 1], rows[random.below(i)]);
    std::vector<Entry> entries;
    for (const std::uint32_t number : rows) {
        const Key key = keyOf(random.below(distinct));
        sorter.add(sorter.code(key), rowOf(number));
        entries.emplace_back(key, rowOf(number));
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

TEST(KeySorter, Nothing) {
    KeySorter sorter;
    EXPECT_TRUE(drain(sorter).empty());
}

TEST(KeySorter, OneRunStaysInMemory) {
    const TemporaryFiles files;
    KeySorter sorter;
    const auto expected = addAll(sorter, 5000, 700);
    EXPECT_EQ(sorter.run(), 0u);
    EXPECT_EQ(files.count(), 0u);
    EXPECT_EQ(drain(sorter), expected);
}

TEST(KeySorter, ManyRunsGiveTheSameOrder) {
    for (const std::uint32_t distinct : {1u, 10u, 5000u}) {
        const TemporaryFiles files;
        {
            KeySorter sorter{4000};
            const auto expected = addAll(sorter, 5000, distinct);
            EXPECT_GT(sorter.run(), 10u);
            EXPECT_EQ(files.count(), 1u);
            EXPECT_EQ(drain(sorter), expected) << distinct;
        }
        EXPECT_EQ(files.count(), 0u);
    }
}

// A run ends when its rows and keys have used the budget up, however they share it.
TEST(KeySorter, ARunTakesWhatTheBudgetAllows) {
    constexpr std::size_t kBudget = 60000;
    const TemporaryFiles files;
    KeySorter few{kBudget};
    addAll(few, 20000, 2);
    EXPECT_GE(few.run(), 20000u * 12 / kBudget);
    KeySorter longKeys{kBudget};
    for (std::uint32_t i = 0; i < 1000; ++i) {
        Key key(500, 1);
        key.push_back(static_cast<std::uint8_t>(i));
        key.push_back(static_cast<std::uint8_t>(i >> 8));
        longKeys.add(longKeys.code(key), rowOf(i));
    }
    EXPECT_GE(longKeys.run(), 1000u * 500 / kBudget);
}

// More rows of one key than a piece of a run holds.
TEST(KeySorter, OneKeyOfManyRows) {
    const TemporaryFiles files;
    for (const std::size_t budget : {KeySorter::kDefaultBudget, std::size_t{200000}}) {
        KeySorter sorter{budget};
        const auto expected = addAll(sorter, 50000, 1);
        EXPECT_EQ(drain(sorter), expected) << budget;
    }
}

TEST(KeySorter, AnEmptyKey) {
    KeySorter sorter{200};
    for (std::uint32_t i = 0; i < 100; ++i) sorter.add(sorter.code(Key{}), rowOf(i));
    EXPECT_EQ(drain(sorter).size(), 100u);
}

TEST(KeySorter, LeavesNoFileBehindAnException) {
    const TemporaryFiles files;
    struct Failure {};
    const auto use = [] {
        KeySorter sorter{4000};
        addAll(sorter, 2000, 100);
        sorter.forEach([](const Key&, RowId) { throw Failure{}; });
    };
    EXPECT_THROW(use(), Failure);
    EXPECT_EQ(files.count(), 0u);
}

TEST(KeySorter, AFolderForTemporaryFilesThatIsNotThere) {
    const TemporaryFiles files;
    std::filesystem::remove(files.folder());
    const auto use = [] {
        KeySorter sorter{4000};
        addAll(sorter, 2000, 100);
    };
    EXPECT_THROW(use(), Error);
    std::filesystem::create_directories(files.folder());
}

}  // namespace
}  // namespace jet
