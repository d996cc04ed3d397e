#include "engine/ado/text_matches.h"

#include "engine/ado/constants.h"
#include "engine/sql/like/stored_like.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace ado {
namespace {

/// So many rows of a sorted recordset are looked at one by one, for a match that is near.
constexpr int kFirstRows = 200;

/// In the order of the fetch, stretches of groups grow up to so many.
constexpr std::size_t kMaxStretch = 256;

/// From so many groups on, threads share the work.
constexpr std::size_t kWorthThreads = 32;
constexpr std::size_t kMaxThreads = 4;

/// Groups that a thread takes at a time: some megabytes of the file.
constexpr std::size_t kTaken = 8;

std::size_t threadCount() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMaxThreads);
}

}  // namespace

/// One thread's hands on the file.
class TextMatches::Searcher {
public:
    Searcher(const ScannedRows& rows, std::size_t column, std::u16string_view pattern,
             FieldReader::Reading reading)
        : store_{rows.store()},
          lostFields_{rows.lostFields()},
          column_{column},
          like_{sql::LikePattern{pattern}},
          reader_{rows.sharedTable(), reading} {}

    bool matches(std::uint32_t row) {
        const std::size_t place = row % kGroupRows;
        return matchesAt(store_.packed(row, column_), store_.packedIds(row), place);
    }

    /// Sets the bits of the rows that match, from `begin` to `end`, in the words of their group.
    void search(std::uint32_t begin, std::uint32_t end, std::uint64_t* words) {
        if (begin == end) return;
        // The group that has the last row has all rows before it, and stays as it is.
        const PackedColumn& packed = store_.packed(end - 1, column_);
        const PackedColumn& ids = store_.packedIds(end - 1);
        for (std::size_t place = begin % kGroupRows; begin < end; ++begin, ++place) {
            const std::uint64_t found = matchesAt(packed, ids, place) ? 1 : 0;
            words[place / 64] |= found << (place % 64);
        }
    }

private:
    enum class Known : std::uint8_t { Unknown, Matches, DoesNot };

    bool matchesAt(const PackedColumn& packed, const PackedColumn& ids, std::size_t place) {
        if (packed.unit() == Unit::None) {
            return matchesInFile(
                jet::RowId::fromPacked(static_cast<std::uint32_t>(ids.whole(place))));
        }
        return !packed.isNull(place) &&
               matchesCode(static_cast<std::uint32_t>(packed.whole(place)));
    }

    bool matchesInFile(jet::RowId row) {
        const auto text = reader_.storedText(row, store_.stored(column_));
        if (const std::string* const why = reader_.damage()) {
            lostFields_.add(row, store_.stored(column_), *why);
        }
        return text && like_.matches(*text);
    }

    bool matchesCode(std::uint32_t code) {
        if (code >= byCode_.size()) byCode_.resize(code + std::size_t{1}, Known::Unknown);
        if (byCode_[code] == Known::Unknown) {
            const bool matches = like_.matches(store_.dictionary(column_)->stored(code));
            byCode_[code] = matches ? Known::Matches : Known::DoesNot;
        }
        return byCode_[code] == Known::Matches;
    }

    const RowStore& store_;
    LostFields& lostFields_;
    const std::size_t column_;
    sql::StoredLike like_;
    FieldReader reader_;
    std::vector<Known> byCode_;
};

TextMatches::TextMatches(std::shared_ptr<const ScannedRows> rows, std::size_t column,
                         std::u16string pattern)
    : rows_{std::move(rows)},
      column_{column},
      pattern_{std::move(pattern)},
      single_{std::make_unique<Searcher>(*rows_, column_, pattern_, FieldReader::Reading::AnyRow)} {
}

TextMatches::~TextMatches() = default;

