#include "tests/support/sparse_storage.h"

#include <algorithm>

namespace fixture {

using jet::kPageSize;

std::size_t SparseStorage::readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const {
    if (offset >= size_) return 0;
    buffer = buffer.first(
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), size_ - offset)));
    for (std::size_t done = 0; done < buffer.size();) {
        const std::uint64_t at = offset + done;
        const auto start = static_cast<std::size_t>(at % kPageSize);
        const auto part = buffer.subspan(done, std::min(kPageSize - start, buffer.size() - done));
        const auto page = pages_.find(at / kPageSize);
        if (page == pages_.end()) {
            std::ranges::fill(part, std::uint8_t{0});
        } else {
            std::ranges::copy(std::span{page->second}.subspan(start, part.size()), part.begin());
        }
        done += part.size();
    }
    return buffer.size();
}

void SparseStorage::writeAt(std::uint64_t offset, jet::Bytes bytes) {
    for (; !bytes.empty(); bytes = bytes.subspan(kPageSize), offset += kPageSize) {
        const jet::Bytes page = bytes.first(kPageSize);
        const bool zeros = std::ranges::all_of(page, [](auto byte) { return byte == 0; });
        if (zeros) {
            pages_.erase(offset / kPageSize);
        } else {
            pages_[offset / kPageSize].assign(page.begin(), page.end());
        }
        size_ = std::max(size_, offset + kPageSize);
    }
}

void SparseStorage::truncate(std::uint64_t size) {
    pages_.erase(pages_.lower_bound(size / kPageSize), pages_.end());
    size_ = size;
}

}  // namespace fixture
