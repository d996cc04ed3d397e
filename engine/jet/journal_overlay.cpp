#include "engine/jet/journal_overlay.h"

#include <algorithm>
#include <array>

namespace jet {

JournalOverlay::JournalOverlay(const Storage& file, const Storage& journal, const JournalHead& head)
    : file_{file},
      journal_{journal},
      size_{std::uint64_t{head.pageCount} * kPageSize},
      records_{head.records} {
    std::uint64_t at = Journal::kFirstRecord;
    const std::uint64_t end = at + head.records * std::uint64_t{format::journal::kRecordSize};
    replayRecords(journal, head.salt, at, end, [&](Journal::Kind kind, PageNumber number, Bytes) {
        const bool original = kind == Journal::Kind::Transaction && raw(number) < head.pageCount;
        if (original) offsets_[raw(number)] = at + format::journal::kRecordPage;
        at += format::journal::kRecordSize;
    });
    goodRecords_ =
        static_cast<std::uint32_t>((at - Journal::kFirstRecord) / format::journal::kRecordSize);
}

void JournalOverlay::forEachPage(const std::function<void(PageNumber, Bytes)>& use) const {
    std::array<std::uint8_t, kPageSize> page{};
    for (const auto& [number, offset] : offsets_) {
        if (journal_.readAt(offset, page) != page.size()) {
            throw Error{Fault::ReadFailed, "The journal of a change cannot be read."};
        }
        use(PageNumber{number}, page);
    }
}

std::size_t JournalOverlay::readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const {
    if (offset >= size_) return 0;
    buffer = buffer.first(
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), size_ - offset)));
    const std::size_t got = file_.readAt(offset, buffer);
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(got), buffer.end(), std::uint8_t{0});
    const std::uint64_t stop = offset + buffer.size();
    for (auto entry = offsets_.lower_bound(static_cast<std::uint32_t>(offset / kPageSize));
         entry != offsets_.end() && std::uint64_t{entry->first} * kPageSize < stop; ++entry) {
        const std::uint64_t first = std::uint64_t{entry->first} * kPageSize;
        const std::uint64_t from = std::max(first, offset);
        const std::uint64_t to = std::min(first + kPageSize, stop);
        journal_.readAt(entry->second + (from - first),
                        buffer.subspan(static_cast<std::size_t>(from - offset),
                                       static_cast<std::size_t>(to - from)));
    }
    return buffer.size();
}

}  // namespace jet
