// How the log rids itself of the files of earlier runs.
#include "src/log/class_log.h"
#include "src/log/procedure.h"

#include <optional>

namespace {

std::u16string spaceText(const VolumeSpace& space, std::uint64_t folderSize,
                         const LogTexts& texts) {
    const char16_t group = texts.groupSeparator();
    return u" - Log Directory Size: " +
           logformat::millionsWithTenths(folderSize, texts.decimalPoint()) + u" MB   " +
           logformat::millions(space.available, group) + u" MB Free   " +
           logformat::millions(space.total, group) + u" MB Total ";
}

bool isLog(const LogFile& file) { return file.name.find(u"LOG") != std::u16string::npos; }

}  // namespace

int retentionDays(std::uint64_t availableBytes) {
    constexpr int kUsual = 14;
    constexpr int kWithRoom = 30;
    constexpr int kWithLittleRoom = 10;
    if (availableBytes > 500'000'000) return kWithRoom;
    return availableBytes < 100'000'000 ? kWithLittleRoom : kUsual;
}

void classLog::checkSizeOfLogs() {
    constexpr std::u16string_view kLabel = u"[classLog]checkSizeOfLogs";
    runProcedure(kLabel, {.log = this}, [&](Procedure& procedure) {
        LogVolume& volume = *system_.volume;
        int days = 14;
        VolumeSpace space;
        std::uint64_t folderSize = 0;
        std::vector<LogFile> files;
        procedure.step([&] {
            space = volume.space(folder_);
            days = retentionDays(space.available);
        });
        const LocalSeconds cutOff = system_.clock->now() - days * kDay;
        procedure.step([&] { folderSize = volume.folderSize(folder_); });
        procedure.step([&] {
            const LogTexts& texts = *system_.texts;
            log(u"Removing logs older than " + texts.dateText(cutOff) +
                    spaceText(space, folderSize, texts),
                kInfo, kLabel);
        });
        procedure.step([&] { files = volume.files(folder_); });
        for (const LogFile& file : files) {
            if (!isLog(file) || file.modified >= cutOff) continue;
            procedure.step([&] { volume.remove(folder_ + u"\\" + file.name); });
        }
    });
}
