#include "engine/jet/check/definition.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/definition_parts.h"
#include "engine/jet/check/pages.h"
#include "engine/jet/record.h"

#include <algorithm>

namespace jet::checking {
namespace {

namespace layout = format::table_definition;

/// The definition's bytes, whose lengths and constants are checked without a view to their meaning.
class Layout {
public:
    Layout(Context& context, PageNumber first) : context_{context}, first_{first} {}

    /// Takes all pages; false if the definition has no end that can be found.
    bool gather() {
        PageReader pages = context_.reader();
        for (PageNumber next = first_; pageStarts_.empty() || next != kNoPage;) {
            if (pageStarts_.size() == layout::kMaxPages) {
                fail("the definition has too many pages");
                return false;
            }
            const auto page = takePage(context_, pages, next, {OwnerKind::Definition, first_},
                                       {PageType::Definition});
            if (!page) return false;
            pageStarts_.push_back({next, bytes_.size(), load(*page, format::page::kFreeBytes)});
            const std::size_t skipped = bytes_.empty() ? 0 : layout::kPageHead;
            bytes_.insert(bytes_.end(), page->begin() + static_cast<std::ptrdiff_t>(skipped),
                          page->end());
            next = load(*page, layout::kNextPage);
        }
        return true;
    }

    void check() {
        const std::uint32_t length = load(bytes_, layout::kLength);
        if (length < layout::kHeadSize || length > bytes_.size()) {
            return fail("the definition is longer than its pages");
        }
        for (const PageStart& page : pageStarts_) checkFreeBytes(page, length);
        try {
            walk(Reader{Bytes{bytes_}.first(length), first_});
        } catch (const Error&) {
            fail("the definition runs past its end");
        }
    }

private:
    struct PageStart {
        PageNumber number;
        std::size_t begin;  ///< of the page's part in bytes_
        std::uint16_t freeBytes;
    };

    void fail(const char* message) {
        context_.report.error(Rule::DefinitionLayout, first_, message);
    }

    void expect(bool right, const char* message) {
        if (!right) fail(message);
    }

    void checkFreeBytes(const PageStart& page, std::size_t length) {
        const std::size_t head = page.begin == 0 ? 0 : layout::kPageHead;
        const std::size_t part = length > page.begin ? length - page.begin : 0;
        const std::uint16_t expected = layout::freeBytes(head + part);
        if (page.freeBytes == expected) return;
        context_.report.error(Rule::DefinitionLayout, page.number,
                              std::to_string(expected) + " bytes are free, but the page says " +
                                  std::to_string(page.freeBytes));
    }

    void walk(Reader reader) {
        const Bytes header = reader.take(layout::kHeadSize);
        const std::uint16_t columns = load(header, layout::kColumnCount);
        const std::uint32_t logical = load(header, layout::kLogicalIndexCount);
        const std::uint32_t physical = load(header, layout::kPhysicalIndexCount);
        const std::uint8_t kind = load(header, layout::kTableKind);
        expect(load(header, layout::kMagic) == layout::kMagicValue,
               "the constant of the definition is wrong");
        expect(kind == layout::kUserTable || kind == layout::kSystemTable,
               "the kind of the table is unknown");
        for (std::uint32_t i = 0; i < physical; ++i) reader.take(format::index_counter::kSize);
        for (unsigned i = 0; i < columns; ++i) {
            const Bytes column = reader.take(format::column::kSize);
            expect(load(column, format::column::kMagic) == layout::kMagicValue,
                   "the constant of a column is wrong");
        }
        for (unsigned i = 0; i < columns; ++i) skipName(reader);
        for (std::uint32_t i = 0; i < physical; ++i) {
            const Bytes index = reader.take(format::physical_index::kSize);
            expect(
                load(index, format::physical_index::kMagic) == format::physical_index::kMagicValue,
                "the constant of an index is wrong");
        }
        for (std::uint32_t i = 0; i < logical; ++i) {
            const Bytes index = reader.take(format::logical_index::kSize);
            expect(load(index, format::logical_index::kMagic) == layout::kMagicValue,
                   "the constant of an index's name is wrong");
            if (load(index, format::logical_index::kPhysical) >= physical) {
                context_.report.error(Rule::IndexDefinition, first_, "an index has no tree");
            }
        }
        for (std::uint32_t i = 0; i < logical; ++i) skipName(reader);
        while (reader.next<std::uint16_t>() != layout::kNoColumn) {
            reader.take(format::long_value_maps::kSize - format::long_value_maps::kColumn.end());
        }
        expect(reader.remaining() == 0, "the definition ends before its stated length");
    }

    static void skipName(Reader& reader) { reader.take(reader.next<std::uint16_t>()); }

    Context& context_;
    PageNumber first_;
    std::vector<std::uint8_t> bytes_;  ///< the first page whole, of the others all but the headers
    std::vector<PageStart> pageStarts_;
};

/// Further checks trust the numbers of columns and the trees of indexes.
void requireSound(const TableDefinition& definition) {
    if (definition.losses.any()) {
        throw Error{Fault::Damaged, definition.losses.reasons.front().why, definition.page};
    }
    for (const Column& column : definition.columns) {
        if (column.id < definition.columnsEver) continue;
        throwDamaged(definition.page, "a column number is too high");
    }
}

}  // namespace

std::size_t fixedBytes(const Column& column) {
    if (column.type == ColumnType::Boolean) return 0;
    return storedSize(column);
}

std::optional<TableDefinition> checkDefinition(Context& context, PageNumber first,
                                               std::u16string name) {
    const std::uint64_t errorsBefore = context.report.report().errors;
    const auto giveUp = [&](const char* message) {
        context.ownersKnown = false;
        if (context.report.report().errors == errorsBefore) {
            context.report.error(Rule::DefinitionLayout, first, message);
        }
        return std::nullopt;
    };
    Layout layout{context, first};
    if (!layout.gather()) return giveUp("the definition cannot be read");
    layout.check();
    PageReader pages = context.reader();
    try {
        TableDefinition definition = TableDefinition::read(pages, first, std::move(name));
        requireSound(definition);
        checkColumns(context, definition);
        checkIndexes(context, definition);
        return definition;
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged) throw;
        return giveUp(error.what());
    }
}

}  // namespace jet::checking
