#include "engine/jet/collation_weights.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>

namespace jet {
namespace {

// Runs of units that follow each other, parted by blanks; numbers are hex but for steps and counts:
//
//   @4E00       go on with this unit; what is never named has no part in a key
//   4A          a weight of one byte; 2B02: of two
//   4A/0E       a weight with an accent byte
//   8002~3      a weight with a kana flag, 2 or 3; 8002/EE~3 with an accent too
//   6B.6B       several weights; 4A.51/0E0E with accents
//   ^0C         a mark that adds to the accent of the letter before
//   !82         a hidden unit and its code
//   ...+2*5     a run of 5 units; weight, mark or code grows by 2 from unit to unit
//
// Growing weights of two bytes carry at the second byte, which runs from 02 to FF.
constexpr const char* kRuns[] = {
#include "engine/jet/collation_data.inc"
};

constexpr unsigned kSecondBytes = 254;
constexpr unsigned kFirstSecondByte = 2;

std::uint16_t grown(std::uint16_t weight, unsigned by) {
    if (by == 0) return weight;
    const unsigned first = weight >> 8;
    const unsigned second = weight & 0xFFu;
    if (second == 0) return static_cast<std::uint16_t>((first + by) << 8);
    const unsigned place = second - kFirstSecondByte + by;
    return static_cast<std::uint16_t>(((first + place / kSecondBytes) << 8) |
                                      (place % kSecondBytes + kFirstSecondByte));
}

/// One run, taken apart.
struct Run {
    CharacterWeight first;
    Expansion expansion;
    unsigned step = 0;
    unsigned count = 1;
};

class RunReader {
public:
    explicit RunReader(std::string_view text) : text_{text} {}

    bool skipMark(char mark) {
        if (text_.empty() || text_.front() != mark) return false;
        text_.remove_prefix(1);
        return true;
    }

    unsigned number(int base) {
        unsigned value = 0;
        const auto [end, error] =
            std::from_chars(text_.data(), text_.data() + text_.size(), value, base);
        if (error != std::errc{}) throw std::logic_error{"collation data: " + std::string{text_}};
        text_.remove_prefix(static_cast<std::size_t>(end - text_.data()));
        return value;
    }

    Run run() {
        Run run;
        if (skipMark('^')) {
            run.first = {0, WeightKind::Mark, static_cast<std::uint8_t>(number(16))};
        } else if (skipMark('!')) {
            run.first = {0, WeightKind::Hidden, static_cast<std::uint8_t>(number(16))};
        } else {
            letter(run);
        }
        if (skipMark('+')) run.step = number(10);
        if (skipMark('*')) run.count = number(10);
        return run;
    }

private:
    std::uint16_t weight() {
        const unsigned value = number(16);
        return static_cast<std::uint16_t>(value > 0xFF ? value : value << 8);
    }

    void letter(Run& run) {
        Expansion& all = run.expansion;
        do {
            all.weights.at(all.weightCount++) = weight();
        } while (skipMark('.'));
        if (skipMark('/')) accents(all);
        run.first = {all.weights[0], WeightKind::Plain, all.accents[0]};
        if (skipMark('~')) {
            run.first.kind = number(16) == 2 ? WeightKind::Kana2 : WeightKind::Kana3;
        } else if (all.weightCount > 1) {
            run.first.kind = WeightKind::Expanding;
        } else if (all.accentCount > 0) {
            run.first.kind = WeightKind::Accented;
        }
    }

    void accents(Expansion& all) {
        for (;
             text_.size() >= 2 && std::string_view{"+*~"}.find(text_[0]) == std::string_view::npos;
             text_.remove_prefix(2)) {
            std::from_chars(text_.data(), text_.data() + 2, all.accents.at(all.accentCount++), 16);
        }
    }

    std::string_view text_;
};

CharacterWeight unitOfRun(const Run& run, unsigned index) {
    CharacterWeight unit = run.first;
    const unsigned by = run.step * index;
    if (unit.kind == WeightKind::Mark || unit.kind == WeightKind::Hidden) {
        unit.detail = static_cast<std::uint8_t>(unit.detail + by);
    } else if (unit.kind != WeightKind::Expanding) {
        unit.weight = grown(unit.weight, by);
    }
    return unit;
}

}  // namespace

CharacterWeights::CharacterWeights() : units_(65536) {
    std::size_t unit = 0;
    for (std::string_view line : kRuns) {
        while (!line.empty()) {
            const std::string_view token = line.substr(0, line.find(' '));
            line.remove_prefix(std::min(token.size() + 1, line.size()));
            RunReader reader{token};
            if (reader.skipMark('@')) {
                unit = reader.number(16);
                continue;
            }
            Run run = reader.run();
            if (run.first.kind == WeightKind::Expanding) {
                run.first.weight = static_cast<std::uint16_t>(expansions_.size());
                expansions_.push_back(run.expansion);
            }
            for (unsigned i = 0; i < run.count; ++i) units_.at(unit++) = unitOfRun(run, i);
        }
    }
}

const CharacterWeights& CharacterWeights::general() {
    static const CharacterWeights weights;
    return weights;
}

}  // namespace jet
