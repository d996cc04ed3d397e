#include "engine/jet/storage.h"

#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/expected.h"

#ifndef _WIN32
#include <unistd.h>
#endif

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <thread>

namespace jet {
namespace {

using fixture::TemporaryFolder;
using testing::Each;
using testing::HasSubstr;

TEST(MemoryStorage, ReadsUpToItsEnd) {
    const MemoryStorage storage{{1, 2, 3, 4, 5}};
    std::vector<std::uint8_t> buffer(3, 9);
    EXPECT_EQ(storage.readAt(1, buffer), 3u);
    EXPECT_THAT(buffer, testing::ElementsAre(2, 3, 4));
    EXPECT_EQ(storage.readAt(4, buffer), 1u);
    EXPECT_THAT(buffer, testing::ElementsAre(5, 3, 4));
    EXPECT_EQ(storage.readAt(5, buffer), 0u);
    EXPECT_EQ(storage.readAt(std::uint64_t{1} << 40, buffer), 0u);
}

TEST(MemoryStorage, CountsWholePages) {
    EXPECT_EQ(MemoryStorage{numberedPages(3)}.pageCount(), 3u);
    EXPECT_EQ(MemoryStorage{std::vector<std::uint8_t>(kPageSize * 2 - 1)}.pageCount(), 1u);
    EXPECT_EQ(MemoryStorage{{}}.pageCount(), 0u);
}

TEST(Storage, ReadsSeveralPagesAtOnce) {
    const MemoryStorage storage{numberedPages(4)};
    std::vector<std::uint8_t> buffer(2 * kPageSize);
    storage.readPages(PageNumber{1}, buffer);
    EXPECT_THAT(std::span{buffer}.first(kPageSize), Each(1));
    EXPECT_THAT(std::span{buffer}.subspan(kPageSize), Each(2));
}

TEST(Storage, SaysWhichPageIsMissing) {
    const MemoryStorage storage{std::vector<std::uint8_t>(4 * kPageSize - 1)};
    std::vector<std::uint8_t> buffer(3 * kPageSize);
    const std::string message =
        expectFault(Fault::Truncated, [&] { storage.readPages(PageNumber{2}, buffer); });
    EXPECT_THAT(message, HasSubstr("page 3"));
}

TEST(FileStorage, ReadsWhatStandsInTheFile) {
    const TemporaryFolder folder;
    const auto storage = openFile(folder.write("pages.mdb", numberedPages(3)));
    EXPECT_EQ(storage->size(), 3 * kPageSize);
    EXPECT_EQ(storage->pageCount(), 3u);
    std::vector<std::uint8_t> buffer(kPageSize);
    storage->readPages(PageNumber{2}, buffer);
    EXPECT_THAT(buffer, Each(2));
    EXPECT_EQ(storage->readAt(3 * kPageSize - 10, buffer), 10u);
    EXPECT_EQ(storage->readAt(3 * kPageSize, buffer), 0u);
    expectFault(Fault::Truncated, [&] { storage->readPages(PageNumber{3}, buffer); });
}

TEST(FileStorage, SeesWhatAnotherProgramAppends) {
    const TemporaryFolder folder;
    const auto path = folder.write("growing.mdb", numberedPages(1));
    const auto storage = openFile(path);
    std::ofstream{path, std::ios::binary | std::ios::app} << std::string(kPageSize, '\7');
    EXPECT_EQ(storage->pageCount(), 2u);
    std::vector<std::uint8_t> buffer(kPageSize);
    storage->readPages(PageNumber{1}, buffer);
    EXPECT_THAT(buffer, Each(7));
}

TEST(FileStorage, ServesSeveralThreads) {
    const TemporaryFolder folder;
    const auto storage = openFile(folder.write("shared.mdb", numberedPages(64)));
    std::vector<std::thread> threads;
    std::atomic<unsigned> wrong = 0;
    for (unsigned first = 0; first < 4; ++first) {
        threads.emplace_back([&, first] {
            std::vector<std::uint8_t> buffer(kPageSize);
            for (unsigned i = 0; i < 1000; ++i) {
                const unsigned page = (first * 17 + i * 5) % 64;
                storage->readPages(PageNumber{page}, buffer);
                if (buffer.front() != page || buffer.back() != page) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0u);
}

TEST(OpenFile, MissingFilesAndFolders) {
    const TemporaryFolder folder;
    const auto missing = folder.path() / "nothing.mdb";
    const std::string message = expectFault(Fault::FileNotFound, [&] { openFile(missing); });
    EXPECT_THAT(message, HasSubstr("nothing.mdb"));
    expectFault(Fault::FileNotFound, [&] { openFile(folder.path() / "no folder" / "x.mdb"); });
    expectFault(Fault::FileNotFound, [] { openFile({}); });
    const auto file = folder.write("file.mdb", numberedPages(1));
    expectFault(Fault::FileNotFound, [&] { openFile(file / "below a file.mdb"); });
}

TEST(OpenFile, AFolderIsNoFile) {
    const TemporaryFolder folder;
    expectFault(Fault::AccessDenied, [&] { openFile(folder.path()); });
}

#ifndef _WIN32
TEST(OpenFile, AFileThatMayNotBeRead) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "nothing is forbidden to this user";
    }
    const TemporaryFolder folder;
    const auto path = folder.write("secret.mdb", numberedPages(1));
    std::filesystem::permissions(path, std::filesystem::perms::none);
    expectFault(Fault::AccessDenied, [&] { openFile(path); });
}
#endif

TEST(OpenFile, NamesOfAllScripts) {
    const TemporaryFolder folder;
    for (const std::u8string name :
         {u8"Ä ö ß.mdb", u8"Трассировка.mdb", u8"記録.mdb", u8"🙂.mdb"}) {
        const auto path = folder.path() / std::filesystem::path{name};
        std::filesystem::rename(folder.write("plain.mdb", numberedPages(2)), path);
        EXPECT_EQ(openFile(path)->pageCount(), 2u);
    }
    const auto message = expectFault(Fault::FileNotFound, [&] {
        openFile(folder.path() / std::filesystem::path{u8"fehlt ß.mdb"});
    });
    EXPECT_THAT(message, HasSubstr("fehlt ß.mdb"));
}

/// The spelling with which the system's own calls take a path of any length.
std::filesystem::path unlimited(const std::filesystem::path& path) {
#ifdef _WIN32
    return LR"(\\?\)" + std::filesystem::path{path}.make_preferred().wstring();
#else
    return path;
#endif
}

TEST(OpenFile, PathsOfMoreThan260Characters) {
    const TemporaryFolder folder;
    std::vector<std::filesystem::path> made{folder.path()};
    for (char name = 'a'; name < 'f'; ++name) {
        made.push_back(made.back() / std::string(90, name));
        ASSERT_TRUE(std::filesystem::create_directory(unlimited(made.back())));
    }
    const auto deep = made.back() / "deep.mdb";
    const auto plain = folder.write("plain.mdb", numberedPages(2));
    std::filesystem::rename(plain, unlimited(deep));
    EXPECT_EQ(openFile(deep)->pageCount(), 2u);
    expectFault(Fault::FileNotFound, [&] { openFile(made.back() / "missing.mdb"); });

    std::filesystem::remove(unlimited(deep));
    for (; made.size() > 1; made.pop_back()) std::filesystem::remove(unlimited(made.back()));
}

TEST(OpenFile, ANameThatNoFileCanHave) {
    const TemporaryFolder folder;
    expectFault(Fault::FileNotFound, [&] { openFile(folder.path() / std::string(300, 'n')); });
}

}  // namespace
}  // namespace jet
