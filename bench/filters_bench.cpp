// Loads one file as the viewer does, then filters it: how long until the rows are there, how long
// after them the unique traces, and how long three filters take. bench/filters.sh compares a file
// that cannot be upgraded with an upgraded copy.
//
//   filters_bench FILE
#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/db/trace_filter.h"
#include "tests/src/log/reporting_log.h"

#include <chrono>
#include <cstdio>
#include <filesystem>

namespace {

using Clock = std::chrono::steady_clock;

class Watch : public LoadingEvents {
public:
    void openingBegins() override {}
    void openingEnds() override {}
    void upgradeBegins() override {}
    void upgradeEnds() override {}
    void loadBegins() override { loaded = false; }
    void loadRefused() override { loaded = true; }
    void rowsLoaded(std::uint32_t /*count*/) override {}
    void loadEnded(const LoadResult& /*result*/) override {
        loaded = true;
        loadedAt = Clock::now();
    }
    void computingBegins() override {}
    void computingEnds() override {}

    bool loaded = false;
    Clock::time_point loadedAt;
};

int milliseconds(Clock::duration time) {
    return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

class Run {
public:
    explicit Run(const std::filesystem::path& path) {
        diags() = std::make_unique<classDiags>(pump_, watch_);
        modDatabase::connectToDB(path.u16string());
    }
    ~Run() { diags().reset(); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void load() {
        const auto start = Clock::now();
        modDatabase::openRecordsets();
        wait();
        std::printf("%d rows after %d ms, %zu unique traces %d ms later\n",
                    diags()->rsDiags().recordCount(), milliseconds(watch_.loadedAt - start),
                    modDatabase::uniqueTraces().size(),
                    milliseconds(Clock::now() - watch_.loadedAt));
    }

    /// Ticks one unique trace in so many.
    void filter(std::size_t each) {
        UniqueTraces& traces = modDatabase::uniqueTraces();
        for (std::size_t i = 0; i < traces.size(); ++i) traces[i].selected = i % each == 1;
        const std::u16string clause = whereClause(constructFilterExpression(traces));
        const auto start = Clock::now();
        modDatabase::openDiagRecordset(clause);
        wait();
        std::printf("filter by one in %zu: %d rows after %d ms\n", each,
                    diags()->rsDiags().recordCount(), milliseconds(watch_.loadedAt - start));
    }

private:
    void wait() {
        pump_->runUntil([this] { return watch_.loaded; }, std::chrono::minutes{10});
    }

    std::shared_ptr<ado::HandPump> pump_ = std::make_shared<ado::HandPump>();
    Watch watch_;
    ServicesInUse inUse_{servicesWith(&Services::events, static_cast<LoadingEvents*>(&watch_))};
};

}  // namespace

int main(int count, char** values) {
    if (count != 2) return 2;
    Run run{std::filesystem::path{values[1]}};
    run.load();
    if (modDatabase::uniqueTraces().empty()) return 1;
    for (const std::size_t each : {2, 10, 100}) run.filter(each);
}