std::int64_t TextMatches::find(const RowOrder& order, std::int64_t position, std::uint32_t count,
                               int direction, const std::atomic<bool>& stop) {
    prepare(count);
    const bool onward = order.isReversed() == (direction == adSearchBackward);
    std::size_t stretch = 1;
    for (int seen = 0; position >= 0 && position < count && !stop; position += direction) {
        const std::uint32_t row = order.rowAt(static_cast<std::uint32_t>(position));
        if (!isKnown(row) && order.isOfFetch()) {
            searchStretch(row, onward, stretch, stop);
            stretch = std::min(2 * stretch, kMaxStretch);
        } else if (!isKnown(row) && seen < kFirstRows) {
            ++seen;
            if (single_->matches(row)) return position;
            continue;
        } else if (!isKnown(row)) {
            searchGroups(0, searched_.size(), stop);
        }
        if (hasBit(row) && single_->matches(row)) return position;
    }
    return position;
}

void TextMatches::prepare(std::uint32_t count) {
    count_ = count;
    const std::size_t groups = (std::size_t{count} + kGroupRows - 1) / kGroupRows;
    if (groups <= searched_.size()) return;
    searched_.resize(groups);
    bits_.resize(groups * kGroupWords);
}

bool TextMatches::isKnown(std::uint32_t row) const {
    return row % kGroupRows < searched_[row / kGroupRows];
}

/// The group of the row and those that come next.
void TextMatches::searchStretch(std::uint32_t row, bool onward, std::size_t groups,
                                const std::atomic<bool>& stop) {
    const std::size_t group = row / kGroupRows;
    if (onward) {
        searchGroups(group, std::min(group + groups, searched_.size()), stop);
    } else {
        searchGroups(group + 1 - std::min(groups, group + 1), group + 1, stop);
    }
}

TextMatches::Searcher& TextMatches::searcher(std::size_t index) {
    while (searchers_.size() <= index) {
        searchers_.push_back(
            std::make_unique<Searcher>(*rows_, column_, pattern_, FieldReader::Reading::InOrder));
    }
    return *searchers_[index];
}

/// Threads that take groups as long as there are any; the first failure ends it for all, and so
/// does the wish to stop.
class TextMatches::Team {
public:
    Team(TextMatches& matches, std::size_t first, std::size_t end, const std::atomic<bool>& stop)
        : matches_{matches}, next_{first}, end_{end}, stop_{stop} {}

    void run(std::size_t threads) {
        for (std::size_t i = 0; i < threads; ++i) matches_.searcher(i);
        std::vector<std::thread> helpers;
        try {
            for (std::size_t i = 1; i < threads; ++i) helpers.emplace_back([this, i] { work(i); });
        } catch (const std::system_error&) {
            // Fewer hands do it too.
        }
        work(0);
        for (std::thread& helper : helpers) helper.join();
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    void work(std::size_t index) {
        try {
            for (std::size_t first = 0; (first = next_.fetch_add(kTaken)) < end_;) {
                const std::size_t end = std::min(first + kTaken, end_);
                for (std::size_t group = first; group < end && !stop_; ++group) {
                    matches_.searchGroup(group, *matches_.searchers_[index]);
                }
            }
        } catch (...) {
            next_ = end_;
            const std::lock_guard lock{mutex_};
            failure_ = std::current_exception();
        }
    }

    TextMatches& matches_;
    std::atomic<std::size_t> next_;
    const std::size_t end_;
    const std::atomic<bool>& stop_;
    std::mutex mutex_;
    std::exception_ptr failure_;  ///< guarded by mutex_
};

void TextMatches::searchGroups(std::size_t first, std::size_t end, const std::atomic<bool>& stop) {
    Team{*this, first, end, stop}.run(end - first < kWorthThreads ? 1 : threadCount());
}

/// The thread that searches a group owns its words.
void TextMatches::searchGroup(std::size_t group, Searcher& searcher) {
    const auto begin = static_cast<std::uint32_t>(group * kGroupRows);
    const std::uint32_t end = std::min(begin + kGroupRows, count_);
    searcher.search(begin + searched_[group], end, &bits_[group * kGroupWords]);
    searched_[group] = static_cast<std::uint16_t>(end - begin);
}

}  // namespace ado
