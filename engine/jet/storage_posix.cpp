// Files through the POSIX interface.
#ifndef _WIN32

#include "engine/jet/storage.h"

#include "engine/jet/busy_wait.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace jet {
namespace {

[[noreturn]] void throwSystem(Fault fault, const std::string& what, int code) {
    throw Error{fault, what + ": " + std::strerror(code) + "."};
}

Fault faultOf(int code) {
    switch (code) {
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
            return Fault::FileNotFound;
        case EACCES:
        case EPERM:
        case EEXIST:
            return Fault::AccessDenied;
        case EBUSY:
        case ETXTBSY:
        case EWOULDBLOCK:
            return Fault::InUse;
        default:
            return Fault::ReadFailed;
    }
}

/// What a refusal to open or make a file for writing means.
Fault writingFaultOf(int code) {
    switch (code) {
        case EACCES:
        case EPERM:
        case EROFS:
            return Fault::ReadOnly;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return Fault::DiskFull;
        case ETXTBSY:
        case EWOULDBLOCK:
            return Fault::InUse;
        default:
            return Fault::WriteFailed;
    }
}

/// An open file, closed at the end.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_{number} {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : number_{std::exchange(other.number_, -1)} {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        reset();
        number_ = std::exchange(other.number_, -1);
        return *this;
    }

    int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    void reset() {
        if (number_ >= 0) ::close(number_);
        number_ = -1;
    }

private:
    int number_ = -1;
};

struct stat statusOf(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throwSystem(Fault::ReadFailed, "The size of the file cannot be read", errno);
    }
    return status;
}

// A privileged user could write what has none of them nevertheless.
constexpr mode_t kWriteBits = S_IWUSR | S_IWGRP | S_IWOTH;

std::filesystem::path folderOf(const std::filesystem::path& path) {
    return path.has_parent_path() ? path.parent_path() : std::filesystem::path{"."};
}

/// A name that was made or removed is safe only when its folder is.
void syncFolder(const std::filesystem::path& path) {
    const Descriptor descriptor{::open(folderOf(path).c_str(), O_RDONLY | O_CLOEXEC)};
    if (descriptor) ::fsync(descriptor.get());
}

class PosixStorage : public Storage {
public:
    PosixStorage(Descriptor file, std::filesystem::path path)
        : file_{std::move(file)}, path_{std::move(path)}, journalPath_{besideTarget(path_)} {}

    bool isOpenElsewhere() const override { return hasLockFile(path_); }

