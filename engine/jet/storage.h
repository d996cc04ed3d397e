// Where the pages of a database stand: a file, a piece of memory, a test's faulty disk.
//
//   std::unique_ptr<jet::Storage> storage = jet::openFile(path);
//   storage->readPages(jet::PageNumber{0}, buffer);
//
// Implementations are safe to read from several threads at once.
#pragma once

#include "engine/jet/error.h"
#include "engine/jet/types.h"

#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace jet {

class Storage {
public:
    virtual ~Storage() = default;

    /// Size in bytes at this moment; another program may be appending to the file.
    virtual std::uint64_t size() const = 0;

    /// Reads from byte `offset` on and returns how many bytes there were: fewer than asked for
    /// only at the end of the file. Throws Error{ReadFailed}.
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const = 0;

    std::uint32_t pageCount() const { return static_cast<std::uint32_t>(size() / kPageSize); }

    /// Fills `buffer`, a whole number of pages long, from page `first` on.
    /// Throws Error: Truncated if the file ends before the buffer does, else ReadFailed.
    void readPages(PageNumber first, std::span<std::uint8_t> buffer) const;
};

/// Opens a file for reading, shared with every other program that has it open.
/// Throws Error: FileNotFound, AccessDenied, InUse or ReadFailed.
/// Paths of more than 260 characters are accepted on Windows too.
std::unique_ptr<Storage> openFile(const std::filesystem::path& path);

/// A database held in memory.
class MemoryStorage : public Storage {
public:
    explicit MemoryStorage(std::vector<std::uint8_t> content) : content_{std::move(content)} {}

    std::uint64_t size() const override { return content_.size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override;

private:
    std::vector<std::uint8_t> content_;
};

}  // namespace jet
