#include "engine/ado/row_store.h"

#include "engine/jet/bytes.h"

namespace ado {
namespace {

using jet::ColumnType;

/// Whether columns of the type are kept in memory at all.
bool isKept(ColumnType type) {
    switch (type) {
        case ColumnType::Boolean:
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
        case ColumnType::Currency:
        case ColumnType::Single:
        case ColumnType::Double:
        case ColumnType::Date:
        case ColumnType::Text:
            return true;
        default:
            return false;
    }
}

Scale scaleOf(ColumnType type) {
    if (type == ColumnType::Date) return Scale::Date;
    const bool real = type == ColumnType::Single || type == ColumnType::Double;
    return real ? Scale::Real : Scale::Whole;
}

std::int64_t bitsOf(double number) { return std::bit_cast<std::int64_t>(number); }

/// The 64 bits that are packed for a stored number.
std::int64_t numberOf(ColumnType type, const jet::StoredField& field) {
    switch (type) {
        case ColumnType::Boolean:
            return field.truth ? 1 : 0;
        case ColumnType::Byte:
            return field.bytes[0];
        case ColumnType::Integer:
            return jet::load<std::int16_t>(field.bytes, 0);
        case ColumnType::Long:
            return jet::load<std::int32_t>(field.bytes, 0);
        case ColumnType::Single:
            return bitsOf(static_cast<double>(jet::load<float>(field.bytes, 0)));
        default:
            return jet::load<std::int64_t>(field.bytes, 0);
    }
}

}  // namespace

RowStore::RowStore(std::vector<const jet::Column*> columns, std::uint64_t expectedRows)
    : columns_(columns.size()), expectedRows_{expectedRows} {
    const auto prepare = [](Staged& staged) {
        staged.values.resize(kGroupRows);
        staged.nulls.resize(kGroupRows);
    };
    prepare(rowIds_);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        StoreColumn& column = columns_[i];
        column.stored = columns[i];
        column.scale = scaleOf(columns[i]->type);
        column.kept = isKept(columns[i]->type) && columns[i]->unreadable.empty();
        if (columns[i]->type == ColumnType::Text) {
            column.dictionary = std::make_unique<Dictionary>();
        }
        if (column.kept) prepare(column.staged);
    }
}

RowStore::~RowStore() = default;

void RowStore::append(jet::RowId id, const jet::Record& record, std::vector<jet::LostField>& lost) {
    for (StoreColumn& column : columns_) {
        if (!column.kept) continue;
        try {
            stage(column, record);
        } catch (const jet::Error& error) {
            if (!jet::isDamage(error)) throw;
            column.staged.nulls[staged_] = 1;
            column.unreadable.store(true, std::memory_order_release);
            lost.push_back({column.stored, error.what()});
        }
    }
    rowIds_.values[staged_] = id.packed();
    if (++staged_ < kGroupRows) return;
    publish();
    groupStart_ += kGroupRows;
    staged_ = 0;
}

void RowStore::stage(StoreColumn& column, const jet::Record& record) {
    const jet::StoredField field = record.field(*column.stored);
    column.staged.nulls[staged_] = field.null ? 1 : 0;
    if (field.null) return;
    if (column.dictionary) {
        stageText(column, field.bytes);
    } else {
        column.staged.values[staged_] = numberOf(column.stored->type, field);
    }
}

/// From the first text on that the dictionary refuses, the column's texts stay in the file.
void RowStore::stageText(StoreColumn& column, jet::Bytes stored) {
    const std::uint32_t code = column.dictionary->code(stored, expectedRows_, appended());
    column.staged.values[staged_] = code;
    column.kept = code != Dictionary::kNoCode;
}

void RowStore::publish() {
    if (appended() == count_.load(std::memory_order_relaxed)) return;
    const std::size_t group = groupStart_ / kGroupRows;
    groups_.reserve(group);
    owned_.push_back(packGroup());
    groups_[group].store(owned_.back().get(), std::memory_order_release);
    count_.store(appended(), std::memory_order_release);
}

void RowStore::publishIfDoubled() {
    const std::uint32_t seen = count_.load(std::memory_order_relaxed);
    const std::uint32_t seenOfGroup = seen > groupStart_ ? seen - groupStart_ : 0;
    if (staged_ >= 2 * seenOfGroup) publish();
}

void RowStore::finish() {
    publish();
    rowIds_ = {};
    for (StoreColumn& column : columns_) column.staged = {};
}

std::unique_ptr<RowStore::RowGroup> RowStore::packGroup() {
    // Packing converts values in place, and rows that follow may come into the same group: so it
    // works on copies.
    std::vector<Packing> packings(columns_.size() + 1);
    std::vector<std::vector<std::int64_t>> values(columns_.size() + 1);
    std::size_t bytes = 0;
    const auto measure = [&](std::size_t i, Scale scale, const Staged& staged) {
        values[i].assign(staged.values.begin(), staged.values.begin() + staged_);
        packings[i] = Packing::of(scale, values[i], std::span{staged.nulls}.first(staged_));
        bytes += packings[i].byteCount();
    };
    measure(0, Scale::Whole, rowIds_);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (columns_[i].kept) measure(i + 1, columns_[i].scale, columns_[i].staged);
    }

    auto group = std::make_unique<RowGroup>();
    group->bytes = std::make_unique<std::uint8_t[]>(bytes);
    group->byteCount = bytes;
    std::uint8_t* place = group->bytes.get();
    for (std::size_t i = 0; i < packings.size(); ++i) {
        const Staged& staged = i == 0 ? rowIds_ : columns_[i - 1].staged;
        if (packings[i].unit != Unit::None) {
            packings[i].write(values[i], std::span{staged.nulls}.first(staged_), place);
        }
        group->columns.emplace_back(packings[i], place);
        place += packings[i].byteCount();
    }
    return group;
}

std::size_t RowStore::byteCount() const {
    std::size_t bytes = sizeof *this + groups_.byteCount() + owned_.capacity() * sizeof(void*);
    for (const auto& group : owned_) {
        bytes += sizeof *group + group->byteCount;
        bytes += group->columns.capacity() * sizeof(PackedColumn);
    }
    for (const StoreColumn& column : columns_) {
        bytes += sizeof column;
        bytes += column.staged.values.capacity() * 9;
        if (column.dictionary) bytes += column.dictionary->byteCount();
    }
    return bytes + rowIds_.values.capacity() * 9;
}

}  // namespace ado
