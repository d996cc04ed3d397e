// Single rows: added, changed, removed. Changes of many rows are in table_update.cpp.
#include "engine/jet/write/table_writer.h"

#include "engine/jet/bytes.h"
#include "engine/jet/database.h"
#include "engine/jet/format/long_value.h"
#include "engine/jet/format/page.h"
#include "engine/jet/format/table_definition.h"
#include "engine/jet/write/value_encoder.h"

#include <algorithm>
#include <array>

namespace jet {
namespace {

namespace data_page = format::data_page;

bool isInRecord(const StoredField& field) {
    namespace head = format::long_value;
    return field.bytes.size() > head::kHeadSize &&
           (load(field.bytes, head::kLength) & head::kInline) != 0;
}

/// A definition of which parts are unknown would be written wrong.
const TableDefinition& requireSound(const TableDefinition& definition) {
    if (!definition.losses.any()) return definition;
    throw Error{Fault::Damaged, definition.losses.reasons.front().why, definition.page};
}

}  // namespace

TableWriter::TableWriter(WriteContext& context, const TableDefinition& definition)
    : context_{context},
      definition_{requireSound(definition)},
      encoder_{definition_},
      owned_{context.pager, definition.ownedMap},
      free_{context.pager, definition.freeMap},
      fields_(definition.columns.size()),
      buffers_(definition.columns.size()) {
    for (std::size_t i = 0; i < definition_.columns.size(); ++i) {
        const Column& column = definition_.columns[i];
        if (!column.isLongValue()) continue;
        longValues_.emplace(i, LongValueWriter{context.pager, context.allocator, column});
    }
    for (std::size_t i = 0; i < definition_.physicalIndexes.size(); ++i) {
        const PhysicalIndex& index = definition_.physicalIndexes[i];
        auto keys = canMakeKeys(definition_, index) ? std::make_unique<RowKeys>(definition_, index)
                                                    : nullptr;
        indexes_.push_back({.writer = IndexWriter{context.pager, context.allocator, definition_, i},
                            .keys = std::move(keys)});
    }
}

// ---- The row in hand ----------------------------------------------------------------------------

void TableWriter::takeFields(const Record& record) {
    recordPage_ = record.page();
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        fields_[i] = record.field(definition_.columns[i]);
    }
}

void TableWriter::setField(std::size_t place, const Value& value) {
    const Column& column = definition_.columns[place];
    StoredField& field = fields_[place];
    field = {};
    if (column.type == ColumnType::Boolean) {
        field.null = false;
        if (!isNull(value)) encodeValue(value, column, buffers_[place]);
        const bool* const truth = std::get_if<bool>(&value);
        field.truth = truth != nullptr && *truth;
        return;
    }
    if (isNull(value)) return;
    if (column.isLongValue()) {
        setLongValue(place, value);
    } else {
        buffers_[place].clear();
        encodeValue(value, column, buffers_[place]);
    }
    field.null = false;
    field.bytes = buffers_[place];
}

void TableWriter::setLongValue(std::size_t place, const Value& value) {
    Binary content;
    encodeValue(value, definition_.columns[place], content);
    longValues_.at(place).store(content, true, buffers_[place]);
}

void TableWriter::applyChanges(std::span<const Assignment> changes) {
    for (const Assignment& change : changes) {
        const StoredField& before = fields_[change.column];
        if (definition_.columns[change.column].isLongValue() && !before.null) {
            replacedValues_.emplace_back(before.bytes.begin(), before.bytes.end());
            longValues_.at(change.column).remove(replacedValues_.back());
        }
        setField(change.column, change.value);
    }
    replacedValues_.clear();
}

/// Short long values are stored inline as long as the record has room for them.
void TableWriter::encodeRecord() {
    try {
        encoder_.encode(fields_, record_);
        return;
    } catch (const Error& error) {
        if (error.fault() != Fault::ValueTooLarge) throw;
    }
    for (auto& [place, writer] : longValues_) {
        StoredField& field = fields_[place];
        if (field.null || !isInRecord(field)) continue;
        const Bytes stored = field.bytes.subspan(format::long_value::kHeadSize);
        const Binary content{stored.begin(), stored.end()};
        writer.store(content, false, buffers_[place]);
        field.bytes = buffers_[place];
    }
    encoder_.encode(fields_, record_);
}

std::int32_t TableWriter::nextNumber() {
    return static_cast<std::int32_t>(++definition_.lastAutonumber);
}

