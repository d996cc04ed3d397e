// A file of any size of which only the pages that are not all zeros take memory.
//
//   auto storage = std::make_unique<fixture::SparseStorage>(jet::format::page::kMaxCount - 3);
//
// Belongs to one thread.
#pragma once

#include "engine/jet/storage.h"

#include <map>

namespace fixture {

class SparseStorage : public jet::Storage {
public:
    explicit SparseStorage(std::uint32_t pageCount)
        : size_{std::uint64_t{pageCount} * jet::kPageSize} {}

    /// A file with that content. Requires: a whole number of pages.
    explicit SparseStorage(const std::vector<std::uint8_t>& content) : SparseStorage{0} {
        SparseStorage::writeAt(0, content);
    }

    std::uint64_t size() const override { return size_; }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override;

    void lock() override {}
    /// Requires: whole pages, as all writers of databases write.
    void writeAt(std::uint64_t offset, jet::Bytes bytes) override;
    void truncate(std::uint64_t size) override;
    void sync() override {}
    std::unique_ptr<Storage> openJournal() override { return journal_.openJournal(); }
    std::unique_ptr<Storage> createJournal() override { return journal_.createJournal(); }
    void removeJournal() override { journal_.removeJournal(); }

private:
    std::uint64_t size_;
    std::map<std::uint64_t, std::vector<std::uint8_t>> pages_;   ///< by number
    jet::MemoryStorage journal_{jet::MemoryStorage::Content{}};  ///< for its journal alone
};

}  // namespace fixture
