#include "engine/jet/read_write_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <shared_mutex>
#include <thread>
#include <vector>

namespace jet {
namespace {

TEST(ReadWriteLock, AWriterIsAlone) {
    for (int round = 0; round < 20; ++round) {
        ReadWriteLock gate;
        std::atomic<int> writers = 0;
        std::atomic<unsigned> met = 0;
        std::atomic<unsigned> reads = 0;
        std::atomic<bool> done = false;
        std::vector<std::thread> readers;
        for (int n = 0; n < 2; ++n) {
            readers.emplace_back([&] {
                while (!done || reads < 100) {
                    const std::shared_lock reading{gate};
                    if (writers != 0) ++met;
                    std::this_thread::yield();
                    if (writers != 0) ++met;
                    ++reads;
                }
            });
        }
        for (int i = 0; i < 300; ++i) {
            const std::unique_lock writing{gate};
            if (++writers != 1) ++met;
            if (i % 10 == 0) std::this_thread::yield();
            --writers;
        }
        done = true;
        for (std::thread& reader : readers) reader.join();
        ASSERT_EQ(met, 0u);
    }
}

TEST(ReadWriteLock, ReadersShareIt) {
    ReadWriteLock gate;
    std::shared_lock first{gate};
    auto second = std::async(std::launch::async, [&] { const std::shared_lock reading{gate}; });
    EXPECT_EQ(second.wait_for(std::chrono::seconds{20}), std::future_status::ready);
    first.unlock();  // lets a second reader go that had to wait, so that the test ends
}

/// Whether a reader that asks while a writer waits gets in before the writer does. `head` is the
/// writer's start over that reader.
bool readerOvertakesWriter(std::chrono::milliseconds head) {
    ReadWriteLock gate;
    std::shared_lock first{gate};
    std::atomic<bool> written = false;
    std::thread writer{[&] {
        const std::unique_lock writing{gate};
        written = true;
    }};
    std::this_thread::sleep_for(head);
    std::promise<void> asks;
    auto reader = std::async(std::launch::async, [&] {
        asks.set_value();
        const std::shared_lock reading{gate};
        return !written;
    });
    asks.get_future().wait();
    reader.wait_for(std::chrono::milliseconds{200});
    first.unlock();
    writer.join();
    return reader.get();
}

// Readers that follow each other without a gap would keep a writer out for good. The writer may be
// late on a busy machine, so it gets a longer start each time.
TEST(ReadWriteLock, AWaitingWriterGoesBeforeNewReaders) {
    std::chrono::milliseconds head{1};
    while (readerOvertakesWriter(head) && head < std::chrono::seconds{4}) head *= 2;
    EXPECT_LT(head, std::chrono::seconds{4});
}

TEST(ReadWriteLock, WritersTakeTurns) {
    ReadWriteLock gate;
    int count = 0;  // guarded by gate
    std::vector<std::thread> writers;
    for (int n = 0; n < 4; ++n) {
        writers.emplace_back([&] {
            for (int i = 0; i < 1000; ++i) {
                const std::unique_lock writing{gate};
                ++count;
            }
        });
    }
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(count, 4000);
}

}  // namespace
}  // namespace jet
