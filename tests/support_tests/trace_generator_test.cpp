#include "tests/support/trace_generator.h"

#include <gtest/gtest.h>

#include <set>

namespace fixture {
namespace {

std::vector<Trace> generate(const TraceOptions& options) {
    TraceGenerator generator{options};
    std::vector<Trace> traces;
    Trace trace;
    while (generator.next(trace)) traces.push_back(trace);
    return traces;
}

TEST(TraceGenerator, DependsOnItsSeedAlone) {
    const std::vector<Trace> first = generate({.rows = 500, .seed = 5});
    const std::vector<Trace> again = generate({.rows = 500, .seed = 5});
    const std::vector<Trace> other = generate({.rows = 500, .seed = 6});
    ASSERT_EQ(first.size(), 500u);
    std::size_t sameInOther = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].text, again[i].text);
        EXPECT_EQ(first[i].origin, again[i].origin);
        EXPECT_EQ(first[i].callId, again[i].callId);
        sameInOther += first[i].text == other[i].text ? 1 : 0;
    }
    EXPECT_LT(sameInOther, 5u);
}

TEST(TraceGenerator, MakesTheSameTextsOnEveryMachine) {
    const std::vector<Trace> traces = generate({.rows = 1, .seed = 1});
    EXPECT_EQ(traces[0].text,
              u"Lamp of extension 4603 switched on, 53 new messages, 4416 kept, quota 16 percent "
              u"used; next step is Store; next step is Tick; call 14D7-007EF1FD");
}

TEST(TraceGenerator, HasManyNamesAndAboutAHundredCombinations) {
    const TraceGenerator generator{{.seed = 3}};
    std::set<std::u16string> components;
    std::set<std::u16string> processes;
    std::set<std::u16string> sources;
    std::set<std::int16_t> levels;
    std::set<std::u16string> keys;
    for (const TraceOrigin& origin : generator.origins()) {
        components.insert(origin.component);
        processes.insert(origin.process);
        sources.insert(origin.source);
        levels.insert(origin.level);
        keys.insert(origin.key());
        EXPECT_LE(origin.key().size(), 160u);
    }
    EXPECT_GE(components.size(), 25u);
    EXPECT_GE(processes.size(), 25u);
    EXPECT_GE(sources.size(), 25u);
    EXPECT_GE(levels.size(), 25u);
    EXPECT_EQ(keys.size(), generator.origins().size());
    EXPECT_GE(keys.size(), 100u);
}

TEST(TraceGenerator, LooksLikeALog) {
    const std::vector<Trace> traces = generate({.rows = 30000});
    std::size_t characters = 0;
    std::size_t several = 0;
    std::size_t veryLong = 0;
    std::size_t ties = 0;
    std::size_t backwards = 0;
    std::size_t wide = 0;
    for (std::size_t i = 0; i < traces.size(); ++i) {
        const std::u16string& text = traces[i].text;
        characters += text.size();
        several += text.find(u"\r\n") != std::u16string::npos ? 1 : 0;
        veryLong += text.size() >= 5000 ? 1 : 0;
        wide += text.find_first_of(u"内\xD83D") != std::u16string::npos ? 1 : 0;
        if (i == 0) continue;
        ties += traces[i].date == traces[i - 1].date ? 1 : 0;
        backwards += traces[i].date.days < traces[i - 1].date.days ? 1 : 0;
    }
    EXPECT_GT(characters / traces.size(), 100u);
    EXPECT_LT(characters / traces.size(), 150u);
    EXPECT_GT(several, traces.size() / 50);
    EXPECT_GE(veryLong, 1u);
    EXPECT_GE(wide, 50u);
    EXPECT_GT(ties, traces.size() / 2);
    EXPECT_GT(backwards, traces.size() / 100);
}

TEST(TraceGenerator, CutsTextsButNoCharacter) {
    for (const Trace& trace : generate({.rows = 5000, .textLength = 37})) {
        EXPECT_LE(trace.text.size(), 37u);
        EXPECT_NE(trace.text.back() & 0xFC00, 0xD800);
    }
}

}  // namespace
}  // namespace fixture
