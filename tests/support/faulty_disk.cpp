#include "tests/support/faulty_disk.h"

#include <algorithm>

namespace fixture {

/// One of the two files, as a storage.
class FaultyDisk::View : public jet::Storage {
public:
    View(FaultyDisk& disk, bool journal) : disk_{disk}, journal_{journal} {}

    std::uint64_t size() const override {
        disk_.requirePower();
        return file().seen.size();
    }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        disk_.requirePower();
        const Bytes& content = file().seen;
        if (offset >= content.size()) return 0;
        const auto count = std::min<std::uint64_t>(buffer.size(), content.size() - offset);
        std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(offset), count, buffer.begin());
        return static_cast<std::size_t>(count);
    }

    void lock() override {
        disk_.requirePower();
        if (disk_.lockFault_) throw jet::Error{*disk_.lockFault_, "The disk refuses that."};
    }

    void writeAt(std::uint64_t offset, jet::Bytes bytes) override {
        change({.offset = offset, .bytes = {bytes.begin(), bytes.end()}});
    }

    void truncate(std::uint64_t size) override { change({.newSize = size}); }

    void sync() override {
        disk_.failOnce();
        disk_.count();
        file().safe = file().seen;
        file().pending.clear();
        if (journal_) disk_.journalIsSafe_ = true;
    }

    std::unique_ptr<Storage> openJournal() override {
        disk_.requirePower();
        if (!disk_.journal_) return nullptr;
        return std::make_unique<View>(disk_, true);
    }

    std::unique_ptr<Storage> createJournal() override {
        disk_.failOnce();
        disk_.count();
        if (disk_.journal_) throw jet::Error{jet::Fault::JournalInTheWay, "It is there already."};
        disk_.journal_.emplace(Bytes{});
        disk_.journalIsSafe_ = false;
        return std::make_unique<View>(disk_, true);
    }

    void removeJournal() override {
        disk_.failOnce();
        disk_.count();
        disk_.journal_.reset();
    }

private:
    File& file() const { return journal_ ? *disk_.journal_ : disk_.database_; }

    void change(Change change) {
        disk_.failOnce();
        disk_.requireRoom(journal_, change);
        disk_.pendingOf(journal_, change);  // the operation that fails may arrive in part
        disk_.count();
        apply(change, file().seen);
    }

    FaultyDisk& disk_;
    bool journal_;
};

std::unique_ptr<jet::Storage> FaultyDisk::open() { return std::make_unique<View>(*this, false); }

void FaultyDisk::pendingOf(bool journal, const Change& change) {
    if (failed_) return;
    (journal ? *journal_ : database_).pending.push_back(change);
}

void FaultyDisk::count() {
    if (failed_ || count_ >= limit_) {
        failed_ = true;
        throw jet::Error{jet::Fault::WriteFailed, "The power has failed."};
    }
    ++count_;
}

void FaultyDisk::failOnce() {
    if (!single_ || count_ != single_->operation) return;
    const jet::Fault fault = single_->fault;
    single_.reset();
    ++count_;
    throw jet::Error{fault, "The disk fails, once."};
}

void FaultyDisk::requireRoom(bool journal, const Change& change) const {
    const std::uint64_t size = journal ? journal_->seen.size() : database_.seen.size();
    const std::uint64_t end = change.newSize.value_or(change.offset + change.bytes.size());
    if (end > size && used() - size + end > room_) {
        throw jet::Error{jet::Fault::DiskFull, "The disk is full."};
    }
}

void FaultyDisk::requirePower() const {
    if (failed_) throw jet::Error{jet::Fault::ReadFailed, "The power has failed."};
}

void FaultyDisk::apply(const Change& change, Bytes& content) {
    if (change.newSize) {
        content.resize(*change.newSize);
        return;
    }
    const std::uint64_t end = change.offset + change.bytes.size();
    if (end > content.size()) content.resize(end);
    std::ranges::copy(change.bytes, content.begin() + static_cast<std::ptrdiff_t>(change.offset));
}

FaultyDisk::Bytes FaultyDisk::survivor(const File& file, Survival survival, Random& random) {
    Bytes content = file.safe;
    for (std::size_t i = 0; i < file.pending.size(); ++i) {
        Change change = file.pending[i];
        const bool last = i + 1 == file.pending.size();
        const bool torn = survival == Survival::Torn && last && !change.newSize;
        if (survival == Survival::None) continue;
        if (survival != Survival::All && !torn && random.below(2) == 0) continue;
        // A disk writes whole sectors.
        constexpr std::size_t kSector = 512;
        if (torn) {
            const auto sectors = static_cast<std::uint32_t>(change.bytes.size() / kSector);
            change.bytes.resize(random.below(sectors + 1) * kSector);
        }
        apply(change, content);
    }
    return content;
}

FaultyDisk FaultyDisk::restarted(Survival survival, Random& random) const {
    FaultyDisk disk{survivor(database_, survival, random)};
    if (journal_ && (journalIsSafe_ || survival != Survival::None)) {
        disk.journal_.emplace(survivor(*journal_, survival, random));
    }
    return disk;
}

}  // namespace fixture
