// classLog: the program's own log, a text file for each run in the folder LOGS beside the program.
//
//   theLog().enterProc(kLabel);
//   theLog().log(u"Number of Unique Traces Found: 12", classLog::kInfo, kLabel);
//   theLog().exitProc(kLabel);
//
// Lines are buffered while procedures are running and written when the outermost one begins or
// ends, with every warning and error, and when the program ends. Nothing here throws: a failure is
// itself logged if possible, and the line is lost.
//
// The user-interface thread, but for lastWords.
#pragma once

#include "src/log/command_object.h"
#include "src/log/log_format.h"
#include "src/log/log_system.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ado {
class Recordset;
}

class classLog {
public:
    enum Level : int { kInfo = 0, kWarning = 1, kError = 2, kVerInfo = 3 };

    /// Creates the folder if necessary and removes old files. The file itself is opened when its
    /// first line is written.
    explicit classLog(LogSystem system);
    virtual ~classLog();
    classLog(const classLog&) = delete;
    classLog& operator=(const classLog&) = delete;

    /// 2: everything is written; below, neither kInfo nor kVerInfo; above, no kVerInfo.
    std::int32_t nLogLevel = 2;

    /// The full path of the current file.
    const std::u16string& strLogFile() const { return strLogFile_; }
    void setStrLogFile(std::u16string path) { strLogFile_ = std::move(path); }

    /// Whether the program runs under development, as ViewerDevelopment.exe. A failed step is then
    /// retried instead of skipped.
    bool DebugMode() const;

    virtual void log(std::u16string_view message, int level,
                     std::u16string_view label = logformat::kNoLabel);

    /// Logs the start or end of a procedure, and its duration; lines in between are indented.
    void enterProc(std::u16string_view label);
    void exitProc(std::u16string_view label);

    /// Logs every field of the records from the current one on, and moves behind the last one.
    void dumpRecordsets(ado::Recordset& recordset, std::u16string_view label = logformat::kNoLabel);
    void dumpDictionary(const std::map<std::u16string, std::u16string>& dictionary,
                        std::u16string_view label = logformat::kNoLabel);
    void dumpCommandObject(const CommandObject& command,
                           std::u16string_view label = logformat::kNoLabel);

    /// Shows the current file to the user; the next line starts a new one.
    void viewCurrentLogFile();

    /// Closes the current file; the next line starts a new one.
    void closeLog();

    /// Removes files of earlier runs: those older than 14 days, 30 with much free space, 10 with
    /// little.
    void checkSizeOfLogs();

    /// Writes the buffered lines. Called before the program ends.
    void flush() noexcept;

    /// The last line after a crash. Any thread may call: the others are assumed to be dead.
    void lastWords(std::u16string_view message, std::u16string_view label) noexcept;

private:
    static bool passes(int level, std::int32_t threshold);
    std::u16string newLogFile() const;
    void setDepth(std::int32_t depth);
    void logToFile(std::u16string_view message, int level, std::u16string_view label);
    void append(std::u16string_view message, int level, std::u16string_view label);
    void writeBuffer();
    void closeStream();
    std::u16string keyOf(std::u16string_view label, int activation) const;
    int activations(std::u16string_view label) const;

    LogSystem system_;
    std::u16string folder_;
    std::u16string strLogFile_;
    bool debugOutput_ = false;
    std::unique_ptr<LogStream> stream_;  ///< null until the first line of a file
    std::string buffer_;                 ///< lines of the open file not yet written
    bool failing_ = false;               ///< a failure to write is being reported
    std::int32_t depth_ = 0;
    std::u16string indent_;
    std::unordered_map<std::u16string, float> timers_;  ///< by label and number of activation
};

/// Days that a log is kept.
int retentionDays(std::uint64_t availableBytes);

/// The log in use (services/services.h); a silent one if there is none.
classLog& theLog();
