#include "engine/jet/journal.h"

#include "engine/jet/bytes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <random>
#include <set>

namespace jet {
namespace {

namespace layout = format::journal;

/// A few hundred pages at a time.
constexpr std::size_t kBufferSize = 256 * layout::kRecordSize;

/// Four independent chains keep the multiplier busy; a page takes a fraction of a microsecond.
std::uint64_t checksum(std::uint64_t seed, Bytes bytes) {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    std::array<std::uint64_t, 4> lanes{seed, ~seed, seed + kFactor, seed ^ kFactor};
    for (std::size_t at = 0; at + 8 <= bytes.size(); at += 8) {
        std::uint64_t& lane = lanes[(at / 8) % 4];
        lane = (lane ^ load<std::uint64_t>(bytes, at)) * kFactor;
        lane ^= lane >> 29;
    }
    std::uint64_t sum = 0;
    for (const std::uint64_t lane : lanes) sum = (sum ^ lane) * kFactor + (sum >> 31);
    return sum;
}

std::uint64_t recordChecksum(std::uint64_t salt, std::uint64_t head, Bytes page) {
    return checksum(salt ^ (head * 0xD6E8FEB86659FD93), page);
}

std::vector<std::uint8_t> encode(const JournalHead& head) {
    std::vector<std::uint8_t> bytes(layout::kHeadSize);
    store(bytes, layout::kMagic, layout::kMagicValue);
    store(bytes, layout::kVersion, layout::kVersionValue);
    store(bytes, layout::kPageCount, head.pageCount);
    store(bytes, layout::kSalt, head.salt);
    store(bytes, layout::kFingerprint, head.fingerprint);
    store(bytes, layout::kRecordCount, head.records);
    const Bytes checked = Bytes{bytes}.first(layout::kChecksum.offset);
    store(bytes, layout::kChecksum, checksum(head.salt, checked));
    return bytes;
}

/// Uses the record if its checksum is right.
bool replayRecord(Bytes record, std::uint64_t salt, const Journal::Use& use) {
    const std::uint64_t head = load(record, layout::kRecordHead);
    const Bytes page = record.subspan(layout::kRecordPage);
    if (load(record, layout::kRecordChecksum) != recordChecksum(salt, head, page)) return false;
    use(Journal::Kind{static_cast<std::uint32_t>(head >> 32)},
        PageNumber{static_cast<std::uint32_t>(head)}, page);
    return true;
}

/// The pages that a fingerprint is made of: the header and some that are spread over the file.
std::set<std::uint32_t> samplePages(std::uint32_t pageCount) {
    constexpr std::uint64_t kSteps = 32;
    std::set<std::uint32_t> numbers;
    for (std::uint64_t i = 0; i <= kSteps && pageCount != 0; ++i) {
        numbers.insert(static_cast<std::uint32_t>(i * (pageCount - 1) / kSteps));
    }
    return numbers;
}

std::uint64_t newSalt() {
    std::random_device device;
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return (std::uint64_t{device()} << 32 | device()) ^ static_cast<std::uint64_t>(now);
}

}  // namespace

std::optional<JournalHead> readJournalHead(const Storage& file) {
    std::array<std::uint8_t, layout::kHeadSize> stored{};
    if (file.readAt(0, stored) != stored.size()) return std::nullopt;
    const Bytes bytes{stored};
    const JournalHead head{.pageCount = load(bytes, layout::kPageCount),
                           .records = load(bytes, layout::kRecordCount),
                           .salt = load(bytes, layout::kSalt),
                           .fingerprint = load(bytes, layout::kFingerprint)};
    const auto expected = encode(head);
    if (!std::equal(expected.begin(), expected.end(), stored.begin())) return std::nullopt;
    return head;
}

std::uint64_t replayRecords(const Storage& journal, std::uint64_t salt, std::uint64_t from,
                            std::uint64_t end, const Journal::Use& use) {
    std::vector<std::uint8_t> record(layout::kRecordSize);
    std::uint64_t at = from;
    while (at < end && journal.readAt(at, record) == layout::kRecordSize &&
           replayRecord(record, salt, use)) {
        at += layout::kRecordSize;
    }
    return at;
}

Journal::Journal(std::unique_ptr<Storage> file, std::uint32_t pageCount, std::uint64_t fingerprint)
    : file_{std::move(file)},
      head_{.pageCount = pageCount, .salt = newSalt(), .fingerprint = fingerprint} {
    writeHead(0);
}

void Journal::append(Kind kind, PageNumber number, Bytes page) {
    const std::uint64_t head = std::uint64_t{static_cast<std::uint32_t>(kind)} << 32 | raw(number);
    jet::append(buffer_, head);
    jet::append(buffer_, recordChecksum(head_.salt, head, page));
    buffer_.insert(buffer_.end(), page.begin(), page.end());
    end_ += layout::kRecordSize;
    synced_ = false;
    if (buffer_.size() >= kBufferSize) flush();
}

void Journal::flush() {
    if (buffer_.empty()) return;
    file_->writeAt(end_ - buffer_.size(), buffer_);
    buffer_.clear();
}

/// Two syncs: a head that counted records which are not durable could not be told from a journal
/// that somebody has cut off.
void Journal::sync() {
    if (synced_) return;
    flush();
    file_->sync();
    writeHead((end_ - kFirstRecord) / layout::kRecordSize);
    synced_ = true;
}

void Journal::writeHead(std::uint64_t records) {
    head_.records = static_cast<std::uint32_t>(records);
    file_->writeAt(0, encode(head_));
    file_->sync();
}

void Journal::replay(std::uint64_t from, const Use& use) {
    // What is not stored yet is used from memory: a full disk must not be in the way.
    const std::vector<std::uint8_t> unwritten = buffer_;
    const std::uint64_t stored = end_ - unwritten.size();
    if (from < stored && replayRecords(*file_, head_.salt, from, stored, use) != stored) {
        throw Error{Fault::ReadFailed, "The journal of a change cannot be read."};
    }
    for (std::uint64_t at = std::max(from, stored); at < end_; at += layout::kRecordSize) {
        replayRecord(
            Bytes{unwritten}.subspan(static_cast<std::size_t>(at - stored), layout::kRecordSize),
            head_.salt, use);
    }
}

void Journal::invalidate() { writeHead(0); }

std::uint64_t fingerprintOf(const Storage& file, std::uint32_t pageCount) {
    std::uint64_t sum = layout::kMagicValue ^ pageCount;
    std::vector<std::uint8_t> page(kPageSize);
    for (const std::uint32_t number : samplePages(pageCount)) {
        std::fill(page.begin(), page.end(), std::uint8_t{0});
        file.readAt(std::uint64_t{number} * kPageSize, page);
        sum = checksum(sum, page);
    }
    return sum;
}

}  // namespace jet
