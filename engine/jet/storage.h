// Where the pages of a database are stored: a file, memory, a test's faulty disk.
//
//   std::unique_ptr<jet::Storage> storage = jet::openFile(path);
//   storage->readPages(jet::PageNumber{0}, buffer);
//
// Any thread may read, several at once; one thread at a time writes, and nobody reads meanwhile
// (jet::Pager sees to it).
#pragma once

#include "engine/jet/error.h"
#include "engine/jet/format/types.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace jet {

class Storage {
public:
    virtual ~Storage() = default;

    /// Size in bytes at this moment; another program may be appending to the file.
    virtual std::uint64_t size() const = 0;

    /// Reads from byte `offset` on and returns the number of bytes, which is smaller than the
    /// buffer only at the end of the file. Throws Error{ReadFailed}.
    virtual std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const = 0;

    std::uint32_t pageCount() const { return static_cast<std::uint32_t>(size() / kPageSize); }

    /// Fills `buffer`, a whole number of pages long, from page `first` on.
    /// Throws Error: Truncated if the file ends before the buffer does, else ReadFailed.
    void readPages(PageNumber first, std::span<std::uint8_t> buffer) const;

    /// Whether the original engine has the file open somewhere, as the lock file beside it tells.
    virtual bool isOpenElsewhere() const { return false; }

    // ---- Writing. Members after lock() are for the holder of the lock. A read-only storage
    // ---- overrides none of these.

    /// Locks the file exclusively. A file in use is tried again for up to a second.
    /// Throws Error: ReadOnly, InUse, and has no effect then, but that others may have written.
    virtual void lock();

    /// Back to shared reading. Throws Error{ReadFailed} if the file cannot be opened again.
    virtual void unlock() {}

    /// Throws Error: WriteFailed, DiskFull. Writing beyond the end extends the storage.
    virtual void writeAt(std::uint64_t offset, Bytes bytes);

    /// Truncates the storage to `size` bytes. Throws Error{WriteFailed}.
    virtual void truncate(std::uint64_t size);

    /// Returns when everything written is durable. Throws Error{WriteFailed}.
    virtual void sync();

    /// The journal beside this storage, if there is one; it may be read without lock().
    /// Throws Error, whose message names the file, if what is there cannot be read.
    virtual std::unique_ptr<Storage> openJournal() { return nullptr; }

    /// A new, empty journal. Throws Error: JournalInTheWay if there is a file of its name already;
    /// ReadOnly, WriteFailed, DiskFull.
    virtual std::unique_ptr<Storage> createJournal();

    /// The journal's path, for messages.
    virtual std::string journalName() const { return "-journal"; }

    /// Removes the journal. Requires: it is not open. Throws Error{WriteFailed}.
    virtual void removeJournal() {}
};

/// Opens a file for reading, shared with every other program that has it open; to be written it
/// has to be locked. Its journal is the file beside it with "-journal" appended to its name; for a
/// symbolic link, beside the file that it leads to. A file in use is tried again for up to a second.
/// Throws Error: FileNotFound, AccessDenied, InUse or ReadFailed.
/// Paths of more than 260 characters are accepted on Windows too.
std::unique_ptr<Storage> openFile(const std::filesystem::path& path);

/// Whether the lock file of the original engine is beside the file: it exists while a program has the
/// database open.
bool hasLockFile(const std::filesystem::path& path);

/// Creates and opens an empty file. Throws Error{AccessDenied} if it exists or cannot be created.
std::unique_ptr<Storage> createFile(const std::filesystem::path& path);

/// A writable database in memory; so is its journal.
class MemoryStorage : public Storage {
public:
    using Content = std::vector<std::uint8_t>;

    explicit MemoryStorage(Content content)
        : content_{std::make_shared<Content>(std::move(content))} {}

    std::uint64_t size() const override { return content_->size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override;

    void lock() override {}
    void writeAt(std::uint64_t offset, Bytes bytes) override;
    void truncate(std::uint64_t size) override { content_->resize(static_cast<std::size_t>(size)); }
    void sync() override {}
    std::unique_ptr<Storage> openJournal() override;
    std::unique_ptr<Storage> createJournal() override;
    void removeJournal() override { journal_.reset(); }

    const Content& content() const { return *content_; }

private:
    struct Shared {
        explicit Shared(std::shared_ptr<Content> held) : content{std::move(held)} {}
        std::shared_ptr<Content> content;
    };
    explicit MemoryStorage(Shared shared) : content_{std::move(shared.content)} {}

    std::shared_ptr<Content> content_;
    std::shared_ptr<Content> journal_;  ///< null if there is none
};

}  // namespace jet
