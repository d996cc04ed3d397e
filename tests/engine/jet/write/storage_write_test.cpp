// Real files being written: who may, who may not, and under which names.
#include "engine/jet/database.h"
#include "engine/jet/write/new_database.h"
#include "engine/jet/write/schema.h"
#include "engine/jet/write/table_writer.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/plain_value.h"
#include "tests/engine/jet/write/crashed.h"
#include "tests/support/expected.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <mutex>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/stat.h>
#endif

namespace jet {
namespace {

using fixture::TemporaryFolder;
using testing::HasSubstr;
using ByteVector = std::vector<std::uint8_t>;

#ifdef _WIN32
/// Some users may write whatever its permissions say, under Wine too.
bool mayBeWrittenAllTheSame(const std::filesystem::path& path) {
    return std::ofstream{path, std::ios::binary | std::ios::app}.is_open();
}

constexpr const char* kNothingForbidden = "nothing is forbidden to this user";
#endif

#ifndef _WIN32
constexpr auto kReadOnlyFolder =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec;
#endif

std::filesystem::path journalOf(std::filesystem::path path) { return path += "-journal"; }

ByteVector contentOf(const Storage& storage) {
    ByteVector content(static_cast<std::size_t>(storage.size()));
    EXPECT_EQ(storage.readAt(0, content), content.size());
    return content;
}

#ifndef _WIN32
/// A file whose change was cut short, and its journal.
std::filesystem::path write(const TemporaryFolder& folder, Crashed& crashed) {
    folder.write("crashed.mdb-journal", crashed.journal());
    return folder.write("crashed.mdb", crashed.crashed);
}
#endif

void addTable(Database& database, const std::u16string& name) {
    database.write([&](WriteContext& context) {
        createTable(context, name, {{.name = u"X", .type = ColumnType::Long}});
    });
}

/// Changes the file at `path` and looks at it again.
void changeAndReopen(const std::filesystem::path& path) {
    {
        const auto database = Database::open(path);
        addTable(*database, u"T");
        EXPECT_NO_THROW(openFile(journalOf(path)));
        database->commit();
        expectFault(Fault::FileNotFound, [&] { openFile(journalOf(path)); });
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

TEST(BusyFile, IsRefusedWhenASecondHasPassed) {
    const TemporaryFolder folder;
    const auto path = folder.write("busy.mdb", numberedPages(4));
    const auto writer = openFile(path);
    const auto refused = [&](Storage& storage) {
        const auto start = std::chrono::steady_clock::now();
        expectFault(Fault::InUse, [&] { storage.lock(); });
        return std::chrono::steady_clock::now() - start;
    };
    const auto reader = openFile(path);
    const auto first = refused(*writer);
    EXPECT_GE(first, std::chrono::seconds{1});
    // Who asks again at once does not wait again.
    EXPECT_LT(refused(*writer), first / 2);
}

/// Programs that use one file at the same time, each for some milliseconds.
class Crowd {
public:
    using Clock = std::chrono::steady_clock;

    explicit Crowd(std::filesystem::path path) : path_{std::move(path)} {}

    void addRow(std::int32_t number) {
        use([&](Database& database) {
            Clock::time_point begin;
            database.write([&](WriteContext& context) {
                begin = Clock::now();
                TableWriter writer{context, database.table(u"T")->definition()};
                writer.insert(std::vector<Value>{number});
                writer.finish();
            });
            database.commit();
            note(Clock::now() - begin);
        });
    }

    std::size_t countRows() {
        std::size_t rows = 0;
        use([&](Database& database) { rows = plainRows(*database.table(u"T")).size(); });
        return rows;
    }

    int refused() const { return refused_; }

    /// Nobody can be asked to wait for a disk that takes that long.
    bool wasSlow() const { return longest_ > std::chrono::milliseconds{250}; }

private:
    template <typename Action>
    void use(Action action) {
        try {
            const auto database = Database::open(path_);
            action(*database);
        } catch (const Error& error) {
            EXPECT_EQ(error.fault(), Fault::InUse) << error.what();
            ++refused_;
        }
    }

    void note(Clock::duration time) {
        const std::lock_guard lock{mutex_};
        longest_ = std::max(longest_, time);
    }

    std::filesystem::path path_;
    std::atomic<int> refused_{0};
    std::mutex mutex_;
    Clock::duration longest_{};  ///< that one had the file alone
};

TEST(BusyFile, ThreeWritersAndAReaderAtOnce) {
    constexpr int kWriters = 3;
    constexpr std::int32_t kRows = 30;
    const TemporaryFolder folder;
    const auto path = folder.path() / "busy.mdb";
    createDatabase(path, Date{42000});
    addTable(*Database::open(path), u"T");
    Crowd crowd{path};
    std::atomic<int> writing{kWriters};
    std::atomic<int> steps{0};  ///< rows added, and writers that have finished
    const auto step = [&] {
        const int number = ++steps;
        steps.notify_all();
        return number;
    };
    std::vector<std::jthread> threads;
    for (int writer = 0; writer < kWriters; ++writer) {
        threads.emplace_back([&] {
            for (std::int32_t i = 0; i < kRows; ++i) {
                crowd.addRow(i);
                // No program is so fast that it has the file again before anybody else wakes up.
                const int number = step();
                if (writing > 1) steps.wait(number);
            }
            --writing;
            step();
        });
    }
    for (int seen = 0; writing > 0; crowd.countRows()) {
        steps.wait(seen);
        seen = steps;
    }
    threads.clear();
    const int refused = crowd.refused();
    if (refused != 0 && crowd.wasSlow()) {
        GTEST_SKIP() << "the disk is too slow for this";
    }
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(crowd.countRows(), std::size_t{kWriters * kRows});
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
#ifdef _WIN32
    if (mayBeWrittenAllTheSame(path)) {
        GTEST_SKIP() << kNothingForbidden;
    }
#endif
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
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    std::filesystem::permissions(folder.path(), kReadOnlyFolder);
    {
        const auto database = Database::open(path);
        expectFault(Fault::ReadOnly, [&] { addTable(*database, u"T"); });
    }
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
    changeAndReopen(path);
#endif
}

#ifndef _WIN32
TEST(FoundJournal, InAReadOnlyFolder) {
    const TemporaryFolder folder;
    Crashed crashed{emptyDatabase(Date{42000})};
    const auto path = write(folder, crashed);
    std::filesystem::permissions(folder.path(), kReadOnlyFolder);
    {
        const auto database = Database::open(path);
        EXPECT_EQ(contentOf(database->storage()), crashed.original);
        EXPECT_EQ(database->recovery().pagesLaidOver, Crashed::kSafe);
        EXPECT_THAT(database->recovery().obstacle, HasSubstr(folder.path().string()));
        const auto message = expectFault(Fault::ReadOnly, [&] { addTable(*database, u"T"); });
        EXPECT_EQ(message, database->recovery().obstacle);
    }
    EXPECT_EQ(contentOf(*openFile(path)), crashed.crashed);
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
    EXPECT_EQ(Database::open(path)->recovery().pagesPutBack, Crashed::kSafe);
    EXPECT_EQ(contentOf(*openFile(path)), crashed.original);
    changeAndReopen(path);
}

TEST(FoundJournal, BesideTheTargetOfALink) {
    const TemporaryFolder folder;
    Crashed crashed{emptyDatabase(Date{42000})};
    const auto path = write(folder, crashed);
    std::filesystem::create_directory(folder.path() / "links");
    const auto link = folder.path() / "links" / "link.mdb";
    std::filesystem::create_symlink(path, link);
    EXPECT_EQ(Database::open(link)->recovery().pagesPutBack, Crashed::kSafe);
    EXPECT_EQ(contentOf(*openFile(path)), crashed.original);

    // And where one is made.
    const auto database = Database::open(link);
    addTable(*database, u"T");
    EXPECT_TRUE(std::filesystem::exists(journalOf(path)));
    EXPECT_FALSE(std::filesystem::exists(journalOf(link)));
    database->commit();
    EXPECT_FALSE(std::filesystem::exists(journalOf(path)));
}

// Whoever opens it for reading must not wait for somebody who writes to it.
TEST(FoundJournal, APipe) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    ASSERT_EQ(::mkfifo(journalOf(path).c_str(), 0600), 0);
    const auto database = Database::open(path);
    EXPECT_THAT(database->recovery().obstacle, HasSubstr(journalOf(path).string()));
    expectFault(Fault::JournalInTheWay, [&] { addTable(*database, u"T"); });
    EXPECT_TRUE(std::filesystem::is_fifo(journalOf(path)));
}
#endif

TEST(FoundJournal, AFileOfSomebodyElse) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    const ByteVector before = contentOf(*openFile(path));
    const ByteVector diary(100, 'D');
    folder.write("file.mdb-journal", diary);
    {
        const auto database = Database::open(path);
        EXPECT_FALSE(database->catalog().empty());
        const auto message =
            expectFault(Fault::JournalInTheWay, [&] { addTable(*database, u"T"); });
        EXPECT_THAT(message, HasSubstr("file.mdb-journal"));
        expectFault(Fault::NoSuchTable, [&] { database->table(u"T"); });
    }
    EXPECT_EQ(contentOf(*openFile(path)), before);
    EXPECT_EQ(contentOf(*openFile(journalOf(path))), diary);
    std::filesystem::remove(journalOf(path));
    changeAndReopen(path);
}

// It appears when the change has begun already.
TEST(FoundJournal, IsNeverOverwritten) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    const auto storage = openFile(path);
    storage->lock();
    const ByteVector diary(100, 'D');
    folder.write("file.mdb-journal", diary);
    expectFault(Fault::JournalInTheWay, [&] { storage->createJournal(); });
    storage->unlock();
    EXPECT_EQ(contentOf(*openFile(journalOf(path))), diary);
}

// A folder where the journal is to stand: the file stays as it is.
TEST(FileLock, AJournalThatCannotBeMade) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "file.mdb";
    createDatabase(path, Date{42000});
    const auto database = Database::open(path);
    std::filesystem::create_directory(folder.path() / "file.mdb-journal");
    const auto message = expectFault(Fault::JournalInTheWay, [&] { addTable(*database, u"T"); });
    EXPECT_THAT(message, HasSubstr("file.mdb-journal"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "file.mdb-journal"));
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
