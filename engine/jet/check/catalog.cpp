#include "engine/jet/check/catalog.h"

#include "engine/jet/check/table.h"
#include "engine/jet/database.h"
#include "engine/jet/text.h"

#include <algorithm>

namespace jet::checking {
namespace {

namespace layout = format::catalog;

struct Object {
    RowId row;
    CatalogEntry entry;
};

template <typename T>
T valueOr(Context& context, const Column& column, const Record& record, T otherwise) {
    PageReader pages = context.reader();
    const Value value = decodeField(pages, column, record.field(column), record.page());
    const T* const held = std::get_if<T>(&value);
    return held == nullptr ? otherwise : *held;
}

class CatalogCheck {
public:
    explicit CatalogCheck(Context& context) : context_{context} {}

    void run() {
        const auto catalog = checkTable(context_, layout::kObjects, u"MSysObjects");
        if (!catalog) return;
        readObjects(*catalog);
        checkTables();
        if (rights_) checkRights(*rights_);
        context_.report.setTable({});
    }

private:
    void fail(const Object& object, const char* message) {
        context_.report.setTable(u"MSysObjects");
        context_.report.error(Rule::Catalog, object.row,
                              toUtf8(object.entry.name) + ": " + message);
    }

    void readObjects(const CheckedTable& catalog) {
        const TableDefinition& definition = catalog.definition;
        const Column* const id = definition.findColumn(u"Id");
        const Column* const name = definition.findColumn(u"Name");
        const Column* const type = definition.findColumn(u"Type");
        const Column* const flags = definition.findColumn(u"Flags");
        if (id == nullptr || name == nullptr || type == nullptr || flags == nullptr) {
            context_.report.error(Rule::Catalog, definition.page, "the catalog lacks a column");
            context_.ownersKnown = false;
            return;
        }
        forEachRow(context_, definition, catalog.rows, [&](std::size_t, RowId row, Bytes bytes) {
            const Record record{bytes, row.page()};
            Object object{row, {}};
            object.entry.id = asNumber(*id, record);
            object.entry.name = valueOr<std::u16string>(context_, *name, record, {});
            object.entry.type = valueOr<std::int16_t>(context_, *type, record, 0);
            object.entry.flags = asNumber(*flags, record);
            context_.objectPages.insert(raw(object.entry.definition()));
            if (object.entry.isTable()) tables_.push_back(std::move(object));
        });
        const std::vector<bool>& sound = catalog.rows.sound;
        const bool allSound = std::find(sound.begin(), sound.end(), false) == sound.end();
        // Tables may be missing from what could be read.
        if (!catalog.rows.complete || !allSound) context_.ownersKnown = false;
    }

    std::uint32_t asNumber(const Column& column, const Record& record) {
        return static_cast<std::uint32_t>(valueOr<std::int32_t>(context_, column, record, 0));
    }

    void checkTables() {
        std::unordered_set<std::uint32_t> ids{raw(layout::kObjects)};
        bool catalogListed = false;
        for (const Object& object : tables_) {
            const PageNumber page = object.entry.definition();
            if (page == layout::kObjects && !catalogListed) {
                catalogListed = true;
            } else if (!ids.insert(raw(page)).second) {
                fail(object, "another object has the same table");
            } else if (!isDefinition(page)) {
                fail(object, "there is no definition of the table on its page");
            } else {
                auto table = checkTable(context_, page, object.entry.name);
                if (page == layout::kRights) rights_ = std::move(table);
            }
        }
        if (catalogListed || !context_.ownersKnown) return;
        context_.report.setTable(u"MSysObjects");
        context_.report.error(Rule::Catalog, layout::kObjects, "the catalog does not list itself");
    }

    bool isDefinition(PageNumber page) {
        if (!context_.inFile(page)) return false;
        const auto type = load(context_.reader().page(page), format::page::kType);
        return type == format::PageType::Definition;
    }

    void checkRights(const CheckedTable& rights) {
        const Column* const id = rights.definition.findColumn(u"ObjectId");
        if (id == nullptr) return;
        std::unordered_set<std::uint32_t> known;
        forEachRow(context_, rights.definition, rights.rows,
                   [&](std::size_t, RowId row, Bytes bytes) {
                       known.insert(asNumber(*id, Record{bytes, row.page()}));
                   });
        if (!rights.rows.complete) return;
        for (const Object& object : tables_) {
            if (!object.entry.isUserTable() || known.contains(object.entry.id)) continue;
            context_.report.setTable(object.entry.name);
            context_.report.error(Rule::AccessRights, object.row,
                                  "nobody has a right to the table");
        }
    }

    Context& context_;
    std::vector<Object> tables_;
    std::optional<CheckedTable> rights_;
};

}  // namespace

void checkCatalog(Context& context) { CatalogCheck{context}.run(); }

}  // namespace jet::checking