    std::uint64_t size() const override {
        return static_cast<std::uint64_t>(statusOf(file_.get()).st_size);
    }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        std::size_t done = 0;
        while (done < buffer.size()) {
            const ssize_t count = ::pread(file_.get(), buffer.data() + done, buffer.size() - done,
                                          static_cast<off_t>(offset + done));
            if (count == 0) break;
            if (count > 0) {
                done += static_cast<std::size_t>(count);
            } else if (errno != EINTR) {
                throwSystem(Fault::ReadFailed, "The file cannot be read", errno);
            }
        }
        return done;
    }

    void lock() override {
        if (writable_) return;
        refuseReadOnly();
        Descriptor writable{::open(path_.c_str(), O_RDWR | O_CLOEXEC)};
        if (!writable) {
            throwSystem(writingFaultOf(errno), "The file " + path_.string() + " cannot be written",
                        errno);
        }
        if (statusOf(writable.get()).st_ino != statusOf(file_.get()).st_ino) {
            throw Error{Fault::WriteFailed, "The file " + path_.string() + " has been replaced."};
        }
        takeExclusively();
        writable_ = std::move(writable);
    }

    void unlock() override {
        writable_.reset();
        ::flock(file_.get(), LOCK_SH);
    }

    void writeAt(std::uint64_t offset, Bytes bytes) override {
        while (!bytes.empty()) {
            const ssize_t count =
                ::pwrite(writable_.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
            if (count >= 0) {
                offset += static_cast<std::uint64_t>(count);
                bytes = bytes.subspan(static_cast<std::size_t>(count));
            } else if (errno != EINTR) {
                const Fault fault = writingFaultOf(errno);
                throwSystem(fault == Fault::DiskFull ? fault : Fault::WriteFailed,
                            "The file " + path_.string() + " cannot be written", errno);
            }
        }
    }

    void truncate(std::uint64_t size) override {
        if (::ftruncate(writable_.get(), static_cast<off_t>(size)) != 0) failToWrite();
    }

    void sync() override {
        if (::fdatasync(writable_.get()) != 0) failToWrite();
    }

    std::unique_ptr<Storage> openJournal() override {
        // Without waiting for somebody at the other end, if it is a pipe.
        Descriptor file{::open(journalPath_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
        if (!file && errno == ENOENT) return nullptr;
        if (!file) {
            throwSystem(faultOf(errno), "The file " + journalName() + " cannot be opened", errno);
        }
        if (!S_ISREG(statusOf(file.get()).st_mode)) {
            throw Error{Fault::ReadFailed, "What is at " + journalName() + " is not a file."};
        }
        return std::make_unique<PosixStorage>(std::move(file), journalPath_);
    }

    std::unique_ptr<Storage> createJournal() override {
        Descriptor file{::open(journalPath_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666)};
        if (!file) {
            const int code = errno;
            throwSystem(code == EEXIST ? Fault::JournalInTheWay : writingFaultOf(code),
                        "The file " + journalName() + " cannot be made", code);
        }
        syncFolder(journalPath_);
        auto journal = std::make_unique<PosixStorage>(std::move(file), journalPath_);
        journal->writable_ = Descriptor{::dup(journal->file_.get())};
        return journal;
    }

    void removeJournal() override {
        std::error_code failure;
        std::filesystem::remove(journalPath_, failure);
        if (failure) {
            throwSystem(Fault::WriteFailed, "The file " + journalName() + " cannot be removed",
                        failure.value());
        }
    }

    std::string journalName() const override { return journalPath_.string(); }

    /// Takes part in the game of locks. Throws Error{InUse} while somebody writes.
    void share() {
        while (::flock(file_.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            if (!wait_.again()) {
                throwSystem(Fault::InUse, "The file " + path_.string() + " cannot be opened",
                            EWOULDBLOCK);
            }
        }
        wait_.reset();
    }

private:
    /// A link and the file that it leads to have one journal.
    static std::filesystem::path besideTarget(const std::filesystem::path& path) {
        std::error_code failure;
        auto target = std::filesystem::canonical(path, failure);
        if (failure) target = path;
        return target += "-journal";
    }

    /// A folder that is marked read-only takes no journal, so its files are not written either.
    void refuseReadOnly() const {
        struct stat folder {};
        const auto name = folderOf(journalPath_);
        if (::stat(name.c_str(), &folder) == 0 && (folder.st_mode & kWriteBits) == 0) {
            throwSystem(Fault::ReadOnly, "The folder " + name.string() + " cannot be written",
                        EACCES);
        }
        if ((statusOf(file_.get()).st_mode & kWriteBits) == 0) {
            throwSystem(Fault::ReadOnly, "The file " + path_.string() + " cannot be written",
                        EACCES);
        }
    }

    /// Gives up the shared lock meanwhile: of two that wait for each other, neither could go on.
    void takeExclusively() {
        while (::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
            const int code = errno;
            ::flock(file_.get(), LOCK_UN);
            if (code == EWOULDBLOCK && wait_.again()) continue;
            ::flock(file_.get(), LOCK_SH | LOCK_NB);
            throwSystem(Fault::InUse, "The file " + path_.string() + " is in use", code);
        }
        wait_.reset();
    }

    [[noreturn]] void failToWrite() const {
        throwSystem(Fault::WriteFailed, "The file " + path_.string() + " cannot be written", errno);
    }

    Descriptor file_;
    Descriptor writable_;  ///< open while locked
    std::filesystem::path path_;
    std::filesystem::path journalPath_;
    BusyWait wait_;
};

std::unique_ptr<Storage> openDescriptor(const std::filesystem::path& path, int flags) {
    Descriptor file{::open(path.c_str(), flags | O_CLOEXEC, 0666)};
    int code = file ? 0 : errno;
    if (file && S_ISDIR(statusOf(file.get()).st_mode)) code = EISDIR;
    if (code != 0) {
        throwSystem(code == EISDIR ? Fault::AccessDenied : faultOf(code),
                    "The file " + path.string() + " cannot be opened", code);
    }
    auto storage = std::make_unique<PosixStorage>(std::move(file), std::filesystem::absolute(path));
    storage->share();
    return storage;
}

}  // namespace

std::unique_ptr<Storage> openFile(const std::filesystem::path& path) {
    return openDescriptor(path, O_RDONLY);
}

std::unique_ptr<Storage> createFile(const std::filesystem::path& path) {
    return openDescriptor(path, O_RDWR | O_CREAT | O_EXCL);
}

}  // namespace jet

#endif
