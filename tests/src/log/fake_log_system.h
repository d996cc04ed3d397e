// A clock, a volume and a debugger that a test holds in its hands.
//
//   FakeLogSystem fake;
//   classLog log{fake.system()};
//   log.log(u"Hello", 0, u"[modMain]Main");
//   fake.text(log.strLogFile());
#pragma once

#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "tests/src/log/reporting_log.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

class FakeLogSystem {
public:
    struct State : LogClock, LogVolume {
        struct File {
            std::string bytes;
            LocalSeconds modified = 0;
        };

        LocalSeconds now() override { return time; }
        float timer() override {
            const float current = seconds;
            seconds += tick;
            return current;
        }

        void createFolder(const std::u16string& path) override {
            require(!noFolder);
            folders.insert(path);
        }
        VolumeSpace space(const std::u16string& /*folder*/) override {
            require(!noSpace);
            return volumeSpace;
        }
        std::uint64_t folderSize(const std::u16string& /*folder*/) override { return size; }
        std::vector<LogFile> files(const std::u16string& folder) override {
            std::vector<LogFile> found;
            for (const auto& [path, file] : content) {
                if (path.starts_with(folder + u"\\"))
                    found.push_back({path.substr(folder.size() + 1), file.modified});
            }
            return found;
        }
        void remove(const std::u16string& path) override {
            require(undeletable.count(path) == 0);
            content.erase(path);
        }
        std::unique_ptr<LogStream> append(const std::u16string& path) override {
            ++opened;
            require(!noFolder);
            return std::make_unique<Stream>(*this, path);
        }

        static void require(bool possible) {
            if (!possible)
                throw RuntimeError{RuntimeError::kPathFileAccess, u"Path/File access error"};
        }

        LocalSeconds time = logformat::fromCalendar(2005, 3, 14, 9, 30, 12);
        float seconds = 34212.5F;
        float tick = 0;
        VolumeSpace volumeSpace{400'000'000, 2'000'000'000, 450'000'000};
        std::uint64_t size = 12'340'000;
        std::map<std::u16string, File> content;
        std::set<std::u16string> folders;
        std::set<std::u16string> undeletable;
        std::vector<std::u16string> debugLines;
        std::vector<std::u16string> shown;
        bool noFolder = false;
        bool noSpace = false;
        int failingWrites = 0;  ///< so many writes fail from now on
        int writes = 0;
        int opened = 0;
    };

    struct Stream : LogStream {
        Stream(State& state, const std::u16string& path) : state_{state}, path_{path} {
            state_.content[path_].modified = state_.time;
        }
        void write(std::string_view bytes) override {
            ++state_.writes;
            if (state_.failingWrites > 0) {
                --state_.failingWrites;
                throw RuntimeError{RuntimeError::kDiskFull, u"Disk full"};
            }
            state_.content[path_].bytes.append(bytes);
        }
        State& state_;
        std::u16string path_;
    };

    LogSystem system() {
        LogSystem made = silentLogSystem();
        made.program = program;
        made.clock = state;
        made.volume = state;
        made.debugOutput = [kept = state](const std::u16string& text) {
            kept->debugLines.push_back(text);
        };
        made.openFile = [kept = state](const std::u16string& path) { kept->shown.push_back(path); };
        return made;
    }

    std::string text(const std::u16string& path) const {
        const auto found = state->content.find(path);
        return found == state->content.end() ? "" : found->second.bytes;
    }

    std::shared_ptr<State> state = std::make_shared<State>();
    LogProgram program{.folder = u"C:\\Viewer",
                       .baseName = u"VorelleDiagnosticViewer",
                       .hostPath = u"C:\\Viewer\\VorelleDiagnosticViewer.exe",
                       .arguments = u"",
                       .major = 1,
                       .minor = 2,
                       .revision = 3};
};

/// The shared log in a test's hands until the end of the block.
class SharedFakeLog {
public:
    enum class Mode { Usual, Development };

    explicit SharedFakeLog(Mode mode = Mode::Usual)
        : fake{systemFor(mode)}, log_{fake.system()}, inUse_{servicesWith(&Services::log, &log_)} {}

    /// The lines under a label, without what stands before the message.
    std::vector<std::string> messages(const std::string& label) {
        theLog().flush();
        std::vector<std::string> found;
        const std::string all = fake.text(theLog().strLogFile());
        const std::string mark = label + ") ";
        for (std::size_t begin = 0; begin < all.size();) {
            const std::size_t end = std::min(all.find("\r\n", begin), all.size());
            const std::string line = all.substr(begin, end - begin);
            const std::size_t at = line.find(mark);
            if (at != std::string::npos) {
                const std::size_t text = line.find_first_not_of(' ', at + mark.size());
                found.push_back(text == std::string::npos ? "" : line.substr(text));
            }
            begin = end + 2;
        }
        return found;
    }

    /// Those of them that report failures.
    std::vector<std::string> failures(const std::string& label) {
        std::vector<std::string> found;
        for (std::string& line : messages(label)) {
            if (line.starts_with("Err") || line.starts_with("Error")) found.push_back(line);
        }
        return found;
    }

    FakeLogSystem fake;

private:
    static FakeLogSystem systemFor(Mode mode) {
        FakeLogSystem made;
        if (mode == Mode::Development) made.program.hostPath = u"C:\\tools\\ViewerDevelopment.exe";
        return made;
    }

    classLog log_;
    ServicesInUse inUse_;
};