// ---- Single rows --------------------------------------------------------------------------------

RowId TableWriter::insert(std::span<const Value> values) {
    recordPage_ = definition_.page;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Column& column = definition_.columns[i];
        if (column.autonumber && column.type == ColumnType::Long) {
            const auto* given = std::get_if<std::int32_t>(&values[i]);
            const std::int32_t number = given != nullptr ? *given : nextNumber();
            const auto last = static_cast<std::int32_t>(definition_.lastAutonumber);
            definition_.lastAutonumber = static_cast<std::uint32_t>(std::max(last, number));
            setField(i, isNull(values[i]) ? Value{number} : values[i]);
        } else {
            setField(i, values[i]);
        }
    }
    encodeRecord();
    const RowId row = place(record_, 0);
    for (Index& index : indexes_) {
        if (const auto key = keyOf(index)) index.writer.insert(*key, row);
    }
    ++definition_.rowCount;
    return row;
}

void TableWriter::update(RowId id, std::span<const Assignment> changes) {
    const Place place = locate(id);
    const PagePtr page = context_.pager.page(place.record.page());
    const auto slot = DataPage{*page, place.record.page()}.slot(place.record.slot());
    takeFields(Record{slot->bytes, place.record.page()});
    noteKeys(changes, id, false);
    applyChanges(changes);
    noteKeys(changes, id, true);
    encodeRecord();
    replaceRecord(place, record_);
    changeKeys();
}

void TableWriter::remove(RowId id) {
    const Place place = locate(id);
    {
        const PagePtr page = context_.pager.page(place.record.page());
        const auto slot = DataPage{*page, place.record.page()}.slot(place.record.slot());
        takeFields(Record{slot->bytes, place.record.page()});
        for (Index& index : indexes_) {
            if (const auto key = keyOf(index)) index.writer.remove(*key, id);
        }
        for (auto& [column, writer] : longValues_) {
            if (!fields_[column].null) writer.remove(fields_[column].bytes);
        }
    }
    if (place.record != place.home) removeSlot(place.record);
    removeSlot(place.home);
    --definition_.rowCount;
}

// ---- Places -------------------------------------------------------------------------------------

TableWriter::Place TableWriter::locate(RowId id) {
    Place place{id, id};
    for (int hop = 0; hop < data_page::kMaxHops; ++hop) {
        const PagePtr page = context_.pager.page(place.record.page());
        const DataPage data{*page, place.record.page()};
        const auto slot = data.slot(place.record.slot());
        const bool expected = slot && !slot->deleted && data.owner() == raw(definition_.page) &&
                              (place.record == id ? !slot->moved : slot->moved || slot->pointer);
        if (!expected) throwDamaged(place.record.page(), "a row that is to be changed is missing");
        if (!slot->pointer) return place;
        if (slot->bytes.size() < data_page::kTarget.end()) break;
        place.record = load(slot->bytes, data_page::kTarget);
    }
    throwDamaged(id.page(), "a row pointer leads nowhere");
}

/// On the page where the last record went, on one that is said to have room, or on a new one.
RowId TableWriter::place(Bytes record, std::uint16_t flags) {
    constexpr int kAttempts = 3;
    if (target_ != kNoPage) {
        if (const auto row = placeOn(target_, record, flags)) return *row;
    }
    PageNumber candidate = newPagesOnly_ ? kNoPage : free_.lastBefore(format::page::kMaxCount);
    for (int attempt = 0; attempt < kAttempts && candidate != kNoPage; ++attempt) {
        if (const auto row = placeOn(candidate, record, flags)) return *row;
        candidate = free_.lastBefore(raw(candidate));
    }
    const PageNumber added = context_.allocator.allocate();
    formatDataPage(*context_.pager.edit(added), raw(definition_.page));
    owned_.insert(added);
    free_.insert(added);
    return *placeOn(added, record, flags);
}

std::optional<RowId> TableWriter::placeOn(PageNumber number, Bytes record, std::uint16_t flags) {
    {
        const PagePtr page = context_.pager.page(number);
        const DataPage data{*page, number};
        if (data.owner() != raw(definition_.page)) {
            throwDamaged(number, "a page of the table belongs to something else");
        }
        if (number != target_ && !isSound(*page, number)) {
            free_.erase(number);
            return std::nullopt;
        }
        if (!hasRoom(*page, record.size())) {
            noteRoom(number, *page);
            return std::nullopt;
        }
    }
    target_ = number;
    return RowId{number, *appendRow(*context_.pager.edit(number), record, flags)};
}

