// Generated lines of a diagnostic log, the same for the same seed.
//
//   traces::TraceGenerator generator{{.rows = 1000, .seed = 7}};
//   traces::Trace trace;
//   while (generator.next(trace)) use(trace);
//
// About 100 combinations of component, process, level and source, some frequent and most rare;
// times with many ties and some disorder; texts of one or several lines, a few very long, some in
// other scripts. Belongs to one thread.
#pragma once

#include "engine/jet/value.h"
#include "tools/traces/random.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace traces {

/// Where a trace comes from.
struct TraceOrigin {
    std::u16string component;
    std::u16string process;
    std::int16_t level = 0;
    std::u16string source;

    /// The four parts with underlines between, as the column qrxIndex has them.
    std::u16string key() const;
};

struct Trace {
    jet::Date date;
    std::size_t origin = 0;  ///< place in TraceGenerator::origins()
    std::int32_t number = 0;
    std::optional<std::int32_t> port;
    std::optional<std::u16string> callId;
    std::u16string text;
    bool highlight = false;
    std::optional<std::u16string> note;
};

struct TraceOptions {
    std::uint64_t rows = 0;
    std::uint64_t seed = 1;
    std::size_t textLength = 0;  ///< truncates every text to so many characters; 0 means no limit
};

class TraceGenerator {
public:
    explicit TraceGenerator(const TraceOptions& options);

    /// False after the last one. Reuses the memory of `trace`.
    bool next(Trace& trace);

    const std::vector<TraceOrigin>& origins() const { return origins_; }

private:
    void makeOrigins();
    void stepTime();
    std::size_t pickOrigin();
    void appendText(std::u16string& text);
    void appendLine(std::u16string& text);
    void appendPattern(std::u16string_view pattern, std::u16string& text);
    void appendPlaceholder(char16_t kind, std::u16string& text);

    TraceOptions options_;
    Random random_;
    std::uint64_t made_ = 0;
    std::int64_t second_;  ///< since 1899-12-30
    std::vector<TraceOrigin> origins_;
    std::vector<std::uint32_t> weightsUpTo_;  ///< sums of the origins' frequencies
};

}  // namespace traces
