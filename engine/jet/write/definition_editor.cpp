#include "engine/jet/write/definition_editor.h"

#include "engine/jet/collation.h"
#include "engine/jet/database.h"
#include "engine/jet/write/definition_blocks.h"

#include <algorithm>

namespace jet {
namespace {

constexpr std::uint8_t kDefinitionPageType = 2;
constexpr std::size_t kPageHead = 8;
constexpr std::size_t kLength = 8;
constexpr std::size_t kLogicalCount = 47;
constexpr std::size_t kPhysicalCount = 51;
constexpr std::size_t kCounterSize = 12;
constexpr std::size_t kColumnSize = 25;
constexpr std::size_t kPhysicalSize = 52;
constexpr std::size_t kLogicalSize = 28;
constexpr std::size_t kMapsSize = 10;
constexpr std::uint16_t kEnd = 0xFFFF;

using Block = DefinitionEditor::Block;

template <typename T>
void append(Block& out, T value) {
    const auto* const at = reinterpret_cast<const std::uint8_t*>(&value);
    out.insert(out.end(), at, at + sizeof value);
}

void appendBlock(Block& out, const Block& block) {
    out.insert(out.end(), block.begin(), block.end());
}

void appendName(Block& out, const std::u16string& name) {
    append(out, static_cast<std::uint16_t>(2 * name.size()));
    for (const char16_t unit : name) append(out, unit);
}

Block takeBlock(Reader& reader, std::size_t size) {
    const Bytes bytes = reader.take(size);
    return {bytes.begin(), bytes.end()};
}

std::u16string takeName(Reader& reader) {
    const Bytes bytes = reader.take(reader.next<std::uint16_t>());
    std::u16string name(bytes.size() / 2, u'\0');
    std::memcpy(name.data(), bytes.data(), 2 * name.size());
    return name;
}

void store16(Page& page, std::size_t offset, std::size_t value) {
    const auto stored = static_cast<std::uint16_t>(value);
    std::memcpy(page.data() + offset, &stored, sizeof stored);
}

void store32(Page& page, std::size_t offset, std::uint32_t value) {
    std::memcpy(page.data() + offset, &value, sizeof value);
}

}  // namespace

DefinitionEditor::DefinitionEditor(WriteContext& context, PageNumber first)
    : context_{context}, first_{first} {
    PageReader pages{context.database.storage(), context.database.cache()};
    // Checks counts, lengths and the chain of pages.
    const TableDefinition checked = TableDefinition::read(pages, first, {});
    continuation_ = checked.continuation;

    const Bytes firstPage = pages.page(first);
    Block bytes{firstPage.begin(), firstPage.end()};
    for (const PageNumber number : continuation_) {
        const Bytes page = pages.page(number).subspan(kPageHead);
        bytes.insert(bytes.end(), page.begin(), page.end());
    }
    Reader reader{Bytes{bytes}.first(load<std::uint32_t>(bytes, kLength)), first};
    head_ = takeBlock(reader, kHeadSize);
    for (std::size_t i = 0; i < checked.physicalIndexes.size(); ++i) {
        counters_.push_back(takeBlock(reader, kCounterSize));
    }
    columns_.resize(checked.columns.size());
    for (Named& column : columns_) column.block = takeBlock(reader, kColumnSize);
    for (Named& column : columns_) column.name = takeName(reader);
    for (std::size_t i = 0; i < checked.physicalIndexes.size(); ++i) {
        physical_.push_back(takeBlock(reader, kPhysicalSize));
    }
    logical_.resize(checked.logicalIndexes.size());
    for (Named& index : logical_) index.block = takeBlock(reader, kLogicalSize);
    for (Named& index : logical_) index.name = takeName(reader);
    while (reader.remaining() >= kMapsSize) {
        Block maps = takeBlock(reader, kMapsSize);
        if (load<std::uint16_t>(maps, 0) == kEnd) break;
        longValueMaps_.push_back(std::move(maps));
    }
}

DefinitionEditor::DefinitionEditor(WriteContext& context, PageNumber first, bool system,
                                   RowId ownedMap, RowId freeMap)
    : context_{context}, first_{first}, head_(kHeadSize) {
    head_[0] = kDefinitionPageType;
    head_[1] = 1;
    set(12, std::uint32_t{0x659});
    set(24, std::uint8_t{1});
    set(40, static_cast<std::uint8_t>(system ? 'S' : 'N'));
    set(55, ownedMap.packed());
    set(59, freeMap.packed());
}

void DefinitionEditor::addColumn(Block descriptor, std::u16string name) {
    columns_.push_back({std::move(descriptor), std::move(name)});
}

void DefinitionEditor::addPhysicalIndex(const PhysicalIndex& index, std::uint32_t entries,
                                        std::uint32_t distinctKeys) {
    physical_.push_back(encodePhysicalIndex(index));
    Block& counters = counters_.emplace_back();
    append(counters, entries);
    append(counters, distinctKeys);
    append(counters, std::uint32_t{0});
}

void DefinitionEditor::addLogicalIndex(const LogicalIndex& index) {
    const auto behind = std::ranges::find_if(logical_, [&](const Named& other) {
        return compareText(other.name, index.name) == std::strong_ordering::greater;
    });
    logical_.insert(behind, {encodeLogicalIndex(index), index.name});
}

void DefinitionEditor::addLongValueMaps(std::uint16_t columnId, RowId owned, RowId free) {
    Block& maps = longValueMaps_.emplace_back();
    append(maps, columnId);
    append(maps, owned.packed());
    append(maps, free.packed());
}

Block DefinitionEditor::encode() const {
    Block bytes = head_;
    for (const Block& counters : counters_) appendBlock(bytes, counters);
    for (const Named& column : columns_) appendBlock(bytes, column.block);
    for (const Named& column : columns_) appendName(bytes, column.name);
    for (const Block& index : physical_) appendBlock(bytes, index);
    for (const Named& index : logical_) appendBlock(bytes, index.block);
    for (const Named& index : logical_) appendName(bytes, index.name);
    for (const Block& maps : longValueMaps_) appendBlock(bytes, maps);
    append(bytes, kEnd);
    return bytes;
}

void DefinitionEditor::write() {
    set(kDefinitionColumns, static_cast<std::uint16_t>(columns_.size()));
    set(kLogicalCount, static_cast<std::uint32_t>(logical_.size()));
    set(kPhysicalCount, static_cast<std::uint32_t>(physical_.size()));
    set(kLength, std::uint32_t{0});
    Block bytes = encode();
    const auto length = static_cast<std::uint32_t>(bytes.size());
    std::memcpy(bytes.data() + kLength, &length, sizeof length);

    // The first page holds its own head; of the others all but the head is the definition's.
    constexpr std::size_t kPerPage = kPageSize - kPageHead;
    const std::size_t pageCount =
        bytes.size() <= kPageSize ? 1 : 1 + (bytes.size() - kPageSize + kPerPage - 1) / kPerPage;
    while (continuation_.size() + 1 < pageCount) {
        continuation_.push_back(context_.allocator.allocate());
    }
    while (continuation_.size() + 1 > pageCount) {
        context_.allocator.release(continuation_.back());
        continuation_.pop_back();
    }
    std::size_t at = kPageHead;
    for (std::size_t i = 0; i < pageCount; ++i) {
        const PageEdit page = context_.pager.edit(i == 0 ? first_ : continuation_[i - 1]);
        const std::size_t count = std::min(kPerPage, bytes.size() - at);
        page->fill(0);
        (*page)[0] = kDefinitionPageType;
        (*page)[1] = 1;
        const std::size_t used = kPageHead + (i == 0 ? at + count : kPageHead + count);
        store16(*page, 2, used < kPageSize ? kPageSize - used : 0);
        store32(*page, 4, i + 1 < pageCount ? raw(continuation_[i]) : 0);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), count,
                    page->begin() + static_cast<std::ptrdiff_t>(kPageHead));
        at += count;
    }
}

}  // namespace jet
