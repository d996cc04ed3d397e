#include "engine/jet/storage.h"

#include <algorithm>

namespace jet {

void Storage::readPages(PageNumber first, std::span<std::uint8_t> buffer) const {
    const std::size_t got = readAt(std::uint64_t{raw(first)} * kPageSize, buffer);
    if (got < buffer.size()) {
        const auto missing = raw(first) + got / kPageSize;
        throw Error{Fault::Truncated,
                    "The file ends before page " + std::to_string(missing) + ": it is truncated.",
                    PageNumber{static_cast<std::uint32_t>(missing)}};
    }
}

std::size_t MemoryStorage::readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const {
    if (offset >= content_.size()) return 0;
    const auto count = std::min<std::uint64_t>(buffer.size(), content_.size() - offset);
    std::copy_n(content_.begin() + static_cast<std::ptrdiff_t>(offset), count, buffer.begin());
    return static_cast<std::size_t>(count);
}

}  // namespace jet
