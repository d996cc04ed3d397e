// A few pages out of a small fuzz input.
#pragma once

#include "engine/jet/page_cache.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace fuzz {

/// Ends the program if what must hold does not.
inline void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "violated: %s\n", what);
    std::abort();
}

/// Takes values off the front of an input; zeros behind its end.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : rest_{data, size} {}

    template <typename T>
    T next() {
        T value{};
        const std::size_t size = std::min(sizeof value, rest_.size());
        if (size != 0) std::memcpy(&value, rest_.data(), size);
        rest_ = rest_.subspan(size);
        return value;
    }

    jet::Bytes take(std::size_t count) {
        const jet::Bytes taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    jet::Bytes rest() const { return rest_; }

private:
    jet::Bytes rest_;
};

/// Pages whose interesting places, the beginning and the end, are filled from an input: each page
/// takes up to 64 bytes for its beginning and 128 for its end.
class SmallPages {
public:
    SmallPages(Input& input, std::uint32_t pageCount)
        : content_(std::size_t{pageCount} * jet::kPageSize) {
        for (std::uint32_t page = 1; page < pageCount && !input.rest().empty(); ++page) {
            const jet::Bytes front = input.take(64);
            std::copy(front.begin(), front.end(), at(page));
            const jet::Bytes back = input.take(128);
            std::copy(back.begin(), back.end(),
                      at(page + 1) - static_cast<std::ptrdiff_t>(back.size()));
        }
    }

    /// Makes every page one of rows with that owner.
    void setOwner(std::uint32_t owner) {
        for (std::size_t page = jet::kPageSize; page < content_.size(); page += jet::kPageSize) {
            content_[page] = 1;
            std::memcpy(&content_[page + 4], &owner, sizeof owner);
            content_[page + 13] = 0;  // a number of slots that fits
        }
    }

    jet::MemoryStorage storage() && { return jet::MemoryStorage{std::move(content_)}; }

private:
    std::vector<std::uint8_t>::iterator at(std::uint32_t page) {
        return content_.begin() + static_cast<std::ptrdiff_t>(page * jet::kPageSize);
    }

    std::vector<std::uint8_t> content_;
};

inline bool isWithin(jet::Bytes part, jet::Bytes whole) {
    return part.empty() || (part.data() >= whole.data() &&
                            part.data() + part.size() <= whole.data() + whole.size());
}

}  // namespace fuzz
