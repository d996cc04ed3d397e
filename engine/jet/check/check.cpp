#include "engine/jet/check/check.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/catalog.h"
#include "engine/jet/check/maps.h"
#include "engine/jet/check/pages.h"
#include "engine/jet/database.h"
#include "engine/jet/header.h"
#include "engine/jet/recovery.h"

#include <utility>

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

/// The office program leaves definitions behind that no object leads to; had the catalog lost the
/// object, its indexes would still have it.
void checkUnusedPage(Context& context, PageNumber page, bool isDefinition) {
    if (isDefinition && context.objectPages.contains(raw(page))) {
        context.report.error(Rule::Catalog, page,
                             "the object of the catalog that has this definition is no table");
    } else {
        context.report.warning(Rule::OrphanPage, page,
                               isDefinition ? "no object of the catalog has this definition"
                                            : "nothing refers to the page");
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
            const auto type = load(pages.page(page), format::page::kType);
            checkUnusedPage(context, page, type == PageType::Definition);
        }
    }
}

void checkJournal(Reporter& reporter, const std::string& name, const Recovery& recovery) {
    if (!recovery.journalRemains) return;
    if (recovery.incomplete) return reporter.error(Rule::Journal, kNoPage, recovery.obstacle);
    std::string message = recovery.obstacle;
    if (recovery.pagesLaidOver != 0) {
        message = "A change was interrupted; " + std::to_string(recovery.pagesLaidOver) +
                  " pages are checked as they are in " + name + ".";
    } else if (message.empty()) {
        message = "The file " + name + " is what is left of a complete change.";
    }
    reporter.warning(Rule::Journal, kNoPage, message);
}

CheckReport run(const Storage& storage, const std::function<void(Reporter&)>& first) {
    const WholePages whole{storage};
    checkHeader(whole);
    Context context{whole};
    first(context.report);
    checkFileLength(context, storage);
    checkHeaderPage(context);
    const auto free = readFreePages(context);
    checkCatalog(context);
    if (free) checkRemainingPages(context, *free);
    context.report.report().pages = context.pageCount;
    return std::move(context.report.report());
}

}  // namespace
}  // namespace checking

CheckReport check(const Storage& storage) {
    return checking::run(storage, [](checking::Reporter&) {});
}

CheckReport checkFile(std::unique_ptr<Storage> file) {
    Recovery recovery;
    file = viewRecovered(std::move(file), recovery);
    return checking::run(*file, [&](checking::Reporter& reporter) {
        checking::checkJournal(reporter, file->journalName(), recovery);
    });
}

CheckReport check(const Database& database) { return check(database.storage()); }

}  // namespace jet
