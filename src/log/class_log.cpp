#include "src/log/class_log.h"

#include "src/log/procedure.h"
#include "src/services/services.h"
#include "src/text/text.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

/// Written at once when it is full, however deep the program is.
constexpr std::size_t kBufferSize = 16384;
constexpr std::size_t kIndentWidth = 2;

/// The name under which a copy of the program counts as its development environment.
constexpr std::u16string_view kDevelopmentHost = u"VIEWERDEVELOPMENT.EXE";

char16_t changed(char16_t c, char16_t first, char16_t last, int by) {
    return c >= first && c <= last ? static_cast<char16_t>(c + by) : c;
}

std::u16string upperCase(std::u16string text) {
    for (char16_t& c : text) c = changed(c, u'a', u'z', -32);
    return text;
}

std::u16string lowerCase(std::u16string text) {
    for (char16_t& c : text) c = changed(c, u'A', u'Z', 32);
    return text;
}

std::u16string inFolder(const std::u16string& folder, std::u16string_view name) {
    const bool closed = !folder.empty() && folder.back() == u'\\';
    return folder + (closed ? u"" : u"\\") + std::u16string{name};
}

/// Never destroyed: other objects may log when the program ends.
classLog& silentLog() {
    static auto* const silent = new classLog{silentLogSystem()};
    return *silent;
}

}  // namespace

classLog::classLog(LogSystem system)
    : system_{std::move(system)}, folder_{inFolder(system_.program.folder, u"LOGS")} {
    try {
        system_.volume->createFolder(folder_);
    } catch (...) {
        // Every write will fail then and say so; the user is not bothered.
        stream_.reset();
    }
    strLogFile_ = newLogFile();
    debugOutput_ = lowerCase(system_.program.arguments).find(u"debug") != std::u16string::npos;
    checkSizeOfLogs();
}

classLog::~classLog() { flush(); }

bool classLog::DebugMode() const {
    return upperCase(system_.program.hostPath).ends_with(kDevelopmentHost);
}

std::u16string classLog::newLogFile() const {
    return inFolder(folder_, logformat::fileName(system_.program.baseName, system_.clock->now()));
}

bool classLog::passes(int level, std::int32_t threshold) {
    if (level == kVerInfo) return threshold == 2;
    if (level == kInfo) return threshold >= 2;
    return true;
}

void classLog::log(std::u16string_view message, int level, std::u16string_view label) {
    if (debugOutput_) {
        system_.debugOutput(system_.program.baseName + u":(" + std::u16string{label} + u") " +
                            std::u16string{message});
    }
    if (passes(level, nLogLevel)) logToFile(message, level, label);
}

void classLog::logToFile(std::u16string_view message, int level, std::u16string_view label) {
    if (std::exchange(failing_, true)) {
        // The report of a failed write: one try, and nothing about its own failure.
        try {
            append(message, level, label);
        } catch (...) {
            return;
        }
        return;
    }
    // The counter bounds the repetitions under development; else there is one step, so that a
    // failed write is the end of it.
    runProcedure(
        u"[classLog]logToFile", {.limit = Limit::TenErrors, .log = this},
        [&](Procedure& procedure) { procedure.step([&] { append(message, level, label); }); });
    failing_ = false;
}

void classLog::append(std::u16string_view message, int level, std::u16string_view label) {
    const LogTexts& texts = *system_.texts;
    const LocalSeconds now = system_.clock->now();
    const std::u16string line = logformat::line(
        {.time = now, .level = level, .label = label, .indent = indent_, .message = message});
    if (!stream_) {
        stream_ = system_.volume->append(strLogFile_);
        texts.encode(logformat::header(system_.program, texts.dateText(now)), buffer_);
    }
    texts.encode(line, buffer_);
    buffer_.append("\r\n");
    const bool urgent = level == kWarning || level == kError;
    if (urgent || depth_ == 0 || buffer_.size() >= kBufferSize) writeBuffer();
}

/// What cannot be written is dropped: it would fail again with every line to come.
void classLog::writeBuffer() {
    const std::string bytes = std::exchange(buffer_, {});
    if (stream_ && !bytes.empty()) stream_->write(bytes);
}

void classLog::flush() noexcept {
    try {
        writeBuffer();
    } catch (...) {
        buffer_.clear();
    }
}

void classLog::lastWords(std::u16string_view message, std::u16string_view label) noexcept {
    try {
        append(message, kError, label);
    } catch (...) {
        flush();
    }
}

std::u16string classLog::keyOf(std::u16string_view label, int activation) const {
    return std::u16string{label} + u"_" + toText(activation);
}

int classLog::activations(std::u16string_view label) const {
    int count = 0;
    while (timers_.count(keyOf(label, count)) != 0) ++count;
    return count;
}

void classLog::setDepth(std::int32_t depth) {
    depth_ = std::max(depth, 0);
    indent_.assign(static_cast<std::size_t>(depth_) * kIndentWidth, u' ');
}

void classLog::enterProc(std::u16string_view label) {
    runProcedure(u"[classLog]enterProc", {.log = this}, [&](Procedure& procedure) {
        procedure.step([&] {
            const float start = system_.clock->timer();
            const std::u16string key = keyOf(label, activations(label));
            timers_.emplace(key, start);
            log(u"Entering " + key, kInfo, label);
            setDepth(depth_ + 1);
        });
    });
}

void classLog::exitProc(std::u16string_view label) {
    runProcedure(u"[classLog]exitProc", {.log = this}, [&](Procedure& procedure) {
        procedure.step([&] {
            const std::u16string key = keyOf(label, activations(label) - 1);
            const float end = system_.clock->timer();
            setDepth(depth_ - 1);
            std::u16string message = u"Exiting " + key;
            const auto timer = timers_.find(key);
            if (timer != timers_.end()) {
                const float start = timer->second;
                const LogTexts& texts = *system_.texts;
                message +=
                    u" Start: " + texts.numberText(start) + u" End: " + texts.numberText(end) +
                    u" - Elapsed: " +
                    logformat::elapsed(static_cast<double>(end - start), texts.decimalPoint());
                timers_.erase(timer);
            }
            log(message, kInfo, label);
        });
    });
}

void classLog::closeStream() {
    flush();
    stream_.reset();
}

void classLog::viewCurrentLogFile() {
    closeStream();
    system_.openFile(strLogFile_);
    strLogFile_ = newLogFile();
}

void classLog::closeLog() {
    closeStream();
    strLogFile_ = newLogFile();
}

classLog& theLog() { return services().log != nullptr ? *services().log : silentLog(); }
