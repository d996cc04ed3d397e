// Which rows have a text that matches a LIKE pattern. The file is searched in large ranges and the
// result cached with one bit a row, so that the next search for the same text only looks at bits.
//
//   ado::TextMatches matches{rows, 0, u"*timeout*"};
//   const auto found = matches.find(order, position, count, ado::adSearchForward, stop);
//
// One thread at a time, which need not be the rows' owner: it reads the file on its own.
#pragma once

#include "engine/ado/scanned_rows.h"
#include "engine/ado/sort_order.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ado {

class TextMatches {
public:
    /// `pattern` is a LIKE pattern, `column` a text column. Throws sql::Error for a bad pattern.
    TextMatches(std::shared_ptr<const ScannedRows> rows, std::size_t column,
                std::u16string pattern);
    ~TextMatches();
    TextMatches(const TextMatches&) = delete;
    TextMatches& operator=(const TextMatches&) = delete;

    bool isFor(std::size_t column, std::u16string_view pattern) const {
        return column == column_ && pattern == pattern_;
    }

    /// The first position from `position` on, upwards or downwards, whose row matches; -1 or
    /// `count` if there is none. The row is read again before it is returned: another program may
    /// have deleted it. Once any thread sets `stop`, it returns soon, with an undefined position.
    /// Throws jet::Error for failures of the storage.
    std::int64_t find(const RowOrder& order, std::int64_t position, std::uint32_t count,
                      int direction, const std::atomic<bool>& stop);

private:
    class Searcher;
    class Team;

    /// Rows that are searched together, and the number of words for their bits.
    static constexpr std::uint32_t kGroupRows = RowStore::kGroupRows;
    static constexpr std::size_t kGroupWords = kGroupRows / 64;

    void prepare(std::uint32_t count);
    bool isKnown(std::uint32_t row) const;
    bool hasBit(std::uint32_t row) const { return (bits_[row / 64] >> (row % 64)) & 1u; }
    void searchStretch(std::uint32_t row, bool onward, std::size_t groups,
                       const std::atomic<bool>& stop);
    void searchGroups(std::size_t first, std::size_t end, const std::atomic<bool>& stop);
    void searchGroup(std::size_t group, Searcher& searcher);
    Searcher& searcher(std::size_t index);

    const std::shared_ptr<const ScannedRows> rows_;
    const std::size_t column_;
    const std::u16string pattern_;

    std::uint32_t count_ = 0;              ///< rows of the current search
    std::vector<std::uint64_t> bits_;      ///< set: the row matches
    std::vector<std::uint16_t> searched_;  ///< rows of each group whose bits are valid
    std::vector<std::unique_ptr<Searcher>> searchers_;
    std::unique_ptr<Searcher> single_;  ///< looks at rows one by one
};

}  // namespace ado
