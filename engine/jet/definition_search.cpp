#include "engine/jet/definition_search.h"

#include "engine/jet/bytes.h"
#include "engine/jet/collation.h"
#include "engine/jet/format/data_page.h"
#include "engine/jet/format/page.h"
#include "engine/jet/text.h"

#include <algorithm>

namespace jet {
namespace {

namespace layout = format::table_definition;

/// As scans read.
constexpr std::uint32_t kBlockPages = 64;

/// Calls `look(number, page)` with all pages but the header.
template <typename Look>
void forAllPages(PageReader& pages, Look look) {
    const std::uint32_t count = pages.storage().pageCount();
    for (std::uint32_t first = 1; first < count; first += kBlockPages) {
        const std::uint32_t end = std::min(first + kBlockPages, count);
        pages.loadBlock(PageNumber{first}, end - first);
        for (std::uint32_t page = first; page < end; ++page) {
            look(PageNumber{page}, pages.page(PageNumber{page}));
        }
    }
}

bool isPageOf(Bytes page, format::PageType type) {
    return load(page, format::page::kType) == type &&
           load(page, format::page::kMark) == format::page::kInUse;
}

bool beginsDefinition(Bytes page) {
    return isPageOf(page, format::PageType::Definition) &&
           load(page, layout::kMagic) == layout::kMagicValue &&
           load(page, layout::kTableKind) == layout::kUserTable;
}

bool isNamed(const std::vector<CatalogEntry>& catalog, std::u16string_view name) {
    return std::ranges::any_of(catalog, [&](const CatalogEntry& entry) {
        return entry.isTable() && compareText(entry.name, name) == std::strong_ordering::equal;
    });
}

bool isTableOfTraces(const TableDefinition& definition) {
    return std::ranges::all_of(
        std::initializer_list<std::u16string_view>{u"Date", u"TraceNumber", u"TraceLevel",
                                                   u"Component", u"Trace"},
        [&](std::u16string_view name) { return definition.findColumn(name) != nullptr; });
}

std::u16string freeName(const std::vector<CatalogEntry>& catalog, unsigned& number) {
    for (;;) {
        const std::u16string name = u"Table" + toUtf16(std::to_string(++number));
        if (!isNamed(catalog, name)) return name;
    }
}

}  // namespace

std::vector<PageNumber> findDefinitions(PageReader& pages) {
    std::vector<PageNumber> found;
    forAllPages(pages, [&](PageNumber number, Bytes page) {
        if (beginsDefinition(page)) found.push_back(number);
    });
    return found;
}

std::vector<CatalogEntry> entriesOfLostTables(PageReader& pages,
                                              const std::vector<CatalogEntry>& catalog) {
    constexpr std::u16string_view kTraces = u"tblTraces";
    std::vector<CatalogEntry> all = catalog;
    unsigned number = 0;
    for (const PageNumber page : findDefinitions(pages)) {
        const bool known = std::ranges::any_of(catalog, [&](const CatalogEntry& entry) {
            return entry.isTable() && entry.definition() == page;
        });
        if (known) continue;
        try {
            const TableDefinition definition = TableDefinition::read(pages, page, {});
            const bool ofTraces = isTableOfTraces(definition) && !isNamed(all, kTraces);
            CatalogEntry entry;
            entry.id = raw(page);
            entry.type = format::catalog::kTable;
            entry.parentId = format::catalog::kTablesContainer;
            entry.name = ofTraces ? std::u16string{kTraces} : freeName(all, number);
            all.push_back(std::move(entry));
        } catch (const Error& error) {
            if (!isDamage(error)) throw;
        }
    }
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(catalog.size()));
    return all;
}

std::vector<PageNumber> findDataPages(PageReader& pages, PageNumber owner) {
    std::vector<PageNumber> found;
    forAllPages(pages, [&](PageNumber number, Bytes page) {
        if (isPageOf(page, format::PageType::Data) &&
            load(page, format::data_page::kOwner) == raw(owner)) {
            found.push_back(number);
        }
    });
    return found;
}

}  // namespace jet
