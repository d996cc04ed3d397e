#include "tests/support/table_builder.h"

#include <algorithm>
#include <stdexcept>

namespace fixture {

using jet::ColumnType;

TableBuilder::TableBuilder(PageFile& file, jet::PageNumber definition, RecordPages& maps,
                           TableSpec spec, bool system)
    : file_{file},
      definition_{definition},
      maps_{maps},
      spec_{std::move(spec)},
      system_{system},
      rows_{file, raw(definition)} {
    for (const ColumnSpec& added : spec_.columns) addColumn(added);
    for (const IndexSpec& index : spec_.indexes) {
        indexes_.push_back(std::make_unique<TableIndex>(index, file_, definition_));
    }
}

jet::RowId TableBuilder::insert(const Row& row) {
    const jet::RowId id = rows_.append(encode(row));
    addIndexEntries(row, id);
    noteAutonumber(row);
    ++rowCount_;
    return id;
}

void TableBuilder::addColumn(ColumnSpec spec) {
    const bool longValue = isLongValue(spec);
    layout_.add(std::move(spec));
    if (longValue) longValues_.try_emplace(layout_.columns().back().id, file_);
}

void TableBuilder::dropColumn(std::u16string_view name) {
    for (const auto& index : indexes_) {
        for (const IndexColumnSpec& part : index->spec().columns) {
            if (part.name == name) throw std::invalid_argument{"an index needs the column"};
        }
    }
    const std::uint16_t id = layout_.columns()[layout_.indexOf(name)].id;
    layout_.drop(name);
    if (const auto values = longValues_.find(id); values != longValues_.end()) {
        values->second.finish();
        for (const jet::PageNumber page : values->second.pages()) file_.release(page);
        longValues_.erase(values);
    }
}

void TableBuilder::deleteRow(jet::RowId row) {
    const jet::RowId place = recordPlace(row);
    if (place != row) rows_.remove(place);
    rows_.remove(row);
    removeIndexEntries(row);
    --rowCount_;
}

void TableBuilder::moveRow(jet::RowId row, const Row& content) {
    const jet::RowId before = recordPlace(row);
    const jet::RowId target = appendElsewhere(row.page(), encode(content));
    if (before != row) rows_.remove(before);
    rows_.redirect(row, target);
    removeIndexEntries(row);
    addIndexEntries(content, row);
}

jet::RowId TableBuilder::insertOrphan(const Row& content) {
    return rows_.append(encode(content), kSlotMoved);
}

jet::RowId TableBuilder::recordPlace(jet::RowId row) {
    const DataPageImage page = rows_.page(row.page());
    if ((page.slotWord(row.slot()) & kSlotDeleted) != kSlotPointer) return row;
    return jet::RowId::fromPacked(get<std::uint32_t>(page.image(), page.rowBegin(row.slot())));
}

const std::vector<jet::PageNumber>& TableBuilder::longValuePages(std::u16string_view column) const {
    return longValues_.at(layout_.columns()[layout_.indexOf(column)].id).pages();
}

const TableIndex& TableBuilder::index(std::u16string_view name) const {
    for (const auto& index : indexes_) {
        if (index->spec().name == name) return *index;
    }
    throw std::out_of_range{"no such index"};
}

void TableBuilder::finish() {
    rows_.finish();
    parts_.layout = &layout_;
    parts_.system = system_;
    parts_.rowCount = storedRowCount_.value_or(rowCount_);
    parts_.lastAutonumber = lastAutonumber_;
    parts_.maps = writeMaps(rows_.pages(), rows_.pagesWithRoom());
    for (auto& [id, values] : longValues_) {
        values.finish();
        parts_.longValueMaps[id] = writeMaps(values.pages(), values.pagesWithRoom());
    }
    for (const auto& index : indexes_) {
        index->build();
        std::vector<jet::PageNumber> pages = index->pages();
        std::sort(pages.begin(), pages.end());
        const jet::RowId map = maps_.append(encodeUsageMap(file_, pages, spec_.maps));
        parts_.indexes.push_back({.index = index.get(), .map = map, .builtInBulk = !system_});
    }
    definitionPages_ = writeDefinition(file_, definition_, encodeDefinition(parts_));
}

ByteView TableBuilder::encode(const Row& row) {
    if (row.size() > layout_.columns().size())
        throw std::invalid_argument{"a row of too many fields"};
    record_.begin(layout_);
    for (std::size_t i = 0; i < row.size(); ++i) {
        const PlacedColumn& column = layout_.columns()[i];
        if (row[i].isNull()) continue;
        if (column.spec.type == ColumnType::Boolean) {
            if (std::get<bool>(row[i].value)) record_.setTruth(column);
            continue;
        }
        content_.clear();
        appendStoredValue(column, row[i], content_);
        if (!isLongValue(column.spec)) {
            record_.addField(column, content_);
            continue;
        }
        field_.clear();
        longValues_.at(column.id).store(content_, row[i].form, field_);
        record_.addField(column, field_);
    }
    return record_.finish();
}

void TableBuilder::addIndexEntries(const Row& row, jet::RowId id) {
    if (indexes_.empty()) return;
    if (row.size() == layout_.columns().size()) {
        for (const auto& index : indexes_) index->add(layout_, row, id);
        return;
    }
    Row complete{row};
    complete.resize(layout_.columns().size());
    for (const auto& index : indexes_) index->add(layout_, complete, id);
}

void TableBuilder::removeIndexEntries(jet::RowId id) {
    for (const auto& index : indexes_) index->remove(id);
}

void TableBuilder::noteAutonumber(const Row& row) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (!layout_.columns()[i].spec.autonumber) continue;
        const auto number = static_cast<std::uint32_t>(std::get<std::int32_t>(row[i].value));
        lastAutonumber_ = std::max(lastAutonumber_, number);
    }
}

jet::RowId TableBuilder::appendElsewhere(jet::PageNumber home, ByteView record) {
    if (rows_.openPage() == home) rows_.startNewPage();
    return rows_.append(record, kSlotMoved);
}

MapPair TableBuilder::writeMaps(std::span<const jet::PageNumber> owned,
                                std::span<const jet::PageNumber> free) {
    MapPair maps;
    maps.owned = maps_.append(encodeUsageMap(file_, owned, spec_.maps));
    maps.free = maps_.append(encodeUsageMap(file_, free, spec_.maps));
    return maps;
}

}  // namespace fixture
