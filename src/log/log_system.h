// The system services that the log needs, one small interface each, so that tests can replace clock
// and volume.
//
//   LogSystem system = fake.system();  // in the program: windowsLogSystem()
//   classLog log{std::move(system)};
//
// The user-interface thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Seconds since 1970-01-01 00:00 in local time.
using LocalSeconds = std::int64_t;
inline constexpr LocalSeconds kDay = 86400;

/// The running program.
struct LogProgram {
    std::u16string folder;    ///< of the executable
    std::u16string baseName;  ///< the executable's name without its extension
    std::u16string hostPath;  ///< the executable's full path
    std::u16string arguments;
    int major = 0;
    int minor = 0;
    int revision = 0;
};

class LogClock {
public:
    virtual ~LogClock() = default;
    virtual LocalSeconds now() = 0;
    /// Seconds since midnight.
    virtual float timer() = 0;
};

struct VolumeSpace {
    std::uint64_t available = 0;  ///< bytes available to the user
    std::uint64_t total = 0;      ///< bytes in all
    std::uint64_t free = 0;       ///< free bytes in all
};

struct LogFile {
    std::u16string name;
    LocalSeconds modified = 0;
};

/// A file that is appended to; closed by its destructor.
class LogStream {
public:
    virtual ~LogStream() = default;
    virtual void write(std::string_view bytes) = 0;
};

/// Folders and files. All members throw RuntimeError on failure.
class LogVolume {
public:
    virtual ~LogVolume() = default;
    /// Does nothing if the folder exists.
    virtual void createFolder(const std::u16string& path) = 0;
    virtual VolumeSpace space(const std::u16string& folder) = 0;
    /// Bytes of all files in the folder and below it.
    virtual std::uint64_t folderSize(const std::u16string& folder) = 0;
    virtual std::vector<LogFile> files(const std::u16string& folder) = 0;
    /// Fails for read-only files.
    virtual void remove(const std::u16string& path) = 0;
    /// Opens a file for appending; creates it if it does not exist.
    virtual std::unique_ptr<LogStream> append(const std::u16string& path) = 0;
};

/// How the user's system formats dates and numbers. The defaults have one fixed form.
class LogTexts {
public:
    virtual ~LogTexts() = default;
    virtual std::u16string dateText(LocalSeconds time) const;
    virtual std::u16string numberText(float number) const;
    virtual char16_t decimalPoint() const { return u'.'; }
    virtual char16_t groupSeparator() const { return u','; }
    /// Appends the text in the encoding of the log file.
    virtual void encode(std::u16string_view text, std::string& out) const;
};

struct LogSystem {
    LogProgram program;
    std::shared_ptr<LogClock> clock;
    std::shared_ptr<LogVolume> volume;
    std::shared_ptr<LogTexts> texts;
    /// A line for the debugger.
    std::function<void(const std::u16string& text)> debugOutput;
    /// Shows a file to the user.
    std::function<void(const std::u16string& path)> openFile;
};

/// A system without files: the log is discarded.
LogSystem silentLogSystem();
