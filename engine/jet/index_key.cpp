#include "engine/jet/index_key.h"

#include "engine/jet/collation.h"
#include "engine/jet/format/index_key.h"

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <stdexcept>
#include <string_view>

namespace jet {
namespace {

namespace layout = format::index_key;

std::uint8_t inverted(std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); }

bool hasKeys(const Column& column) {
    switch (column.type) {
        case ColumnType::Boolean:
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
        case ColumnType::Currency:
        case ColumnType::Single:
        case ColumnType::Double:
        case ColumnType::Date:
        case ColumnType::Binary:
        case ColumnType::Guid:
        case ColumnType::Numeric:
            return true;
        case ColumnType::Text:
        case ColumnType::Memo:
            return column.collation.isGeneralLegacy();
        case ColumnType::Ole:
        case ColumnType::InternalBinary:
            break;
    }
    return false;
}

template <typename T>
const T& expect(const Value& value) {
    const T* held = std::get_if<T>(&value);
    if (held == nullptr) throw std::invalid_argument{"a key's value is not of its column's type"};
    return *held;
}

/// The bytes of one part while it is being made.
class Part {
public:
    Part(bool ascending, Key& key) : ascending_{ascending}, key_{key} {}

    /// A byte that is inverted in a descending key.
    void put(std::uint8_t byte) { key_.push_back(ascending_ ? byte : inverted(byte)); }

    template <std::unsigned_integral T>
    void putBigEndian(T bits) {
        for (std::size_t shift = sizeof(T) * 8; shift != 0;) {
            shift -= 8;
            put(static_cast<std::uint8_t>(bits >> shift));
        }
    }

    /// Negative numbers before positive ones: the sign bit is flipped.
    template <std::signed_integral T>
    void putSigned(T number) {
        using Bits = std::make_unsigned_t<T>;
        constexpr Bits kSign = static_cast<Bits>(Bits{1} << (sizeof(T) * 8 - 1));
        putBigEndian(static_cast<Bits>(static_cast<Bits>(number) ^ kSign));
    }

    /// As signed integers, but the bits of a negative number count down: all are flipped.
    template <std::unsigned_integral Bits>
    void putFloating(Bits bits) {
        constexpr Bits kSign = Bits{1} << (sizeof(Bits) * 8 - 1);
        putBigEndian((bits & kSign) != 0 ? static_cast<Bits>(~bits) : bits ^ kSign);
    }

    /// The separators between groups stay as they are in a descending key.
    void putBinary(Bytes bytes) {
        while (!bytes.empty()) {
            const Bytes group = bytes.first(std::min(layout::kBinaryGroup, bytes.size()));
            bytes = bytes.subspan(group.size());
            for (const std::uint8_t byte : group) put(byte);
            for (std::size_t i = group.size(); i < layout::kBinaryGroup; ++i) put(0);
            if (bytes.empty()) {
                put(static_cast<std::uint8_t>(group.size()));
            } else {
                key_.push_back(layout::kMoreFollows);
            }
        }
    }

    /// The sign byte is the same in both directions; a descending order is none across signs.
    void putNumeric(const Numeric& number) {
        key_.push_back(number.negative ? layout::kNegative : layout::kPositive);
        for (const std::uint32_t word : number.magnitude) {
            putBigEndian(number.negative ? ~word : word);
        }
    }

private:
    bool ascending_;
    Key& key_;
};

/// In the order in which the digits are printed.
std::array<std::uint8_t, format::value::kGuidSize> printedOrder(const Guid& guid) {
    std::array<std::uint8_t, format::value::kGuidSize> bytes{};
    std::ranges::transform(format::value::kGuidPrinted, bytes.begin(),
                           [&](std::uint8_t place) { return guid.bytes[place]; });
    return bytes;
}

void appendText(const Value& value, bool ascending, Key& key) {
    const std::u16string_view text = expect<std::u16string>(value);
    appendTextKey(text.substr(0, layout::kMaxCharacters), ascending, key);
}

void appendValue(const Value& value, ColumnType type, bool ascending, Key& key) {
    Part part{ascending, key};
    switch (type) {
        case ColumnType::Boolean:
            return part.put(expect<bool>(value) ? layout::kTrue : layout::kFalse);
        case ColumnType::Byte:
            return part.put(expect<std::uint8_t>(value));
        case ColumnType::Integer:
            return part.putSigned(expect<std::int16_t>(value));
        case ColumnType::Long:
            return part.putSigned(expect<std::int32_t>(value));
        case ColumnType::Currency:
            return part.putSigned(expect<Currency>(value).tenThousandths);
        case ColumnType::Single:
            return part.putFloating(std::bit_cast<std::uint32_t>(expect<float>(value)));
        case ColumnType::Double:
            return part.putFloating(std::bit_cast<std::uint64_t>(expect<double>(value)));
        case ColumnType::Date:
            return part.putFloating(std::bit_cast<std::uint64_t>(expect<Date>(value).days));
        case ColumnType::Binary:
            return part.putBinary(expect<Binary>(value));
        case ColumnType::Guid:
            return part.putBinary(printedOrder(expect<Guid>(value)));
        case ColumnType::Numeric:
            return part.putNumeric(expect<Numeric>(value));
        case ColumnType::Text:
        case ColumnType::Memo:
            return appendText(value, ascending, key);
        case ColumnType::Ole:
        case ColumnType::InternalBinary:
            break;
    }
}

}  // namespace

bool canMakeKeys(const TableDefinition& definition, const PhysicalIndex& index) {
    return std::all_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& part) {
        const Column* column = definition.findColumn(part.columnId);
        return column != nullptr && hasKeys(*column);
    });
}

void appendKeyPart(const Value& value, const Column& column, bool ascending, Key& key) {
    if (!hasKeys(column)) throw std::invalid_argument{"a column of this type has no keys"};
    const layout::Flags flags = layout::flags(ascending);
    key.push_back(isNull(value) ? flags.null : flags.notNull);
    if (!isNull(value)) appendValue(value, column.type, ascending, key);
}

Key encodeKey(std::span<const Value> values, const TableDefinition& definition,
              const PhysicalIndex& index) {
    if (values.size() != index.columns.size() || !canMakeKeys(definition, index)) {
        throw std::invalid_argument{"no key of this index can be made of these values"};
    }
    Key key;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const IndexColumn& part = index.columns[i];
        appendKeyPart(values[i], *definition.findColumn(part.columnId), part.ascending, key);
    }
    return key;
}

}  // namespace jet
