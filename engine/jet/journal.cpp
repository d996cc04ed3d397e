#include "engine/jet/journal.h"

#include "engine/jet/bytes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <utility>

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

struct Head {
    std::uint32_t pageCount = 0;
    std::uint64_t salt = 0;
    std::uint64_t fingerprint = 0;
};

std::vector<std::uint8_t> encode(const Head& head) {
    std::vector<std::uint8_t> bytes(layout::kHeadSize);
    store(bytes, layout::kMagic, layout::kMagicValue);
    store(bytes, layout::kVersion, layout::kVersionValue);
    store(bytes, layout::kPageCount, head.pageCount);
    store(bytes, layout::kSalt, head.salt);
    store(bytes, layout::kFingerprint, head.fingerprint);
    const Bytes checked = Bytes{bytes}.first(layout::kChecksum.offset);
    store(bytes, layout::kChecksum, checksum(head.salt, checked));
    return bytes;
}

/// Nothing if there is no valid head.
std::optional<Head> readHead(const Storage& journal) {
    std::array<std::uint8_t, Journal::kFirstRecord> stored{};
    if (journal.readAt(0, stored) != stored.size()) return std::nullopt;
    const Bytes bytes{stored};
    const Head head{load(bytes, layout::kPageCount), load(bytes, layout::kSalt),
                    load(bytes, layout::kFingerprint)};
    const auto expected = encode(head);
    if (!std::equal(expected.begin(), expected.end(), stored.begin())) return std::nullopt;
    return head;
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

/// Uses the records from `from` to before `end`, up to the first that is damaged. That is where a
/// crash cut the journal off: a page is overwritten only after its record and all before it are
/// safe, so whatever follows belongs to pages that have not been overwritten.
/// Returns where it stopped.
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

/// The pages as they were before the transaction, of all that the journal has.
void replayTransaction(const Storage& journal, std::uint64_t salt,
                       const std::function<void(PageNumber, Bytes)>& use) {
    replayRecords(journal, salt, Journal::kFirstRecord, journal.size(),
                  [&](Journal::Kind kind, PageNumber number, Bytes page) {
                      if (kind == Journal::Kind::Transaction) use(number, page);
                  });
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

using PageImages = std::map<std::uint32_t, std::vector<std::uint8_t>>;

/// `images` replace the file's own pages.
std::uint64_t fingerprint(const Storage& file, std::uint32_t pageCount, const PageImages& images) {
    std::uint64_t sum = layout::kMagicValue ^ pageCount;
    std::vector<std::uint8_t> page(kPageSize);
    for (const std::uint32_t number : samplePages(pageCount)) {
        const auto image = images.find(number);
        if (image == images.end()) {
            std::fill(page.begin(), page.end(), std::uint8_t{0});
            file.readAt(std::uint64_t{number} * kPageSize, page);
        }
        sum = checksum(sum, image == images.end() ? page : image->second);
    }
    return sum;
}

/// Whether the file, with the journal's pages put back, is the one that the journal was made of.
bool belongsTo(const Storage& journal, const Head& head, const Storage& file) {
    const std::set<std::uint32_t> samples = samplePages(head.pageCount);
    PageImages images;
    replayTransaction(journal, head.salt, [&](PageNumber number, Bytes page) {
        if (samples.contains(raw(number))) images[raw(number)].assign(page.begin(), page.end());
    });
    return fingerprint(file, head.pageCount, images) == head.fingerprint;
}

struct HotJournal {
    std::unique_ptr<Storage> file;
    Head head;
};

std::optional<HotJournal> findHotJournal(Storage& file) {
    auto journal = file.openJournal();
    if (!journal) return std::nullopt;
    const auto head = readHead(*journal);
    if (!head || !belongsTo(*journal, *head, file)) return std::nullopt;
    return HotJournal{std::move(journal), *head};
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
    end_ += layout::kRecordSize;
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
    // What is not stored yet is used from memory: a full disk must not be in the way.
    const std::vector<std::uint8_t> unwritten = buffer_;
    const std::uint64_t stored = end_ - unwritten.size();
    if (from < stored && replayRecords(*file_, salt_, from, stored, use) != stored) {
        throw Error{Fault::ReadFailed, "The journal of a change cannot be read."};
    }
    for (std::uint64_t at = std::max(from, stored); at < end_; at += layout::kRecordSize) {
        replayRecord(
            Bytes{unwritten}.subspan(static_cast<std::size_t>(at - stored), layout::kRecordSize),
            salt_, use);
    }
}

void Journal::invalidate() {
    const std::array<std::uint8_t, kFirstRecord> nothing{};
    file_->writeAt(0, nothing);
    file_->sync();
}

std::uint64_t fingerprintOf(const Storage& file, std::uint32_t pageCount) {
    return fingerprint(file, pageCount, {});
}

void recover(Storage& file) {
    if (!findHotJournal(file)) return;
    file.lock();
    try {
        recoverLocked(file);
    } catch (...) {
        file.unlock();
        throw;
    }
    file.unlock();
}

void recoverLocked(Storage& file) {
    auto journal = findHotJournal(file);
    if (!journal) return;
    replayTransaction(*journal->file, journal->head.salt, [&](PageNumber number, Bytes page) {
        file.writeAt(std::uint64_t{raw(number)} * kPageSize, page);
    });
    file.truncate(std::uint64_t{journal->head.pageCount} * kPageSize);
    file.sync();
    journal.reset();
    file.removeJournal();
}

}  // namespace jet
