#include "engine/jet/journal.h"

#include "engine/jet/bytes.h"

#include <array>
#include <chrono>
#include <optional>
#include <random>

namespace jet {
namespace {

constexpr std::uint64_t kMagic = 0x4A454C4C45524F56;  // "VORELLEJ"
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kRecordHead = 16;
constexpr std::size_t kRecordSize = kRecordHead + kPageSize;

/// A few hundred pages at a time.
constexpr std::size_t kBufferSize = 256 * kRecordSize;

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

template <typename T>
void append(std::vector<std::uint8_t>& bytes, T value) {
    const auto* const at = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), at, at + sizeof value);
}

struct Head {
    std::uint32_t pageCount = 0;
    std::uint64_t salt = 0;
    std::uint64_t fingerprint = 0;
};

std::vector<std::uint8_t> encode(const Head& head) {
    std::vector<std::uint8_t> bytes;
    append(bytes, kMagic);
    append(bytes, kVersion);
    append(bytes, head.pageCount);
    append(bytes, head.salt);
    append(bytes, head.fingerprint);
    append(bytes, checksum(head.salt, bytes));
    return bytes;
}

/// Nothing if there is no valid head.
std::optional<Head> readHead(const Storage& journal) {
    std::array<std::uint8_t, Journal::kFirstRecord> stored{};
    if (journal.readAt(0, stored) != stored.size()) return std::nullopt;
    const Bytes bytes{stored};
    const Head head{load<std::uint32_t>(bytes, 12), load<std::uint64_t>(bytes, 16),
                    load<std::uint64_t>(bytes, 24)};
    const auto expected = encode(head);
    if (!std::equal(expected.begin(), expected.end(), stored.begin())) return std::nullopt;
    return head;
}

void replayRecords(const Storage& journal, std::uint64_t salt, std::uint64_t from,
                   const Journal::Use& use) {
    std::vector<std::uint8_t> record(kRecordSize);
    for (std::uint64_t at = from; journal.readAt(at, record) == kRecordSize; at += kRecordSize) {
        const auto head = load<std::uint64_t>(record, 0);
        const Bytes page = Bytes{record}.subspan(kRecordHead);
        if (load<std::uint64_t>(record, 8) != recordChecksum(salt, head, page)) return;
        use(Journal::Kind{static_cast<std::uint32_t>(head >> 32)},
            PageNumber{static_cast<std::uint32_t>(head)}, page);
    }
}

std::uint64_t newSalt() {
    std::random_device device;
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return (std::uint64_t{device()} << 32 | device()) ^ static_cast<std::uint64_t>(now);
}

}  // namespace

Journal::Journal(std::unique_ptr<Storage> file, std::uint32_t pageCount, std::uint64_t fingerprint)
    : file_{std::move(file)}, salt_{newSalt()}, end_{kFirstRecord} {
    file_->writeAt(0, encode({pageCount, salt_, fingerprint}));
}

void Journal::append(Kind kind, PageNumber number, Bytes page) {
    const std::uint64_t head = std::uint64_t{static_cast<std::uint32_t>(kind)} << 32 | raw(number);
    jet::append(buffer_, head);
    jet::append(buffer_, recordChecksum(salt_, head, page));
    buffer_.insert(buffer_.end(), page.begin(), page.end());
    end_ += kRecordSize;
    synced_ = false;
    if (buffer_.size() >= kBufferSize) flush();
}

void Journal::flush() {
    if (buffer_.empty()) return;
    file_->writeAt(end_ - buffer_.size(), buffer_);
    buffer_.clear();
}

void Journal::sync() {
    if (synced_) return;
    flush();
    file_->sync();
    synced_ = true;
}

void Journal::replay(std::uint64_t from, const Use& use) {
    flush();
    replayRecords(*file_, salt_, from, use);
}

void Journal::invalidate() {
    const std::array<std::uint8_t, kFirstRecord> nothing{};
    file_->writeAt(0, nothing);
    file_->sync();
}

std::uint64_t fingerprintOf(const Storage& file) {
    std::array<std::uint8_t, kPageSize> page{};
    file.readAt(0, page);
    return checksum(kMagic, page);
}

void recover(Storage& file) {
    auto journal = file.openJournal();
    if (!journal) return;
    const auto head = readHead(*journal);
    // A journal of another file: one was put in the place of the other.
    if (!head || head->fingerprint != fingerprintOf(file)) return;
    file.lock();
    try {
        replayRecords(*journal, head->salt, Journal::kFirstRecord,
                      [&](Journal::Kind kind, PageNumber number, Bytes page) {
                          if (kind != Journal::Kind::Transaction) return;
                          file.writeAt(std::uint64_t{raw(number)} * kPageSize, page);
                      });
        file.truncate(std::uint64_t{head->pageCount} * kPageSize);
        file.sync();
        journal.reset();
        file.removeJournal();
    } catch (...) {
        file.unlock();
        throw;
    }
    file.unlock();
}

}  // namespace jet
