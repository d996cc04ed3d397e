// Reads a database whole, as hostile files must be survived.
#pragma once

#include "engine/jet/database.h"
#include "tests/engine/jet/plain_value.h"

#include <map>

namespace jet {

struct Survey {
    std::size_t rows = 0;    ///< read whole
    Losses losses;           ///< damaged ones
    std::size_t tables = 0;  ///< that could be scanned
    std::size_t refused = 0;
};

/// Scans the table and decodes every field. Throws Error if its pages are not known.
inline void surveyTable(const Table& table, Survey& survey) {
    TableScan scan{table};
    while (scan.next()) {
        try {
            valuesOf(scan, table.definition());
            ++survey.rows;
        } catch (const Error& error) {
            if (error.fault() != Fault::Damaged) throw;
            scan.loseRow(error);
        }
    }
    survey.losses += scan.losses();
    ++survey.tables;
}

/// Reads every table of the catalog. Throws Error if the file or its catalog cannot be read at all.
inline Survey readEverything(std::vector<std::uint8_t> file) {
    Survey survey;
    const auto database = Database::open(std::make_unique<MemoryStorage>(std::move(file)));
    for (const CatalogEntry& entry : database->catalog()) {
        if (!entry.isTable()) continue;
        try {
            surveyTable(*database->table(entry.name), survey);
        } catch (const Error& error) {
            if (error.fault() != Fault::Damaged && error.fault() != Fault::NoSuchTable) throw;
            ++survey.refused;
        }
    }
    return survey;
}

}  // namespace jet