void TableWriter::noteRoom(PageNumber number, const Page& content) {
    if (freeBytes(content) < data_page::kMinRoom ||
        slotCount(content) >= data_page::kMaxSlotsWritten) {
        free_.erase(number);
    } else if (freeBytes(content) >= data_page::kRoomAgain) {
        free_.insert(number);
    }
}

void TableWriter::removeSlot(RowId id) {
    const PageEdit page = context_.pager.edit(id.page());
    PageLayout layout{*page, id.page()};
    layout.rows[id.slot()] = {data_page::kDeleted, {}};
    layout.writeTo(*page);
    noteRoom(id.page(), *page);
}

void TableWriter::replaceRecord(const Place& place, Bytes record) {
    if (place.record == place.home) {
        replaceAtHome(place.home, record);
    } else {
        replaceMoved(place, record);
    }
}

/// A record that outgrows its page leaves a pointer behind.
void TableWriter::replaceAtHome(RowId home, Bytes record) {
    const PageEdit page = context_.pager.edit(home.page());
    PageLayout layout{*page, home.page()};
    PageLayout::Row& row = layout.rows[home.slot()];
    row.bytes = record;
    std::array<std::uint8_t, data_page::kTarget.end()> pointer{};
    if (!layout.fits()) {
        store(pointer, data_page::kTarget, this->place(record, data_page::kMoved));
        row = {data_page::kPointer, pointer};
        if (!layout.fits()) throwDamaged(home.page(), "a page has no room for a row pointer");
    }
    layout.writeTo(*page);
    noteRoom(home.page(), *page);
}

/// The chain stays one hop long: the pointer at home is the one that changes.
void TableWriter::replaceMoved(const Place& place, Bytes record) {
    {
        const PageEdit page = context_.pager.edit(place.record.page());
        PageLayout layout{*page, place.record.page()};
        layout.rows[place.record.slot()].bytes = record;
        if (layout.fits()) {
            layout.writeTo(*page);
            noteRoom(place.record.page(), *page);
            return;
        }
    }
    const RowId target = this->place(record, data_page::kMoved);
    {
        const PageEdit page = context_.pager.edit(place.home.page());
        const std::span bytes = rowBytes(*page, place.home.page(), place.home.slot());
        store(bytes, data_page::kTarget, target);
    }
    removeSlot(place.record);
}

// ---- Indexes and counts -------------------------------------------------------------------------

bool TableWriter::affects(const Index& index, std::span<const Assignment> changes) const {
    return std::ranges::any_of(index.writer.index().columns, [&](const IndexColumn& part) {
        return std::ranges::any_of(changes, [&](const Assignment& change) {
            return definition_.columns[change.column].id == part.columnId;
        });
    });
}

/// A reader remembers the last page it returned, which may have changed since.
PageReader TableWriter::freshReader() const {
    return {context_.database.storage(), context_.database.cache()};
}

/// The key of the row in hand; nothing if the index leaves it out.
std::optional<Key> TableWriter::keyOf(Index& index) {
    if (!index.keys) {
        throw Error{Fault::IndexNotWritable,
                    "A table has an index in a text order that cannot be written."};
    }
    Key key;
    PageReader pages = freshReader();
    if (!index.keys->make(fields_, recordPage_, pages, key)) return std::nullopt;
    return key;
}

void TableWriter::finish() {
    for (auto& [column, writer] : longValues_) writer.finish();
    for (Index& index : indexes_) index.writer.finish();
    owned_.save(context_.allocator);
    free_.save(context_.allocator);
    writeCounts();
}

/// Row count, last autonumber and the indexes' statistics are on the definition's first page.
void TableWriter::writeCounts() {
    namespace head = format::table_definition;
    namespace counter = format::index_counter;
    const PageEdit page = context_.pager.edit(definition_.page);
    store(*page, head::kRowCount, definition_.rowCount);
    store(*page, head::kLastAutonumber, definition_.lastAutonumber);
    for (std::size_t i = 0; i < indexes_.size(); ++i) {
        const std::span at = std::span{*page}.subspan(counter::placeOf(i));
        store(at, counter::kEntriesAtBuild, indexes_[i].writer.entriesAtBuild());
        store(at, counter::kDistinctKeys, indexes_[i].writer.distinctKeys());
    }
}

}  // namespace jet
