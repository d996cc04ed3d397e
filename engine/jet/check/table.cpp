#include "engine/jet/check/table.h"

#include "engine/jet/check/definition.h"
#include "engine/jet/check/index_tree.h"
#include "engine/jet/check/long_values.h"
#include "engine/jet/check/maps.h"
#include "engine/jet/check/records.h"

#include <algorithm>
#include <deque>

namespace jet::checking {
namespace {

/// The records of a table with their long values, and what the definition says of them.
class RecordsCheck {
public:
    RecordsCheck(Context& context, CheckedTable& table)
        : context_{context}, table_{table}, records_{context, table.definition} {
        const std::vector<Column>& columns = table.definition.columns;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i].isLongValue()) {
                longColumns_.push_back(&columns[i]);
                values_.emplace_back(context, table.definition, i);
            }
            const bool counts = columns[i].autonumber && columns[i].type == ColumnType::Long;
            if (counts) autonumber_ = &columns[i];
        }
    }

    void run() {
        const bool allThere = table_.rows.complete && allSound();
        std::vector<std::size_t> damaged;
        forEachRow(context_, table_.definition, table_.rows,
                   [&](std::size_t place, RowId row, Bytes bytes) {
                       if (!checkRow(bytes, row)) damaged.push_back(place);
                   });
        for (const std::size_t place : damaged) table_.rows.sound[place] = false;
        if (allThere && damaged.empty()) {
            for (LongValueCheck& values : values_) values.finish();
        }
        checkCounters();
    }

private:
    bool allSound() const {
        const std::vector<bool>& sound = table_.rows.sound;
        return std::find(sound.begin(), sound.end(), false) == sound.end();
    }

    bool checkRow(Bytes bytes, RowId row) {
        if (!records_.check(bytes, row)) return false;
        const Record record{bytes, row.page()};
        bool right = true;
        for (std::size_t i = 0; i < values_.size(); ++i) {
            const StoredField field = record.field(*longColumns_[i]);
            if (!field.null && !values_[i].check(field.bytes, row)) right = false;
        }
        if (autonumber_ != nullptr) noteNumber(record.field(*autonumber_));
        return right;
    }

    void noteNumber(const StoredField& field) {
        if (!field.null) highest_ = std::max(highest_, load<std::int32_t>(field.bytes, 0));
    }

    void checkCounters() {
        const TableDefinition& definition = table_.definition;
        const std::size_t rows = table_.rows.ids.size();
        if (table_.rows.complete && definition.rowCount != rows) {
            const std::string what = "the table has " + std::to_string(rows) +
                                     " rows, but the definition counts " +
                                     std::to_string(definition.rowCount);
            // A count that lags behind does no harm; one ahead is all that is left of lost rows.
            definition.rowCount > rows
                ? context_.report.error(Rule::RowCount, definition.page, what)
                : context_.report.warning(Rule::RowCount, definition.page, what);
        }
        if (highest_ > static_cast<std::int32_t>(definition.lastAutonumber)) {
            context_.report.warning(Rule::Autonumber, definition.page,
                                    "number " + std::to_string(highest_) +
                                        " is above the last one handed out, " +
                                        std::to_string(definition.lastAutonumber));
        }
    }

    Context& context_;
    CheckedTable& table_;
    RecordCheck records_;
    std::vector<const Column*> longColumns_;
    std::deque<LongValueCheck> values_;  ///< of the same length
    const Column* autonumber_ = nullptr;
    std::int32_t highest_ = 0;
};

LiveRows checkRows(Context& context, const TableDefinition& definition) {
    const auto owned = readMap(context, definition.ownedMap, definition.page, "the map of rows");
    const auto free =
        readMap(context, definition.freeMap, definition.page, "the map of pages with room");
    if (!owned || !free) context.ownersKnown = false;
    if (!owned) {
        LiveRows none;
        none.complete = false;
        return none;
    }
    LiveRows rows = collectRows(context, definition, *owned);
    if (free) checkFreeMap(context, *owned, *free, "the map of pages with room");
    return rows;
}

void checkIndex(Context& context, const CheckedTable& table, std::size_t number) {
    const PhysicalIndex& index = table.definition.physicalIndexes[number];
    const std::string name = indexName(table.definition, number);
    EntryCheck entries{context, table.definition, index, table.rows, name};
    if (IndexTreeCheck{context, table.definition, number, entries, name}.run()) entries.finish();
    ++context.report.report().indexes;
}

}  // namespace

std::optional<CheckedTable> checkTable(Context& context, PageNumber first,
                                       const std::u16string& name) {
    context.report.setTable(name);
    auto definition = checkDefinition(context, first, name);
    if (!definition) return std::nullopt;
    CheckedTable table{std::move(*definition), {}};
    table.rows = checkRows(context, table.definition);
    RecordsCheck{context, table}.run();
    for (std::size_t i = 0; i < table.definition.physicalIndexes.size(); ++i) {
        checkIndex(context, table, i);
    }
    CheckReport& report = context.report.report();
    ++report.tables;
    report.rows += table.rows.ids.size();
    return table;
}

}  // namespace jet::checking
