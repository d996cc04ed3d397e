#include "engine/jet/write/definition_editor.h"

#include "engine/jet/collation.h"
#include "engine/jet/database.h"
#include "engine/jet/format/page.h"
#include "engine/jet/write/definition_blocks.h"

#include <algorithm>
#include <cstring>

namespace jet {
namespace {

namespace layout = format::table_definition;

using Block = DefinitionEditor::Block;

void appendBlock(Block& out, const Block& block) {
    out.insert(out.end(), block.begin(), block.end());
}

void appendName(Block& out, const std::u16string& name) {
    append(out, static_cast<std::uint16_t>(sizeof(char16_t) * name.size()));
    for (const char16_t unit : name) append(out, unit);
}

Block takeBlock(Reader& reader, std::size_t size) {
    const Bytes bytes = reader.take(size);
    return {bytes.begin(), bytes.end()};
}

std::u16string takeName(Reader& reader) {
    const Bytes bytes = reader.take(reader.next<std::uint16_t>());
    std::u16string name(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(name.data(), bytes.data(), sizeof(char16_t) * name.size());
    return name;
}

}  // namespace

DefinitionEditor::DefinitionEditor(WriteContext& context, PageNumber first)
    : context_{context}, first_{first} {
    PageReader pages{context.database.storage(), context.database.cache()};
    // Checks counts, lengths and the chain of pages.
    const TableDefinition checked = TableDefinition::read(pages, first, {});
    if (checked.losses.any()) throwDamaged(first, checked.losses.reasons.front().why);
    continuation_ = checked.continuation;

    const Bytes firstPage = pages.page(first);
    Block bytes{firstPage.begin(), firstPage.end()};
    for (const PageNumber number : continuation_) {
        const Bytes page = pages.page(number).subspan(layout::kPageHead);
        bytes.insert(bytes.end(), page.begin(), page.end());
    }
    Reader reader{Bytes{bytes}.first(load(bytes, layout::kLength)), first};
    head_ = takeBlock(reader, layout::kHeadSize);
    for (std::size_t i = 0; i < checked.physicalIndexes.size(); ++i) {
        counters_.push_back(takeBlock(reader, format::index_counter::kSize));
    }
    columns_.resize(checked.columns.size());
    for (Named& column : columns_) column.block = takeBlock(reader, format::column::kSize);
    for (Named& column : columns_) column.name = takeName(reader);
    for (std::size_t i = 0; i < checked.physicalIndexes.size(); ++i) {
        physical_.push_back(takeBlock(reader, format::physical_index::kSize));
    }
    logical_.resize(checked.logicalIndexes.size());
    for (Named& index : logical_) index.block = takeBlock(reader, format::logical_index::kSize);
    for (Named& index : logical_) index.name = takeName(reader);
    while (reader.remaining() >= format::long_value_maps::kSize) {
        Block maps = takeBlock(reader, format::long_value_maps::kSize);
        if (load(maps, format::long_value_maps::kColumn) == layout::kNoColumn) break;
        longValueMaps_.push_back(std::move(maps));
    }
}

DefinitionEditor::DefinitionEditor(WriteContext& context, PageNumber first, bool system,
                                   RowId ownedMap, RowId freeMap)
    : context_{context}, first_{first}, head_(layout::kHeadSize) {
    set(format::page::kType, format::PageType::Definition);
    set(format::page::kMark, format::page::kInUse);
    set(layout::kMagic, layout::kMagicValue);
    set(layout::kAutonumberStep, 1);
    set(layout::kTableKind, system ? layout::kSystemTable : layout::kUserTable);
    set(layout::kOwnedMap, ownedMap);
    set(layout::kFreeMap, freeMap);
}

void DefinitionEditor::addColumn(Block descriptor, std::u16string name) {
    columns_.push_back({std::move(descriptor), std::move(name)});
}

void DefinitionEditor::addPhysicalIndex(const PhysicalIndex& index, std::uint32_t entries,
                                        std::uint32_t distinctKeys) {
    physical_.push_back(encodePhysicalIndex(index));
    counters_.push_back(encodeIndexCounter(entries, distinctKeys));
}

void DefinitionEditor::addLogicalIndex(const LogicalIndex& index) {
    const auto behind = std::ranges::find_if(logical_, [&](const Named& other) {
        return compareText(other.name, index.name) == std::strong_ordering::greater;
    });
    logical_.insert(behind, {encodeLogicalIndex(index), index.name});
}

void DefinitionEditor::addLongValueMaps(std::uint16_t columnId, RowId owned, RowId free) {
    longValueMaps_.push_back(encodeLongValueMaps(columnId, owned, free));
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
    append(bytes, layout::kNoColumn);
    return bytes;
}

void DefinitionEditor::write() {
    set(layout::kColumnCount, static_cast<std::uint16_t>(columns_.size()));
    set(layout::kLogicalIndexCount, static_cast<std::uint32_t>(logical_.size()));
    set(layout::kPhysicalIndexCount, static_cast<std::uint32_t>(physical_.size()));
    Block bytes = encode();
    store(bytes, layout::kLength, static_cast<std::uint32_t>(bytes.size()));
    takePages(bytes.size());

    // The first page holds its own head; of the others all but the head is the definition's.
    std::size_t at = layout::kPageHead;
    for (std::size_t i = 0; i <= continuation_.size(); ++i) {
        const PageEdit page = context_.pager.edit(i == 0 ? first_ : continuation_[i - 1]);
        const std::size_t count = std::min(layout::kPageCapacity, bytes.size() - at);
        page->fill(0);
        store(*page, format::page::kType, format::PageType::Definition);
        store(*page, format::page::kMark, format::page::kInUse);
        store(*page, format::page::kFreeBytes, layout::freeBytes(layout::kPageHead + count));
        store(*page, layout::kNextPage, i < continuation_.size() ? continuation_[i] : kNoPage);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), count,
                    page->begin() + static_cast<std::ptrdiff_t>(layout::kPageHead));
        at += count;
    }
}

/// As many pages as a definition of `size` bytes needs.
void DefinitionEditor::takePages(std::size_t size) {
    const std::size_t behindFirst = size <= kPageSize ? 0 : size - kPageSize;
    const std::size_t count = (behindFirst + layout::kPageCapacity - 1) / layout::kPageCapacity;
    while (continuation_.size() < count) continuation_.push_back(context_.allocator.allocate());
    while (continuation_.size() > count) {
        context_.allocator.release(continuation_.back());
        continuation_.pop_back();
    }
}

}  // namespace jet
