// Upgrades one file as the viewer does on opening it, and makes it durable. bench/upgrade.sh takes
// the time.
//
//   upgrade_bench FILE
#include "src/db/mod_database.h"
#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"

#include <cstdio>
#include <filesystem>

namespace {

/// Without a window there is nothing to show.
class NoDisplay : public LoadingDisplay {
public:
    void displayStatus(const std::u16string& /*text*/, bool /*showProgress*/) override {}
    void hideStatus() override {}
    void setNotice(const std::u16string& /*text*/) override {}
    void setPosition(const std::u16string& /*text*/) override {}
    void setMousePointer(MousePointer /*pointer*/) override {}
    void rowsArrived() override {}
    std::int64_t gridRowCount() override { return 0; }
    void runWhilePainting(const std::function<void()>& work) override { work(); }
    void sortByDate() override {}
};

}  // namespace

/// Texts are shown only.
std::u16string modLocalize::myLoadResString(unsigned /*id*/) { return {}; }

int main(int count, char** values) {
    if (count != 2) return 2;
    bool failed = false;
    setFailureReporter([&](std::u16string_view, const std::u16string&) { failed = true; });
    NoDisplay display;
    modDatabase::setDisplay(display);
    modDatabase::connectToDB(std::filesystem::path{values[1]}.u16string());
    modDatabase::openUniqueFilters();
    if (failed || modDatabase::uniqueTraces().empty()) {
        std::fputs("the upgrade failed\n", stderr);
        return 1;
    }
    std::printf("%zu unique traces\n", modDatabase::uniqueTraces().size());
}
