// Real files being written: who may, who may not, and under which names.
#include "engine/jet/database.h"
#include "engine/jet/write/new_database.h"
#include "engine/jet/write/schema.h"
#include "engine/jet/write/table_writer.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/expected.h"

#include <gtest/gtest.h>

#include <fstream>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace jet {
namespace {

using fixture::TemporaryFolder;
using ByteVector = std::vector<std::uint8_t>;

/// Some users may write whatever its permissions say, under Wine too.
bool mayBeWrittenAllTheSame(const std::filesystem::path& path) {
    return std::ofstream{path, std::ios::binary | std::ios::app}.is_open();
}

constexpr const char* kNothingForbidden = "nothing is forbidden to this user";

void addTable(Database& database, const std::u16string& name) {
    database.write([&](WriteContext& context) {
        createTable(context, name, {{.name = u"X", .type = ColumnType::Long}});
    });
}

/// Changes the file at `path` and looks at it again.
void changeAndReopen(const std::filesystem::path& path) {
    std::filesystem::path journal = path;
    journal += "-journal";
    {
        const auto database = Database::open(path);
        addTable(*database, u"T");
        EXPECT_NO_THROW(openFile(journal));
        database->commit();
        expectFault(Fault::FileNotFound, [&] { openFile(journal); });
    }
    EXPECT_NO_THROW(Database::open(path)->table(u"T"));
}

TEST(FileLock, IsNotGivenWhileAnotherHasTheFileOpen) {
    const TemporaryFolder folder;
    const auto path = folder.write("shared.mdb", numberedPages(4));
    const auto one = openFile(path);
    auto other = openFile(path);
    expectFault(Fault::InUse, [&] { one->lock(); });
    // As before: both can read, and the first can lock when the other is gone.
    EXPECT_EQ(one->pageCount(), 4u);
    EXPECT_EQ(other->pageCount(), 4u);
    EXPECT_NO_THROW(openFile(path));
    other.reset();
    one->lock();
    one->writeAt(kPageSize, ByteVector(kPageSize, 9));
    one->unlock();
    ByteVector page(kPageSize);
    openFile(path)->readPages(PageNumber{1}, page);
    EXPECT_EQ(page, ByteVector(kPageSize, 9));
}

TEST(FileLock, KeepsOthersOutUntilItIsGivenBack) {
    const TemporaryFolder folder;
    const auto path = folder.write("locked.mdb", numberedPages(4));
    const auto one = openFile(path);
    one->lock();
    expectFault(Fault::InUse, [&] { openFile(path); });
    one->lock();  // again: nothing happens
    one->unlock();
    EXPECT_EQ(openFile(path)->pageCount(), 4u);
    EXPECT_EQ(one->pageCount(), 4u);
    one->unlock();
}

TEST(FileLock, ADatabaseWithUncommittedChangesIsItsWritersAlone) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "own.mdb";
    createDatabase(path, Date{42000});
    const auto database = Database::open(path);
    addTable(*database, u"T");
    expectFault(Fault::InUse, [&] { Database::open(path); });
    database->commit();
    const auto other = Database::open(path);
    EXPECT_NO_THROW(other->table(u"T"));
    expectFault(Fault::InUse, [&] { addTable(*database, u"U"); });
    expectFault(Fault::NoSuchTable, [&] { database->table(u"U"); });
}

TEST(FileLock, AReadOnlyFile) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "readonly.mdb";
    createDatabase(path, Date{42000});
    const auto writable = std::filesystem::status(path).permissions();
    std::filesystem::permissions(path, std::filesystem::perms::owner_read |
                                           std::filesystem::perms::group_read |
                                           std::filesystem::perms::others_read);
    if (mayBeWrittenAllTheSame(path)) {
        GTEST_SKIP() << kNothingForbidden;
    }
    {
        const auto database = Database::open(path);
        expectFault(Fault::ReadOnly, [&] { addTable(*database, u"T"); });
        expectFault(Fault::NoSuchTable, [&] { database->table(u"T"); });
    }
    std::filesystem::permissions(path, writable);
    changeAndReopen(path);
}

