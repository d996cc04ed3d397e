// Files through the POSIX interface.
#ifndef _WIN32

#include "engine/jet/storage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

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
            return Fault::AccessDenied;
        case EBUSY:
        case ETXTBSY:
            return Fault::InUse;
        default:
            return Fault::ReadFailed;
    }
}

class PosixStorage : public Storage {
public:
    explicit PosixStorage(int descriptor) : descriptor_{descriptor} {}
    ~PosixStorage() override { ::close(descriptor_); }
    PosixStorage(const PosixStorage&) = delete;
    PosixStorage& operator=(const PosixStorage&) = delete;

    std::uint64_t size() const override {
        struct stat status {};
        if (::fstat(descriptor_, &status) != 0) {
            throwSystem(Fault::ReadFailed, "The size of the file cannot be read", errno);
        }
        return static_cast<std::uint64_t>(status.st_size);
    }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        std::size_t done = 0;
        while (done < buffer.size()) {
            const ssize_t count = ::pread(descriptor_, buffer.data() + done, buffer.size() - done,
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

private:
    int descriptor_;
};

}  // namespace

std::unique_ptr<Storage> openFile(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        const int code = errno;
        throwSystem(faultOf(code), "The file " + path.string() + " cannot be opened", code);
    }
    auto storage = std::make_unique<PosixStorage>(descriptor);
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
        throwSystem(Fault::AccessDenied, "The file " + path.string() + " cannot be opened", EISDIR);
    }
    return storage;
}

}  // namespace jet

#endif
