// Text keys and comparisons, which sorting, grouping and indexes rest on.
#include "engine/jet/collation.h"

#include <benchmark/benchmark.h>

namespace {

constexpr std::u16string_view kAscii = u"Notifier_MsgSvc 12 CSession::Open() done";
constexpr std::u16string_view kOtherCase = u"NOTIFIER_MSGSVC 12 CSESSION::OPEN() DONE";
constexpr std::u16string_view kAccents =
    u"M\u00FCller's G\u00E4steb\u00FCcher: r\u00E9sum\u00E9, co-op ...";
constexpr std::u16string_view kNoAccents = u"Muller's Gastebucher: resume, co-op ...";

void textKey(benchmark::State& state, std::u16string_view text) {
    for (auto _ : state) benchmark::DoNotOptimize(jet::textKey(text));
}
BENCHMARK_CAPTURE(textKey, ascii, kAscii);
BENCHMARK_CAPTURE(textKey, accents, kAccents);

void appendTextKey(benchmark::State& state, std::u16string_view text) {
    std::vector<std::uint8_t> key;
    for (auto _ : state) {
        key.clear();
        jet::appendTextKey(text, true, key);
        benchmark::DoNotOptimize(key.data());
    }
}
BENCHMARK_CAPTURE(appendTextKey, ascii, kAscii);
BENCHMARK_CAPTURE(appendTextKey, accents, kAccents);

void compareText(benchmark::State& state, std::u16string_view left, std::u16string_view right) {
    for (auto _ : state) benchmark::DoNotOptimize(jet::compareText(left, right));
}
BENCHMARK_CAPTURE(compareText, same, kAscii, kAscii);
BENCHMARK_CAPTURE(compareText, otherCase, kAscii, kOtherCase);
BENCHMARK_CAPTURE(compareText, accents, kAccents, kNoAccents);
BENCHMARK_CAPTURE(compareText, different, kAscii, kAccents);

}  // namespace

BENCHMARK_MAIN();
