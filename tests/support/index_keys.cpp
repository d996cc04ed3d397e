#include "tests/support/index_keys.h"

#include "engine/jet/collation.h"
#include "engine/jet/format/index_key.h"

#include <bit>
#include <stdexcept>

namespace fixture {

using jet::ColumnType;

namespace {

constexpr std::size_t kBinaryGroup = 8;
constexpr std::uint8_t kMoreGroups = 9;

void invert(ByteVector& key, std::size_t from) {
    for (std::size_t i = from; i < key.size(); ++i) key[i] = static_cast<std::uint8_t>(~key[i]);
}

void appendWholeNumber(std::int64_t value, unsigned size, ByteVector& key) {
    const std::uint64_t signBit = std::uint64_t{1} << (8 * size - 1);
    appendBigEndian(key, static_cast<std::uint64_t>(value) ^ signBit, size);
}

void appendFloatingBits(std::uint64_t bits, unsigned size, ByteVector& key) {
    const std::uint64_t signBit = std::uint64_t{1} << (8 * size - 1);
    appendBigEndian(key, (bits & signBit) != 0 ? ~bits : bits ^ signBit, size);
}

/// Groups of eight bytes; the mark between groups is the same in both directions.
void appendGroups(ByteView bytes, bool ascending, ByteVector& key) {
    const auto directed = [ascending](std::size_t byte) {
        return static_cast<std::uint8_t>(ascending ? byte : ~byte);
    };
    while (!bytes.empty()) {
        const std::size_t count = std::min(kBinaryGroup, bytes.size());
        for (std::size_t i = 0; i < kBinaryGroup; ++i)
            key.push_back(directed(i < count ? bytes[i] : 0));
        bytes = bytes.subspan(count);
        key.push_back(bytes.empty() ? directed(count) : kMoreGroups);
    }
}

ByteVector printedOrder(const jet::Guid& guid) {
    static constexpr std::size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    ByteVector bytes;
    for (const std::size_t i : kOrder) bytes.push_back(guid.bytes[i]);
    return bytes;
}

/// The sign byte does not change with the direction: so the original engine writes it.
void appendNumeric(const jet::Numeric& number, bool ascending, ByteVector& key) {
    key.push_back(number.negative ? 0 : 0xFF);
    const std::size_t start = key.size();
    for (const std::uint32_t word : number.magnitude) appendBigEndian(key, word, 4);
    if (number.negative == ascending) invert(key, start);
}

std::int64_t wholeNumber(const jet::Value& value) {
    return std::visit(
        [](const auto& content) -> std::int64_t {
            if constexpr (std::integral<std::decay_t<decltype(content)>>) return content;
            throw std::invalid_argument{"not a whole number"};
        },
        value);
}

std::uint64_t doubleBits(const jet::Value& value) {
    if (const auto* date = std::get_if<jet::Date>(&value))
        return std::bit_cast<std::uint64_t>(date->days);
    return std::bit_cast<std::uint64_t>(std::get<double>(value));
}

/// The ascending form of types whose descending form is just the inverse.
void appendNumber(ColumnType type, const jet::Value& value, ByteVector& key) {
    switch (type) {
        case ColumnType::Boolean:
            return key.push_back(std::get<bool>(value) ? 0 : 0xFF);
        case ColumnType::Byte:
            return key.push_back(static_cast<std::uint8_t>(wholeNumber(value)));
        case ColumnType::Integer:
            return appendWholeNumber(wholeNumber(value), 2, key);
        case ColumnType::Long:
            return appendWholeNumber(wholeNumber(value), 4, key);
        case ColumnType::Currency:
            return appendWholeNumber(std::get<jet::Currency>(value).tenThousandths, 8, key);
        case ColumnType::Single:
            return appendFloatingBits(std::bit_cast<std::uint32_t>(std::get<float>(value)), 4, key);
        case ColumnType::Double:
        case ColumnType::Date:
            return appendFloatingBits(doubleBits(value), 8, key);
        default:
            throw std::invalid_argument{"a type that cannot be indexed"};
    }
}

}  // namespace

void appendKeyPart(ColumnType type, const Cell& cell, bool ascending, ByteVector& key) {
    if (cell.stored) throw std::invalid_argument{"a field of raw bytes cannot be indexed"};
    if (cell.isNull() && type != ColumnType::Boolean) {
        key.push_back(ascending ? 0x00 : 0xFF);
        return;
    }
    key.push_back(ascending ? 0x7F : 0x80);
    const std::size_t start = key.size();
    switch (type) {
        case ColumnType::Text:
        case ColumnType::Memo: {
            const auto& text = std::get<std::u16string>(cell.value);
            const auto head =
                std::u16string_view{text}.substr(0, jet::format::index_key::kMaxCharacters);
            return jet::appendTextKey(head, ascending, key);
        }
        case ColumnType::Binary:
            return appendGroups(std::get<jet::Binary>(cell.value), ascending, key);
        case ColumnType::Guid:
            return appendGroups(printedOrder(std::get<jet::Guid>(cell.value)), ascending, key);
        case ColumnType::Numeric:
            return appendNumeric(std::get<jet::Numeric>(cell.value), ascending, key);
        default:
            appendNumber(type, cell.isNull() ? jet::Value{false} : cell.value, key);
            if (!ascending) invert(key, start);
    }
}

}  // namespace fixture
