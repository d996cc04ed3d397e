// What could not be read of a damaged file: how much, and the first reasons.
//
//   jet::Losses losses;
//   losses.add({jet::Loss::Kind::Pages, number, jet::Loss::kNoSlot, "a data page was expected"});
//   if (losses.any()) show(losses.summary());
//
// Losses stand beside the rows that could be read; they are not an error. Plain values; any thread.
#pragma once

#include "engine/jet/format/types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace jet {

/// One thing that could not be read.
struct Loss {
    enum class Kind : std::uint8_t {
        Rows,          ///< with all its fields
        Pages,         ///< with all its rows
        Values,        ///< one field of a row that is there
        MissingPages,  ///< behind the end of the file
        Tables,        ///< an entry of the catalog, or the definition that it leads to
        Definitions,   ///< a part of a table's definition: a column, a name, an index
        Hints,         ///< nothing that is known to be lost, but a contradiction that points to it
    };

    static constexpr int kNoSlot = -1;

    Kind kind = Kind::Rows;
    PageNumber page = kNoPage;  ///< where it is; kNoPage if that is not known
    int slot = kNoSlot;         ///< of a row or a value: its place on the page
    std::string why;            ///< the reason, UTF-8

    friend bool operator==(const Loss&, const Loss&) = default;
};

/// "row 3 of page 17: a record is cut short"
std::string toText(const Loss& loss);

/// Sums of losses.
struct Losses {
    /// The first reasons are kept; later losses are only counted.
    static constexpr std::size_t kMaxReasons = 10;

    std::uint64_t rows = 0;
    std::uint64_t pages = 0;
    std::uint64_t values = 0;
    std::uint64_t missingPages = 0;
    std::uint64_t tables = 0;
    std::uint64_t definitions = 0;
    std::uint64_t hints = 0;
    std::vector<Loss> reasons;

    /// Whether anything is lost. Hints are no losses.
    bool any() const { return (rows | pages | values | missingPages | tables | definitions) != 0; }

    /// Counts `count` losses for the same reason.
    void add(Loss loss, std::uint64_t count = 1);

    Losses& operator+=(const Losses& other);

    /// What was lost, in one line without an end: "2 rows, 1 page and 3 values"; "nothing".
    std::string summary() const;

    friend bool operator==(const Losses&, const Losses&) = default;
};

}  // namespace jet
