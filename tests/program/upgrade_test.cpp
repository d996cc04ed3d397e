// The real program upgrading a database: to its end, beside others who have the file open, and
// killed in the middle.
#include "engine/jet/check/check.h"
#include "engine/jet/database.h"
#include "tests/program/running_viewer.h"
#include "tests/support/random.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

namespace {

using fixture::TraceFormat;

std::vector<char> contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::wstring argumentsFor(const std::filesystem::path& database) {
    return L"-db \"" + database.wstring() + L"\"";
}

bool isUpgraded(jet::Database& database) {
    for (const jet::CatalogEntry& entry : database.catalog()) {
        if (entry.name == u"tblUniqueFilters") return true;
    }
    return false;
}

/// All rows have their key, and the file keeps all rules.
void expectWhole(const std::filesystem::path& path, std::uint64_t rows) {
    const auto database = jet::Database::open(path);
    ASSERT_TRUE(isUpgraded(*database));
    const auto traces = database->table(u"tblTraces");
    const jet::Column* const key = traces->definition().findColumn(u"qrxIndex");
    ASSERT_NE(key, nullptr);
    std::uint64_t keys = 0;
    for (jet::TableScan scan{*traces}; scan.next();) {
        if (!scan.record().field(*key).null) ++keys;
    }
    EXPECT_EQ(keys, rows);
    const jet::CheckReport report = jet::check(*database);
    EXPECT_TRUE(report.sound()) << report.findings.front().message;
}

TEST(UpgradeByTheProgram, AnOlderFileIsUpgradedAndShown) {
    const ViewerFolder folder;
    const auto database = folder.makeDatabase("old.mdb", 3000, TraceFormat::Older);
    const RunningViewer viewer{folder, argumentsFor(database)};
    ASSERT_NE(viewer.waitForWindow(), nullptr);
    ASSERT_TRUE(viewer.close());
    EXPECT_THAT(folder.log(), testing::HasSubstr("Using older database format"));
    for (const std::string& line : folder.logLines()) {
        const bool ofDatabase = line.starts_with("[modDatabase]");
        EXPECT_FALSE(ofDatabase && line.find("Err.Number") != std::string::npos) << line;
    }
    expectWhole(database, 3000);
}

TEST(UpgradeByTheProgram, AReadOnlyFileIsShownAndLeftAlone) {
    const ViewerFolder folder;
    const auto database = folder.makeDatabase("old.mdb", 300, TraceFormat::Older);
    const auto content = contentOf(database);
    ASSERT_TRUE(SetFileAttributesW(database.c_str(), FILE_ATTRIBUTE_READONLY));
    {
        const RunningViewer viewer{folder, argumentsFor(database)};
        ASSERT_NE(viewer.waitForWindow(), nullptr);
        ASSERT_TRUE(viewer.close());
    }
    SetFileAttributesW(database.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(contentOf(database) == content);
    EXPECT_THAT(folder.log(), testing::HasSubstr("Err.Number = -2147217911 "));
    EXPECT_THAT(folder.log(),
                testing::HasSubstr("forcing exit from [modDatabase]openUniqueFilters"));
}

TEST(UpgradeByTheProgram, AFileThatAnotherProgramHasOpenIsShownAndLeftAlone) {
    const ViewerFolder folder;
    const auto database = folder.makeDatabase("old.mdb", 300, TraceFormat::Older);
    const auto content = contentOf(database);
    {
        const auto other = jet::openFile(database);
        const RunningViewer viewer{folder, argumentsFor(database)};
        ASSERT_NE(viewer.waitForWindow(), nullptr);
        ASSERT_TRUE(viewer.close());
    }
    EXPECT_TRUE(contentOf(database) == content);
    EXPECT_THAT(folder.log(), testing::HasSubstr("Err.Number = -2147467259 "));
}

/// Kills the program at random moments of its upgrade. Each time the file is the old one or the
/// new one once it is opened again.
void killAndLook(int times, std::uint64_t seed) {
    constexpr std::uint32_t kRows = 40000;
    const ViewerFolder folder;
    const auto original = folder.makeDatabase("original.mdb", kRows, TraceFormat::Older);
    const auto content = contentOf(original);
    const auto database = folder.path() / "killed.mdb";

    // How long it takes from the start to the end of the upgrade, after which the window comes.
    std::filesystem::copy_file(original, database);
    const ULONGLONG start = GetTickCount64();
    {
        const RunningViewer viewer{folder, argumentsFor(database)};
        ASSERT_NE(viewer.waitForWindow(), nullptr);
    }
    const auto duration = static_cast<std::uint32_t>(GetTickCount64() - start);

    fixture::Random random{seed};
    int old = 0;
    int complete = 0;
    int interrupted = 0;
    for (int i = 0; i < times; ++i) {
        std::filesystem::remove(database);
        std::filesystem::remove(database.string() + "-journal");
        std::filesystem::copy_file(original, database);
        {
            const RunningViewer viewer{folder, argumentsFor(database)};
            Sleep(random.between(duration / 8, duration * 3 / 4));
            viewer.kill();
        }
        if (std::filesystem::exists(database.string() + "-journal")) ++interrupted;
        const bool upgraded = isUpgraded(*jet::Database::open(database));
        if (upgraded) {
            ++complete;
            expectWhole(database, kRows);
        } else {
            ++old;
            ASSERT_TRUE(contentOf(database) == content) << "kill " << i;
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << "kill " << i;
    }
    testing::Test::RecordProperty("old", old);
    testing::Test::RecordProperty("complete", complete);
    testing::Test::RecordProperty("interrupted", interrupted);
    std::printf("%d kills: %d old files, %d new ones; %d met in the middle of writing\n", times,
                old, complete, interrupted);
}

TEST(UpgradeByTheProgram, KilledAtRandomMoments) { killAndLook(8, 1); }

TEST(LongUpgradeByTheProgram, KilledAtAHundredRandomMoments) { killAndLook(100, 2); }

}  // namespace
