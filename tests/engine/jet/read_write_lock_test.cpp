#include "engine/jet/read_write_lock.h"

#include <gtest/gtest.h>

#include <atomic>
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
    const std::shared_lock first{gate};
    std::thread{[&] { const std::shared_lock second{gate}; }}.join();
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
