#include "src/log/log_system.h"

#include "src/log/log_format.h"
#include "src/text/text.h"

#include <cstdio>

namespace {

class NoClock : public LogClock {
public:
    LocalSeconds now() override { return 0; }
    float timer() override { return 0; }
};

class NoStream : public LogStream {
public:
    void write(std::string_view /*bytes*/) override {}
};

class NoVolume : public LogVolume {
public:
    void createFolder(const std::u16string& /*path*/) override {}
    VolumeSpace space(const std::u16string& /*folder*/) override { return {}; }
    std::uint64_t folderSize(const std::u16string& /*folder*/) override { return 0; }
    std::vector<LogFile> files(const std::u16string& /*folder*/) override { return {}; }
    void remove(const std::u16string& /*path*/) override {}
    std::unique_ptr<LogStream> append(const std::u16string& /*path*/) override {
        return std::make_unique<NoStream>();
    }
};

}  // namespace

std::u16string LogTexts::dateText(LocalSeconds time) const { return logformat::isoDate(time); }

std::u16string LogTexts::numberText(float number) const {
    char digits[32];
    const int length = std::snprintf(digits, sizeof digits, "%.7g", static_cast<double>(number));
    return fromAscii({digits, static_cast<std::size_t>(length)});
}

void LogTexts::encode(std::u16string_view text, std::string& out) const {
    for (const char16_t c : text) out.push_back(c < 0x80 ? static_cast<char>(c) : '?');
}

LogSystem silentLogSystem() {
    return {.program = {},
            .clock = std::make_shared<NoClock>(),
            .volume = std::make_shared<NoVolume>(),
            .texts = std::make_shared<LogTexts>(),
            .debugOutput = [](const std::u16string&) {},
            .openFile = [](const std::u16string&) {}};
}
