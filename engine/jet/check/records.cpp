#include "engine/jet/check/records.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/definition.h"
#include "engine/jet/format/long_value.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace jet::checking {
namespace {

namespace layout = format::record;

/// Neither the original engine nor this one stores infinities, or numbers so small that they have
/// no leading bit. An integer in a column that is taken for one of floating point looks like that.
template <typename T>
bool isPlainNumber(Bytes value) {
    const T number = load<T>(value, 0);
    return number == 0 || std::isnormal(number);
}

bool isPossible(ColumnType type, Bytes value) {
    // 0100-01-01 to 9999-12-31.
    constexpr double kFirstDay = -657434;
    constexpr double kBehindLastDay = 2958466;
    switch (type) {
        case ColumnType::Single:
            return isPlainNumber<float>(value);
        case ColumnType::Double:
            return isPlainNumber<double>(value);
        case ColumnType::Date: {
            const auto days = load<double>(value, 0);
            return isPlainNumber<double>(value) && days > kFirstDay - 1 && days < kBehindLastDay;
        }
        default:
            return true;
    }
}

}  // namespace

RecordCheck::RecordCheck(Context& context, const TableDefinition& definition)
    : context_{context}, definition_{definition} {
    std::vector<const Column*> byId(definition.columnsEver);
    for (const Column& column : definition.columns) byId[column.id] = &column;
    Shape shape;
    shapes_.push_back(shape);
    for (const Column* column : byId) {
        if (column == nullptr) {
            shape.allKnown = false;
        } else if (column->fixed) {
            const std::size_t end = layout::kFixedPart + column->fixedOffset + fixedBytes(*column);
            if (fixedBytes(*column) > 0) shape.fixedEnd = std::max(shape.fixedEnd, end);
        } else if (column->type != ColumnType::Boolean) {
            shape.hasVariable = true;
        }
        shapes_.push_back(shape);
    }
    // A record of all columns has a place for variable ones that were deleted since, too.
    if (definition.variableColumnsEver > 0) shapes_.back().hasVariable = true;
}

bool RecordCheck::fail(RowId row, const std::string& message) {
    context_.report.error(Rule::Record, row, message);
    return false;
}

bool RecordCheck::check(Bytes bytes, RowId row) {
    if (bytes.size() < layout::kFixedPart) return fail(row, "the record is cut short");
    const std::size_t columns = load(bytes, layout::kColumnCount);
    if (columns >= shapes_.size()) {
        return fail(row, "the record has " + std::to_string(columns) + " columns");
    }
    const Shape& shape = shapes_[columns];
    const std::size_t maskSize = layout::maskSize(columns);
    if (shape.fixedEnd + maskSize > bytes.size()) {
        return fail(row, "the record is too short for its columns");
    }
    const std::size_t maskOffset = bytes.size() - maskSize;
    if (shape.hasVariable && !checkTrailer(bytes, maskOffset, shape, row)) return false;
    return checkFields(Record{bytes, row.page()}, row);
}

/// From the mask towards the front: number of variable columns, where each begins, where the last
/// one ends.
bool RecordCheck::checkTrailer(Bytes bytes, std::size_t maskOffset, const Shape& shape, RowId row) {
    if (shape.fixedEnd + layout::trailerSize(0) > maskOffset) {
        return fail(row, "the record lacks its offset table");
    }
    const std::size_t count = load(bytes, layout::variableCount(maskOffset));
    if (count > definition_.variableColumnsEver) {
        return fail(row, "the record has " + std::to_string(count) + " variable columns");
    }
    if (shape.fixedEnd + layout::trailerSize(count) > maskOffset) {
        return fail(row, "the offset table is too long");
    }
    std::size_t before = load(bytes, layout::variableOffset(maskOffset, 0));
    if (before < shape.fixedEnd || (shape.allKnown && before != shape.fixedEnd)) {
        return fail(row, "the first variable value does not follow the fixed ones");
    }
    for (std::size_t i = 1; i <= count; ++i) {
        const std::size_t offset = load(bytes, layout::variableOffset(maskOffset, i));
        if (offset < before) return fail(row, "the offsets of the record do not ascend");
        before = offset;
    }
    if (before > layout::variableOffset(maskOffset, count).offset) {
        return fail(row, "the values run into the offset table");
    }
    return true;
}

bool RecordCheck::checkFields(const Record& record, RowId row) {
    bool right = true;
    for (const Column& column : definition_.columns) {
        if (column.type == ColumnType::Boolean) continue;
        try {
            const StoredField field = record.field(column);
            const char* const wrong = field.null ? nullptr : whatIsWrong(column, field.bytes);
            if (wrong != nullptr) right = fail(row, toUtf8(column.name) + ": " + wrong);
        } catch (const Error&) {
            right = fail(row, toUtf8(column.name) + ": the value lies outside its record");
        }
    }
    return right;
}

const char* RecordCheck::whatIsWrong(const Column& column, Bytes value) {
    const std::size_t ownSize = sizeOfType(column.type);
    if (ownSize != 0) {
        if (value.size() != ownSize) return "the value is not as long as its type";
        return isPossible(column.type, value) ? nullptr : "the value is not one of its type";
    }
    if (column.isLongValue()) {
        const bool whole = value.empty() || value.size() >= format::long_value::kHeadSize;
        return whole ? nullptr : "the head of the long value is cut short";
    }
    if (column.type == ColumnType::Text) {
        if (!isCompressedText(value) && value.size() % format::text::kUnitSize != 0) {
            return "the text ends in half a character";
        }
        return countCharacters(value) <= column.size / format::text::kUnitSize
                   ? nullptr
                   : "the text is longer than its column";
    }
    if (column.type == ColumnType::Binary && value.size() > column.size) {
        return "the value is longer than its column";
    }
    return nullptr;
}

std::size_t RecordCheck::countCharacters(Bytes text) {
    if (!isCompressedText(text)) return text.size() / format::text::kUnitSize;
    // Without a zero byte there is a byte a character.
    const Bytes characters = text.subspan(format::text::kCompressed.size());
    if (characters.empty() ||
        std::memchr(characters.data(), format::text::kChange, characters.size()) == nullptr) {
        return characters.size();
    }
    text_.clear();
    appendUtf16(text, text_);
    return text_.size();
}

}  // namespace jet::checking
