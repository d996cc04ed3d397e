// Upgrades one file as the viewer does on opening it, and makes it durable. bench/upgrade.sh takes
// the time.
//
//   upgrade_bench FILE
#include "src/db/mod_database.h"
#include "tests/src/log/reporting_log.h"

#include <cstdio>
#include <filesystem>

namespace {

/// Without a window there is nothing to show.
class NobodyListens : public LoadingEvents {
public:
    void openingBegins() override {}
    void openingEnds() override {}
    void upgradeBegins() override {}
    void upgradeEnds() override {}
    void loadBegins() override {}
    void loadRefused() override {}
    void rowsLoaded(std::uint32_t /*count*/) override {}
    void loadEnded(const LoadResult& /*result*/) override {}
    void computingBegins() override {}
    void computingEnds() override {}
};

}  // namespace

int main(int count, char** values) {
    if (count != 2) return 2;
    bool failed = false;
    const ReportsTo reporting{[&](std::u16string_view, const std::u16string&) { failed = true; }};
    NobodyListens events;
    const ServicesInUse inUse{servicesWith(&Services::events, &events)};
    modDatabase::connectToDB(std::filesystem::path{values[1]}.u16string());
    modDatabase::openUniqueFilters();
    if (failed || modDatabase::uniqueTraces().empty()) {
        std::fputs("the upgrade failed\n", stderr);
        return 1;
    }
    std::printf("%zu unique traces\n", modDatabase::uniqueTraces().size());
}
