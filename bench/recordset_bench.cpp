// Fetching, sorting and reading a recordset of traces, beside reading the file's bytes.
//
//   maketraces traces.mdb --rows 1000000 && VORELLE_BENCH_TRACES=traces.mdb recordset_bench
//
// The database is named by the environment; without it every benchmark reports an error.
#include "engine/ado/recordset.h"
#include "toolkit/grid/model/grouping.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <vector>

namespace {

constexpr std::u16string_view kQuery =
    u"SELECT Date, Process, Source, TraceNumber, Component, TraceLevel, Port, CallId, Trace "
    u"FROM tblTraces";

const char* tracesPath() { return std::getenv("VORELLE_BENCH_TRACES"); }

bool skipped(benchmark::State& state) {
    if (tracesPath()) return false;
    state.SkipWithError("set VORELLE_BENCH_TRACES to a trace database");
    return true;
}

void openConnection(ado::Connection& connection) {
    connection.open(u"Data Source='" + std::filesystem::path{tracesPath()}.u16string() + u"'");
}

void readBytes(benchmark::State& state) {
    if (skipped(state)) return;
    std::vector<std::uint8_t> block(1 << 20);
    for (auto _ : state) {
        const auto storage = jet::openFile(tracesPath());
        std::uint64_t offset = 0;
        while (const std::size_t count = storage->readAt(offset, block)) offset += count;
        state.SetBytesProcessed(state.bytes_processed() + static_cast<std::int64_t>(offset));
    }
}
BENCHMARK(readBytes)->Unit(benchmark::kMillisecond);

void fetchAll(benchmark::State& state) {
    if (skipped(state)) return;
    for (auto _ : state) {
        ado::Connection connection;
        openConnection(connection);
        ado::Recordset rows;
        rows.open(kQuery, connection);
        state.counters["rows"] = rows.recordCount();
        state.PauseTiming();
        rows.setSort(u"Process DESC");
        state.counters["bytes_a_row"] =
            static_cast<double>(rows.byteCount()) / std::max(1, rows.recordCount());
        rows.close();
        state.ResumeTiming();
    }
}
BENCHMARK(fetchAll)->Unit(benchmark::kMillisecond);

void firstHundredRows(benchmark::State& state) {
    if (skipped(state)) return;
    for (auto _ : state) {
        const auto pump = std::make_shared<ado::HandPump>();
        ado::Connection connection;
        openConnection(connection);
        ado::Recordset rows{pump};
        rows.setCursorLocation(ado::adUseClient);
        rows.properties()[u"Initial Fetch Size"].setValue(100);
        rows.open(kQuery, connection, ado::adOpenForwardOnly, ado::adLockReadOnly,
                  ado::adAsyncFetch);
        benchmark::DoNotOptimize(rows.rowCount());
        state.PauseTiming();
        rows.close();
        state.ResumeTiming();
    }
}
BENCHMARK(firstHundredRows)->Unit(benchmark::kMillisecond);

/// Sorts from the order of the fetch.
void sortBy(benchmark::State& state, std::u16string_view column) {
    if (skipped(state)) return;
    ado::Connection connection;
    openConnection(connection);
    ado::Recordset rows;
    rows.open(kQuery, connection);
    for (auto _ : state) {
        rows.setSort(column);
        state.PauseTiming();
        rows.setSort(u"");
        state.ResumeTiming();
    }
}
BENCHMARK_CAPTURE(sortBy, date, u"Date")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortBy, number, u"TraceNumber")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortBy, dictionary, u"Process")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortBy, text, u"CallId")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortBy, longText, u"Trace")->Unit(benchmark::kMillisecond);

void reverse(benchmark::State& state) {
    if (skipped(state)) return;
    ado::Connection connection;
    openConnection(connection);
    ado::Recordset rows;
    rows.open(kQuery, connection);
    rows.setSort(u"TraceNumber ASC");
    bool descending = false;
    for (auto _ : state) {
        descending = !descending;
        rows.setSort(descending ? u"TraceNumber DESC" : u"TraceNumber ASC");
    }
}
BENCHMARK(reverse)->Unit(benchmark::kMillisecond);

/// Groups as the grid does for two columns, one within the other.
void group(benchmark::State& state) {
    if (skipped(state)) return;
    ado::Connection connection;
    openConnection(connection);
    ado::Recordset rows;
    rows.open(kQuery, connection);
    rows.setSort(u"Date ASC");
    const auto fieldNamed = [&](std::u16string_view name) {
        std::size_t field = 0;
        while (rows.fields()[static_cast<int>(field)].name() != name) ++field;
        return field;
    };
    const std::size_t outer = fieldNamed(u"Component");
    const std::size_t inner = fieldNamed(u"Process");
    for (auto _ : state) {
        grid::Grouping grouping{rows.rowCount(),
                                {{rows.valueRanks(outer), false}, {rows.valueRanks(inner), true}}};
        grouping.setAllUnfolded(true);
        benchmark::DoNotOptimize(grouping.viewCount());
    }
}
BENCHMARK(group)->Unit(benchmark::kMillisecond);

/// Every cell of forty rows in the middle, as a grid paints them.
void paintScreen(benchmark::State& state) {
    if (skipped(state)) return;
    ado::Connection connection;
    openConnection(connection);
    ado::Recordset rows;
    rows.open(kQuery, connection);
    rows.setSort(u"Process ASC");
    const std::size_t fields = rows.fields().count();
    std::u16string text;
    for (auto _ : state) {
        const std::uint32_t first = rows.rowCount() / 2;
        for (std::uint32_t row = first; row < first + 40; ++row) {
            for (std::size_t field = 0; field < fields; ++field) {
                rows.textAt(row, field, text);
                benchmark::DoNotOptimize(text.data());
            }
        }
    }
}
BENCHMARK(paintScreen)->Unit(benchmark::kMicrosecond);

/// Looks through all texts without a match.
void findNothing(benchmark::State& state) {
    if (skipped(state)) return;
    ado::Connection connection;
    openConnection(connection);
    ado::Recordset rows;
    rows.open(kQuery, connection);
    for (auto _ : state) {
        rows.moveFirst();
        rows.find(u"Trace Like '*no trace says this*'");
    }
}
BENCHMARK(findNothing)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
