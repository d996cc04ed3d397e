#include "tests/engine/jet/write/written.h"

#include <fstream>
#include <iterator>

namespace jet {
namespace {

TEST(NewDatabase, IsSoundAndHasNoTables) {
    Written file;
    file.expectClean();
    EXPECT_TRUE(userTables(*file.database).empty());
    EXPECT_EQ(file.database->catalog().size(), 8u);
}

// A database that the original engine made has the same bytes, but for what it left behind in
// fields that mean nothing, and its dates.
TEST(NewDatabase, IsTheOneThatTheOriginalEngineMakes) {
    const auto folder = fixture::testDataFolder();
    if (!folder) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    std::ifstream original{*folder / "access-made" / "adox_jet4.mdb", std::ios::binary};
    const std::vector<std::uint8_t> theirs{std::istreambuf_iterator<char>{original}, {}};
    const auto created = std::bit_cast<double>(std::uint64_t{0x40E4AB3E3BD3FB4E});
    const std::vector<std::uint8_t> ours = emptyDatabase(Date{created});
    ASSERT_EQ(ours.size(), theirs.size());
    std::vector<std::size_t> different;
    for (std::size_t i = 0; i < ours.size(); ++i) {
        if (ours[i] != theirs[i]) different.push_back(i);
    }
    // All of them in the definitions of the system tables.
    EXPECT_LE(different.size(), 26u);
    for (const std::size_t offset : different) {
        EXPECT_TRUE(offset / kPageSize >= 2 && offset / kPageSize <= 5)
            << std::hex << offset << ": " << int{ours[offset]} << " is " << int{theirs[offset]};
    }
}

TEST(NewDatabase, AsAFile) {
    const fixture::TemporaryFolder folder;
    const auto path = folder.path() / "new.mdb";
    createDatabase(path, kTestNow);
    EXPECT_EQ(std::filesystem::file_size(path), 16 * kPageSize);
    expectClean(*openFile(path));
    EXPECT_THROW(createDatabase(path, kTestNow), Error);
}

}  // namespace
}  // namespace jet
