#include "engine/jet/header.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/catalog.h"
#include "engine/jet/format/header_page.h"
#include "engine/jet/format/page.h"
#include "engine/jet/format/table_definition.h"
#include "engine/jet/usage_map.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numeric>
#include <string_view>

namespace jet {
namespace {

using HeaderPage = std::array<std::uint8_t, kPageSize>;

namespace layout = format::header_page;

void unmask(std::span<std::uint8_t> bytes) {
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<std::uint8_t>(j + state[i] + layout::kMaskKey[i % layout::kMaskKey.size()]);
        std::swap(state[i], state[j]);
    }
    std::uint8_t i = 0;
    j = 0;
    for (std::uint8_t& byte : bytes) {
        i = static_cast<std::uint8_t>(i + 1);
        j = static_cast<std::uint8_t>(j + state[i]);
        std::swap(state[i], state[j]);
        byte ^= state[static_cast<std::uint8_t>(state[i] + state[j])];
    }
}

void checkSignature(Bytes start) {
    const auto begins = [&](std::string_view text) {
        return start.size() >= layout::kMasked &&
               std::memcmp(start.data() + layout::kSignature, text.data(), text.size()) == 0;
    };
    if (begins(layout::kAceSignature)) {
        throw Error{Fault::NewerFormat,
                    "The file is an ACE database (Access 2007 or later), not a Jet 4.0 one."};
    }
    if (!begins(layout::kJetSignature)) {
        throw Error{Fault::NotADatabase, "The file is not a Jet database."};
    }
    const std::uint32_t version = load(start, layout::kVersion);
    if (version == layout::kJet3) {
        throw Error{Fault::OlderFormat,
                    "The file is a Jet 3 database (Access 97), not a Jet 4.0 one."};
    }
    if (version != layout::kJet4) {
        throw Error{Fault::NewerFormat, "The file is a database of a later format than Jet 4.0."};
    }
}

bool hasPassword(Bytes header) {
    const double created = load(header, layout::kCreationDate);
    const bool sane = std::isfinite(created) && std::abs(created) < 2e9;
    const std::int32_t mask = sane ? static_cast<std::int32_t>(created) : 0;
    for (std::size_t i = 0; i < layout::kPasswordWords; ++i) {
        if (load(header, layout::passwordWord(i)) != mask) return true;
    }
    return false;
}

/// The number of the last page from `from` on whose bit is clear; 0 if all are set.
/// `firstPage` is the page of the first bit.
std::uint64_t lastClearBit(Bytes bitmap, std::uint64_t firstPage, std::uint64_t from) {
    for (std::size_t bit = bitmap.size() * 8; bit-- > 0 && firstPage + bit >= from;) {
        if (((bitmap[bit / 8] >> (bit % 8)) & 1u) == 0) return firstPage + bit;
    }
    return 0;
}

/// The last used page from `from` on that a map of the reference kind knows of; 0 if there is none
/// or the map makes no sense. A bitmap page is in use itself.
std::uint64_t lastUsedByReference(PageReader& pages, Bytes row, std::uint64_t from) {
    namespace map = format::usage_map;
    std::uint64_t last = 0;
    for (std::size_t i = 0; i < map::referenceCount(row.size()); ++i) {
        const PageNumber bitmap = load(row, map::reference(i));
        if (bitmap == kNoPage) {
            if (i == 0) return 0;  // not even the header page would be in use
            continue;
        }
        if (raw(bitmap) >= from) {
            last = std::max<std::uint64_t>(last, raw(bitmap));
            continue;
        }
        const Bytes page = pages.page(bitmap);
        if (load(page, format::page::kType) != format::PageType::Bitmap) return 0;
        last = std::max(last, lastClearBit(page.subspan(map::kBitmapBits),
                                           std::uint64_t{i} * map::kPagesPerBitmap, from));
    }
    return last;
}

/// The last page that the map of free pages counts as used, if it lies behind the end; else 0.
std::uint64_t lastPageMissing(PageReader& pages) {
    namespace map = format::usage_map;
    const std::uint32_t pageCount = pages.storage().pageCount();
    const std::vector<std::uint8_t> row = readUsageMapRow(pages, map::kFreePages);
    const map::Kind kind = load(row, map::kKind);
    std::uint64_t last = 0;
    if (kind == map::Kind::Inline) {
        last = lastClearBit(Bytes{row}.subspan(map::kBits), load(row, map::kFirstPage), pageCount);
    } else if (kind == map::Kind::Reference) {
        last = lastUsedByReference(pages, row, pageCount);
    }
    return last < format::page::kMaxCount ? last : 0;
}

}  // namespace

std::uint64_t missingPages(PageReader& pages) {
    std::uint64_t last = 0;
    try {
        last = lastPageMissing(pages);
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged) throw;
    }
    // Asked for again, as another program may be appending to the file.
    const std::uint64_t size = pages.storage().size();
    const std::uint64_t pageCount = size / kPageSize;
    if (last >= pageCount) return last + 1 - pageCount;
    return size % kPageSize == 0 ? 0 : 1;
}

void checkHeader(const Storage& storage) {
    HeaderPage page{};
    const std::size_t got = storage.readAt(0, page);
    checkSignature(Bytes{page}.first(got));
    if (got < page.size()) {
        throw Error{Fault::Truncated, "The file is truncated: it ends in the middle of a page."};
    }
    if (storage.pageCount() < format::page::kMinCount) {
        throw Error{Fault::Truncated, "The file is truncated: it ends before its catalog."};
    }
    unmask(std::span{page}.subspan(layout::kMasked, layout::kMaskedSize));
    if (load(page, layout::kDatabaseKey) != 0) {
        throw Error{Fault::Encrypted, "The database is encrypted."};
    }
    if (hasPassword(page)) {
        throw Error{Fault::PasswordProtected, "The database is protected by a password."};
    }
}

void writeHeader(Page& page) {
    constexpr std::uint64_t kCreated = 0x40E4AB3E3BD3853E;  // 2015-11-21
    constexpr std::uint16_t kBuild = 9756;
    constexpr std::uint16_t kAnsiCodePage = 1252;
    constexpr auto kCreationDate = std::bit_cast<double>(kCreated);
    page.fill(0);
    store(page, layout::kStart, layout::kStartValue);
    std::ranges::copy(layout::kJetSignature, page.begin() + layout::kSignature);
    store(page, layout::kVersion, layout::kJet4);
    store(page, layout::kFreePages, format::usage_map::kFreePages);
    store(page, layout::kSecondMap, format::usage_map::kSecondMap);
    store(page, layout::kSystemTables,
          {format::catalog::kObjects, format::catalog::kRights, format::catalog::kQueries,
           format::catalog::kRelationships});
    store(page, layout::kAnsiCodePage, kAnsiCodePage);
    for (std::size_t i = 0; i < layout::kPasswordWords; ++i) {
        store(page, layout::passwordWord(i), static_cast<std::int32_t>(kCreationDate));
    }
    store(page, layout::kBuild, kBuild);
    store(page, layout::kLanguage, format::column::kGeneral);
    store(page, layout::kCreationDate, kCreationDate);
    unmask(std::span{page}.subspan(layout::kMasked, layout::kMaskedSize));
    store(page, layout::kMagic, layout::kMagicValue);
    store(page, layout::kVersionText, layout::kVersionTextValue);
    store(page, layout::commitCounter(0), layout::kFirstExclusiveCommit);
    for (std::size_t user = 1; user < layout::kCommitCounters; ++user) {
        store(page, layout::commitCounter(user), layout::kFirstSharedCommit);
    }
}

}  // namespace jet
