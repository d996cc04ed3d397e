#include "engine/jet/check/long_values.h"

#include "engine/jet/bytes.h"
#include "engine/jet/check/maps.h"
#include "engine/jet/check/pages.h"
#include "engine/jet/format/long_value.h"
#include "engine/jet/text.h"

#include <algorithm>

namespace jet::checking {
namespace {

namespace layout = format::long_value;

}  // namespace

LongValueCheck::LongValueCheck(Context& context, const TableDefinition& definition,
                               std::size_t place)
    : context_{context}, column_{definition.columns[place]}, reader_{context.reader()} {
    const PageNumber table = definition.page;
    const std::string name = toUtf8(column_.name);
    const auto owned = readMap(context, column_.ownedMap, table, "the map of column " + name);
    const std::string role = "the map of pages with room of column " + name;
    const auto free = readMap(context, column_.freeMap, table, role);
    if (owned) {
        takePages(*owned, {OwnerKind::LongValues, table, static_cast<unsigned>(place)});
        if (free) checkFreeMap(context, *owned, *free, role);
    }
    if (!owned || !free) {
        context.ownersKnown = false;
        complete_ = complete_ && owned.has_value();
    }
}

void LongValueCheck::takePages(const std::vector<PageNumber>& pages, const Owner& owner) {
    for (const PageNumber number : pages) {
        const auto page = takePage(context_, reader_, number, owner, {PageType::Data});
        const bool owned =
            page && checkPageOwner(context_, *page, number, format::data_page::kLongValueOwner);
        if (!owned || !checkDataPage(context_, *page, number)) {
            complete_ = false;
            continue;
        }
        pages_.push_back({number, parts_.size()});
        const DataPage rows{*page, number};
        for (unsigned i = 0; i < rows.slotCount(); ++i) {
            const auto slot = rows.slot(i);
            parts_.push_back(slot && !slot->deleted ? Part::Unused : Part::Absent);
        }
    }
}

LongValueCheck::Part* LongValueCheck::find(RowId part) {
    const auto page = std::lower_bound(
        pages_.begin(), pages_.end(), part.page(),
        [](const Page& candidate, PageNumber number) { return candidate.number < number; });
    if (page == pages_.end() || page->number != part.page()) return nullptr;
    const bool last = page + 1 == pages_.end();
    const std::size_t end = last ? parts_.size() : (page + 1)->firstPart;
    const std::size_t place = page->firstPart + part.slot();
    return place < end && parts_[place] != Part::Absent ? &parts_[place] : nullptr;
}

bool LongValueCheck::fail(RowId row, const std::string& message) {
    context_.report.error(Rule::LongValue, row, toUtf8(column_.name) + ": " + message);
    return false;
}

bool LongValueCheck::check(Bytes field, RowId row) {
    if (field.empty()) return true;
    const std::uint32_t word = load(field, layout::kLength);
    const std::size_t length = word & layout::kLengthMask;
    if ((word & layout::kInline) != 0) return checkInline(field, length, row);
    if (field.size() != layout::kHeadSize)
        return fail(row, "bytes follow the head of the long value");
    const RowId part = load(field, layout::kRow);
    if (length == 0 && part.page() == kNoPage) return true;
    ++context_.report.report().longValues;
    return (word & layout::kSingle) != 0 ? checkSingle(part, length, row)
                                         : checkChain(field, part, length, row);
}

bool LongValueCheck::checkInline(Bytes field, std::size_t length, RowId row) {
    if (field.size() != layout::kHeadSize + length) {
        return fail(row, "the long value is not as long as it says");
    }
    return checkCharacters(field.subspan(layout::kHeadSize), length, row);
}

bool LongValueCheck::checkSingle(RowId part, std::size_t length, RowId row) {
    const auto bytes = takePart(part, row);
    if (!bytes) return false;
    if (bytes->size() != length) return fail(row, "the long value is not as long as it says");
    return checkCharacters(*bytes, length, row);
}

bool LongValueCheck::checkChain(Bytes field, RowId part, std::size_t length, RowId row) {
    std::size_t found = 0;
    for (bool first = true; part.page() != kNoPage; first = false) {
        // No part is taken twice, so a ring ends.
        const auto bytes = takePart(part, row);
        if (!bytes) return false;
        if (bytes->size() <= layout::kPiece) return fail(row, "a part of the long value is empty");
        const RowId next = load(*bytes, layout::kNext);
        if (first) {
            if (!checkCharacters(bytes->subspan(layout::kPiece), length, row)) return false;
            const Bytes page = reader_.page(part.page());
            if (load(page, format::data_page::kStamp) != load(field, layout::kStamp)) {
                return fail(row, "the first page of the long value has another stamp");
            }
        }
        found += bytes->size() - layout::kPiece;
        part = next;
    }
    return found == length || fail(row, "the long value is not as long as it says");
}

std::optional<Bytes> LongValueCheck::takePart(RowId part, RowId row) {
    Part* const state = find(part);
    if (state == nullptr) {
        // Parts on a page that was reported are not reported again.
        const bool onLostPage = !complete_ && context_.inFile(part.page()) &&
                                context_.owners.of(part.page()).kind == OwnerKind::LongValues;
        if (!onLostPage) fail(row, "the column has no part of a long value on " + nameOf(part));
        return std::nullopt;
    }
    if (*state == Part::Used) {
        fail(row, "another long value uses the part on " + nameOf(part));
        return std::nullopt;
    }
    *state = Part::Used;
    const auto slot = DataPage{reader_.page(part.page()), part.page()}.slot(part.slot());
    if (!slot || slot->pointer || slot->moved) {
        fail(row, "the part on " + nameOf(part) + " is marked as moved");
        return std::nullopt;
    }
    return slot->bytes;
}

bool LongValueCheck::checkCharacters(Bytes beginning, std::size_t length, RowId row) {
    if (column_.type != ColumnType::Memo || length % format::text::kUnitSize == 0) return true;
    return isCompressedText(beginning) || fail(row, "the text ends in half a character");
}

void LongValueCheck::finish() {
    if (!complete_) return;
    for (std::size_t i = 0; i < pages_.size(); ++i) {
        const std::size_t end = i + 1 < pages_.size() ? pages_[i + 1].firstPart : parts_.size();
        for (std::size_t part = pages_[i].firstPart; part < end; ++part) {
            if (parts_[part] != Part::Unused) continue;
            const auto slot = static_cast<unsigned>(part - pages_[i].firstPart);
            context_.report.warning(Rule::UnusedLongValue, RowId{pages_[i].number, slot},
                                    toUtf8(column_.name) + ": no record uses this part");
        }
    }
}

}  // namespace jet::checking
