#include "engine/jet/check/definition.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/definition_parts.h"
#include "engine/jet/check/pages.h"
#include "engine/jet/record.h"

#include <algorithm>

namespace jet::checking {
namespace {

constexpr std::size_t kPageHeader = 8;
constexpr std::size_t kVariablePart = 63;
constexpr std::size_t kColumnSize = 25;
constexpr std::size_t kCounterSize = 12;
constexpr std::size_t kPhysicalIndexSize = 52;
constexpr std::size_t kLogicalIndexSize = 28;
constexpr std::size_t kLongValueMapSize = 8;
constexpr std::uint32_t kDefinitionMark = 0x659;
constexpr std::uint32_t kIndexMark = 0x783;
constexpr std::uint16_t kEnd = 0xFFFF;
constexpr std::size_t kMaxPages = 65;

/// The definition's bytes, whose lengths and constants are checked without a view to their meaning.
class Layout {
public:
    Layout(Context& context, PageNumber first) : context_{context}, first_{first} {}

    /// Takes all pages; false if the definition has no end that can be found.
    bool gather() {
        PageReader pages = context_.reader();
        for (PageNumber next = first_; pageStarts_.empty() || next != kNoPage;) {
            if (pageStarts_.size() == kMaxPages) {
                fail("the definition has too many pages");
                return false;
            }
            const auto page = takePage(context_, pages, next, {OwnerKind::Definition, first_},
                                       {kDefinitionPageType});
            if (!page) return false;
            pageStarts_.push_back({next, bytes_.size(), load<std::uint16_t>(*page, 2)});
            const std::size_t skipped = bytes_.empty() ? 0 : kPageHeader;
            bytes_.insert(bytes_.end(), page->begin() + static_cast<std::ptrdiff_t>(skipped),
                          page->end());
            next = PageNumber{load<std::uint32_t>(*page, 4)};
        }
        return true;
    }

    void check() {
        const auto length = load<std::uint32_t>(bytes_, 8);
        if (length < kVariablePart || length > bytes_.size()) {
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

    /// The field counts the header of a page once more.
    void checkFreeBytes(const PageStart& page, std::size_t length) {
        const std::size_t header = page.begin == 0 ? 0 : kPageHeader;
        const std::size_t part = length > page.begin ? length - page.begin : 0;
        const std::size_t used = header + part + kPageHeader;
        const std::size_t expected = used < kPageSize ? kPageSize - used : 0;
        if (page.freeBytes == expected) return;
        context_.report.error(Rule::DefinitionLayout, page.number,
                              std::to_string(expected) + " bytes are free, but the page says " +
                                  std::to_string(page.freeBytes));
    }

    void walk(Reader reader) {
        const Bytes header = reader.take(kVariablePart);
        const auto columns = load<std::uint16_t>(header, 45);
        const auto logical = load<std::uint32_t>(header, 47);
        const auto physical = load<std::uint32_t>(header, 51);
        expect(load<std::uint32_t>(header, 12) == kDefinitionMark,
               "the constant of the definition is wrong");
        expect(header[40] == 'N' || header[40] == 'S', "the kind of the table is unknown");
        for (std::uint32_t i = 0; i < physical; ++i) reader.take(kCounterSize);
        for (unsigned i = 0; i < columns; ++i) {
            expect(load<std::uint32_t>(reader.take(kColumnSize), 1) == kDefinitionMark,
                   "the constant of a column is wrong");
        }
        for (unsigned i = 0; i < columns; ++i) skipName(reader);
        for (std::uint32_t i = 0; i < physical; ++i) {
            expect(load<std::uint32_t>(reader.take(kPhysicalIndexSize), 0) == kIndexMark,
                   "the constant of an index is wrong");
        }
        for (std::uint32_t i = 0; i < logical; ++i) {
            const Bytes index = reader.take(kLogicalIndexSize);
            expect(load<std::uint32_t>(index, 0) == kDefinitionMark,
                   "the constant of an index's name is wrong");
            if (load<std::uint32_t>(index, 8) >= physical) {
                context_.report.error(Rule::IndexDefinition, first_, "an index has no tree");
            }
        }
        for (std::uint32_t i = 0; i < logical; ++i) skipName(reader);
        while (reader.next<std::uint16_t>() != kEnd) reader.take(kLongValueMapSize);
        expect(reader.remaining() == 0, "the definition ends before its stated length");
    }

    static void skipName(Reader& reader) { reader.take(reader.next<std::uint16_t>()); }

    Context& context_;
    PageNumber first_;
    std::vector<std::uint8_t> bytes_;  ///< the first page whole, of the others all but the headers
    std::vector<PageStart> pageStarts_;
};

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
        checkColumns(context, definition);
        checkIndexes(context, definition);
        return definition;
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged) throw;
        return giveUp(error.what());
    }
}

}  // namespace jet::checking