TEST(FileLock, AFolderThatTakesNoJournal) {
#ifdef _WIN32
    GTEST_SKIP() << "the attribute of a folder forbids nothing here";
#else
    if (::geteuid() == 0) {
        GTEST_SKIP() << kNothingForbidden;
    }
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    std::filesystem::permissions(
        folder.path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    {
        const auto database = Database::open(path);
        expectFault(Fault::ReadOnly, [&] { addTable(*database, u"T"); });
    }
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
    changeAndReopen(path);
#endif
}

// A folder where the journal is to stand: whatever the reason, the file stays as it is.
TEST(FileLock, AJournalThatCannotBeMade) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    const auto database = Database::open(path);
    std::filesystem::create_directory(folder.path() / "file.mdb-journal");
    EXPECT_THROW(addTable(*database, u"T"), Error);
    expectFault(Fault::NoSuchTable, [&] { database->table(u"T"); });
    std::filesystem::remove(folder.path() / "file.mdb-journal");
    addTable(*database, u"T");
    database->commit();
    EXPECT_NO_THROW(database->table(u"T"));
}

std::filesystem::path unlimited(const std::filesystem::path& path) {
#ifdef _WIN32
    return LR"(\\?\)" + std::filesystem::path{path}.make_preferred().wstring();
#else
    return path;
#endif
}

TEST(FileNames, OfMoreThan260Characters) {
    const TemporaryFolder folder;
    std::vector<std::filesystem::path> made{folder.path()};
    for (char name = 'a'; name < 'f'; ++name) {
        made.push_back(made.back() / std::string(90, name));
        ASSERT_TRUE(std::filesystem::create_directory(unlimited(made.back())));
    }
    const auto path = made.back() / "deep.mdb";
    createDatabase(path, Date{42000});
    changeAndReopen(path);
    std::filesystem::remove(unlimited(path));
    for (; made.size() > 1; made.pop_back()) std::filesystem::remove(unlimited(made.back()));
}

// Long enough for its journal alone to be too long.
TEST(FileNames, OfJustUnder260Characters) {
    const TemporaryFolder folder;
    const std::size_t taken = folder.path().wstring().size() + 1;
    for (std::size_t length = 244; length < 262; length += 3) {
        const auto path = folder.path() / (std::string(length - taken - 4, 'n') + ".mdb");
        createDatabase(path, Date{42000});
        changeAndReopen(path);
    }
}

TEST(FileNames, OfAllScripts) {
    const TemporaryFolder folder;
    for (const std::u8string name :
         {u8"Ä ö ß.mdb", u8"Трассировка.mdb", u8"記録.mdb", u8"🙂.mdb"}) {
        const auto path = folder.path() / std::filesystem::path{name};
        createDatabase(path, Date{42000});
        changeAndReopen(path);
    }
}

TEST(CreateFile, DoesNotReplaceAnother) {
    const TemporaryFolder folder;
    const auto path = folder.write("there.mdb", numberedPages(2));
    expectFault(Fault::AccessDenied, [&] { createFile(path); });
    expectFault(Fault::AccessDenied, [&] { createDatabase(path, Date{42000}); });
    EXPECT_EQ(openFile(path)->pageCount(), 2u);
    const auto made = createFile(folder.path() / "new.mdb");
    EXPECT_EQ(made->size(), 0u);
    expectFault(Fault::AccessDenied, [&] { createFile(folder.path() / "new.mdb"); });
}

TEST(FileLock, AFileThatWasReplacedIsNotWritten) {
    const TemporaryFolder folder;
    const auto path = folder.write("replaced.mdb", numberedPages(4));
    const auto storage = openFile(path);
    std::error_code failure;
    std::filesystem::rename(path, folder.path() / "moved.mdb", failure);
    if (failure) {
        GTEST_SKIP() << "a file that is open cannot be renamed here";
    }
    folder.write("replaced.mdb", ByteVector(2 * kPageSize, 7));
    expectFault(Fault::WriteFailed, [&] { storage->lock(); });
    ByteVector page(kPageSize);
    openFile(path)->readPages(PageNumber{1}, page);
    EXPECT_EQ(page, ByteVector(kPageSize, 7));
}

TEST(FileLock, ALockFileThatWasLeftBehindMeansNothing) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    folder.write("file.ldb", ByteVector(64, 'A'));
    changeAndReopen(path);
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "file.ldb"));
}

#ifdef _WIN32
TEST(FileLock, ALockFileThatSomebodyHasOpen) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    const auto lockFile = folder.write("file.ldb", ByteVector(64, 'A'));
    const HANDLE held = ::CreateFileW(lockFile.c_str(), GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const auto database = Database::open(path);
    expectFault(Fault::InUse, [&] { addTable(*database, u"T"); });
    ::CloseHandle(held);
    addTable(*database, u"T");
    database->commit();
    EXPECT_NO_THROW(database->table(u"T"));
}
#endif

}  // namespace
}  // namespace jet
