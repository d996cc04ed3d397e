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

bool hasLockFile(const std::filesystem::path& path) {
    std::filesystem::path lockFile = path;
    lockFile.replace_extension(".ldb");
    std::error_code ignored;
    return std::filesystem::exists(lockFile, ignored);
}

void Storage::lock() { throw Error{Fault::ReadOnly, "The database is open for reading only."}; }

void Storage::writeAt(std::uint64_t, Bytes) { Storage::lock(); }

void Storage::truncate(std::uint64_t) { Storage::lock(); }

void Storage::sync() { Storage::lock(); }

std::unique_ptr<Storage> Storage::createJournal() {
    throw Error{Fault::ReadOnly, "The database is open for reading only."};
}

std::size_t MemoryStorage::readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const {
    if (offset >= content_->size()) return 0;
    const auto count = std::min<std::uint64_t>(buffer.size(), content_->size() - offset);
    std::copy_n(content_->begin() + static_cast<std::ptrdiff_t>(offset), count, buffer.begin());
    return static_cast<std::size_t>(count);
}

void MemoryStorage::writeAt(std::uint64_t offset, Bytes bytes) {
    if (offset + bytes.size() > content_->size())
        content_->resize(static_cast<std::size_t>(offset) + bytes.size());
    std::copy(bytes.begin(), bytes.end(), content_->begin() + static_cast<std::ptrdiff_t>(offset));
}

std::unique_ptr<Storage> MemoryStorage::openJournal() {
    if (!journal_) return nullptr;
    return std::unique_ptr<Storage>{new MemoryStorage{Shared{journal_}}};
}

std::unique_ptr<Storage> MemoryStorage::createJournal() {
    if (journal_) throw Error{Fault::JournalInTheWay, "There is a journal already."};
    journal_ = std::make_shared<Content>();
    return openJournal();
}

}  // namespace jet
