#include "engine/jet/check/check.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/catalog.h"
#include "engine/jet/check/maps.h"
#include "engine/jet/check/pages.h"
#include "engine/jet/database.h"
#include "engine/jet/header.h"

namespace jet {
namespace checking {
namespace {

/// A file without the piece of a page at its end.
class WholePages : public Storage {
public:
    explicit WholePages(const Storage& storage) : storage_{storage} {}

    std::uint64_t size() const override { return storage_.size() / kPageSize * kPageSize; }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        return storage_.readAt(offset, buffer);
    }

private:
    const Storage& storage_;
};

void checkFileLength(Context& context, const Storage& storage) {
    const auto fail = [&](const char* message) {
        context.report.error(Rule::FileLength, kNoPage, message);
    };
    if (storage.size() % kPageSize != 0) fail("the file ends in the middle of a page");
    if (storage.size() / kPageSize > format::page::kMaxCount) fail("the file is too large");
    PageReader pages = context.reader();
    // A piece of a page is a page that is missing.
    const std::uint64_t missing = missingPages(pages);
    if (missing > 1 || (missing == 1 && storage.size() % kPageSize == 0)) {
        fail("the file ends before pages that are in use");
    }
}

/// What each page is, when everything that refers to pages was looked at.
void checkRemainingPages(Context& context, const std::vector<bool>& free) {
    PageReader pages = context.reader();
    for (std::uint32_t i = 1; i < context.pageCount; ++i) {
        const PageNumber page{i};
        const Owner owner = context.owners.of(page);
        if (owner.kind != OwnerKind::None) {
            if (!free[i]) continue;
            context.report.error(Rule::PageOwnership, page,
                                 "the page is listed as free, but belongs to " + describe(owner));
        } else if (!free[i] && context.ownersKnown) {
            if (load(pages.page(page), format::page::kType) == PageType::Definition) {
                context.report.error(Rule::Catalog, page,
                                     "no object of the catalog has the definition on this page");
            } else {
                context.report.warning(Rule::OrphanPage, page, "nothing refers to the page");
            }
        }
    }
}

}  // namespace
}  // namespace checking

CheckReport check(const Storage& storage) {
    const checking::WholePages whole{storage};
    checkHeader(whole);
    checking::Context context{whole};
    checking::checkFileLength(context, storage);
    checking::checkHeaderPage(context);
    const auto free = checking::readFreePages(context);
    checking::checkCatalog(context);
    if (free) checking::checkRemainingPages(context, *free);
    context.report.report().pages = context.pageCount;
    return std::move(context.report.report());
}

CheckReport check(const Database& database) { return check(database.storage()); }

}  // namespace jet
