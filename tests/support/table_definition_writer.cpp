#include "tests/support/table_definition_writer.h"

#include <algorithm>

namespace fixture {

using jet::ColumnType;

namespace {

constexpr std::uint32_t kDefinitionMagic = 0x659;
constexpr std::uint32_t kIndexMagic = 0x783;
constexpr std::size_t kPageHeaderBytes = 8;
constexpr std::size_t kHeaderBytes = 63;
constexpr std::size_t kIndexColumnSlots = 10;
constexpr std::uint8_t kAlwaysSetIndexFlag = 0x80;

enum ColumnFlag : std::uint8_t {
    kFixed = 0x01,
    kUpdatable = 0x02,
    kAutonumber = 0x04,
    kSystem = 0x10
};

void appendName(ByteVector& out, std::u16string_view name) {
    append(out, static_cast<std::uint16_t>(name.size() * 2));
    for (const char16_t unit : name) append(out, static_cast<std::uint16_t>(unit));
}

char16_t lowered(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

bool lessIgnoringCase(std::u16string_view left, std::u16string_view right) {
    return std::lexicographical_compare(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char16_t a, char16_t b) { return lowered(a) < lowered(b); });
}

/// Tables of users list their columns as they show them, system tables by name.
std::vector<const PlacedColumn*> storedOrder(const DefinitionParts& parts) {
    std::vector<const PlacedColumn*> columns;
    for (const PlacedColumn& column : parts.layout->columns()) columns.push_back(&column);
    if (parts.system) {
        std::sort(columns.begin(), columns.end(),
                  [](const PlacedColumn* left, const PlacedColumn* right) {
                      return lessIgnoringCase(left->spec.name, right->spec.name);
                  });
    }
    return columns;
}

void putHeader(const DefinitionParts& parts, ByteVector& out) {
    out.assign(kHeaderBytes, 0);
    const std::span<std::uint8_t> header{out};
    const auto indexCount = static_cast<std::uint32_t>(parts.indexes.size());
    put(header, 12, kDefinitionMagic);
    put(header, 16, parts.rowCount);
    put(header, 20, parts.lastAutonumber);
    put(header, 24, std::uint8_t{1});
    put(header, 40, static_cast<std::uint8_t>(parts.system ? 'S' : 'N'));
    put(header, 41, parts.layout->columnsEver());
    put(header, 43, parts.layout->variableColumnsEver());
    put(header, 45, static_cast<std::uint16_t>(parts.layout->columns().size()));
    put(header, 47, indexCount);
    put(header, 51, indexCount);
    put(header, 55, parts.maps.owned.packed());
    put(header, 59, parts.maps.free.packed());
}

void appendIndexCounters(const IndexPart& part, ByteVector& out) {
    const std::size_t bulk = part.builtInBulk ? part.index->entryCount() : 0;
    append(out, static_cast<std::uint32_t>(bulk));
    append(out, static_cast<std::uint32_t>(part.index->distinctKeys()));
    append(out, std::uint32_t{0});
}

std::uint8_t columnFlags(const PlacedColumn& column, bool system) {
    unsigned flags = kUpdatable | column.spec.flags;
    if (column.fixed) flags |= kFixed;
    if (column.spec.autonumber) flags |= kAutonumber;
    if (system) flags |= kSystem;
    return static_cast<std::uint8_t>(flags);
}

void appendColumn(const PlacedColumn& column, bool system, ByteVector& out) {
    out.push_back(static_cast<std::uint8_t>(column.spec.type));
    append(out, kDefinitionMagic);
    append(out, column.id);
    append(out, column.variableIndex);
    append(out, system ? std::uint16_t{0} : column.id);
    if (column.spec.type == ColumnType::Numeric) {
        append(out, column.spec.precision);
        append(out, column.spec.scale);
        append(out, std::uint16_t{0});
    } else {
        append(out, std::uint32_t{0x0409});
    }
    out.push_back(columnFlags(column, system));
    out.push_back(column.spec.compressed ? 1 : 0);
    append(out, std::uint32_t{0});
    append(out, column.fixedOffset);
    append(out, column.size);
}

void appendPhysicalIndex(const IndexPart& part, const TableLayout& layout, ByteVector& out) {
    const IndexSpec& spec = part.index->spec();
    append(out, kIndexMagic);
    for (std::size_t i = 0; i < kIndexColumnSlots; ++i) {
        const bool used = i < spec.columns.size();
        append(out, used ? layout.columns()[layout.indexOf(spec.columns[i].name)].id
                         : std::uint16_t{0xFFFF});
        out.push_back(used && spec.columns[i].ascending ? 1 : 0);
    }
    append(out, part.map.packed());
    append(out, raw(part.index->root()));
    append(out, std::uint32_t{0});
    unsigned flags = kAlwaysSetIndexFlag;
    if (spec.unique) flags |= 0x01;
    if (spec.ignoreNulls) flags |= 0x02;
    if (spec.required) flags |= 0x08;
    out.push_back(static_cast<std::uint8_t>(flags));
    out.insert(out.end(), 5, 0);
}

void appendLogicalIndex(const IndexSpec& spec, std::uint32_t number, ByteVector& out) {
    append(out, kDefinitionMagic);
    append(out, number);
    append(out, number);
    out.push_back(0);
    append(out, std::uint32_t{0xFFFFFFFF});
    append(out, std::uint32_t{0});
    out.push_back(4);
    out.push_back(4);
    out.push_back(spec.primary ? 1 : 0);
    append(out, std::uint32_t{0});
}

void appendLogicalIndexes(const std::vector<IndexPart>& parts, ByteVector& out) {
    std::vector<std::uint32_t> byName(parts.size());
    for (std::uint32_t i = 0; i < parts.size(); ++i) byName[i] = i;
    std::sort(byName.begin(), byName.end(), [&parts](std::uint32_t left, std::uint32_t right) {
        return lessIgnoringCase(parts[left].index->spec().name, parts[right].index->spec().name);
    });
    for (const std::uint32_t number : byName) {
        appendLogicalIndex(parts[number].index->spec(), number, out);
    }
    for (const std::uint32_t number : byName) appendName(out, parts[number].index->spec().name);
}

PageImage definitionPage(ByteView content, std::size_t contentOffset, jet::PageNumber next) {
    PageImage image{};
    std::copy(content.begin(), content.end(),
              image.begin() + static_cast<std::ptrdiff_t>(contentOffset));
    image[0] = 2;
    image[1] = 1;
    put(image, 4, raw(next));
    return image;
}

}  // namespace

ByteVector encodeDefinition(const DefinitionParts& parts) {
    ByteVector out;
    putHeader(parts, out);
    const std::vector<const PlacedColumn*> columns = storedOrder(parts);
    for (const IndexPart& part : parts.indexes) appendIndexCounters(part, out);
    for (const PlacedColumn* column : columns) appendColumn(*column, parts.system, out);
    for (const PlacedColumn* column : columns) appendName(out, column->spec.name);
    for (const IndexPart& part : parts.indexes) appendPhysicalIndex(part, *parts.layout, out);
    appendLogicalIndexes(parts.indexes, out);
    for (const PlacedColumn* column : columns) {
        if (!isLongValue(column->spec)) continue;
        const MapPair& maps = parts.longValueMaps.at(column->id);
        append(out, column->id);
        append(out, maps.owned.packed());
        append(out, maps.free.packed());
    }
    append(out, std::uint16_t{0xFFFF});
    put(std::span{out}, 8, static_cast<std::uint32_t>(out.size()));
    return out;
}

std::vector<jet::PageNumber> writeDefinition(PageFile& file, jet::PageNumber first,
                                             const ByteVector& definition) {
    // The buffer begins with the first page's own header; further pages have theirs in front.
    std::vector<jet::PageNumber> pages{first};
    std::size_t written = 0;
    for (std::size_t i = 0; written < definition.size(); ++i) {
        const std::size_t contentOffset = i == 0 ? 0 : kPageHeaderBytes;
        const std::size_t room = jet::kPageSize - contentOffset;
        const std::size_t count = std::min(room, definition.size() - written);
        const bool last = written + count == definition.size();
        if (!last) pages.push_back(file.allocate());
        PageImage image = definitionPage(ByteView{definition}.subspan(written, count),
                                         contentOffset, last ? jet::kNoPage : pages.back());
        // The free field counts the header of a page once more.
        const std::size_t used = contentOffset + count + kPageHeaderBytes;
        put(image, 2,
            static_cast<std::uint16_t>(used > jet::kPageSize ? 0 : jet::kPageSize - used));
        file.write(pages[i], image);
        written += count;
    }
    return pages;
}

}  // namespace fixture
