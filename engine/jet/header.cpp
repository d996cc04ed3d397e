#include "engine/jet/header.h"

#include "engine/jet/bytes.h"
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

constexpr RowId kFreePages{PageNumber{1}, 0};

constexpr std::size_t kMasked = 0x18;
constexpr std::size_t kMaskedSize = 128;
constexpr std::size_t kDatabaseKey = 0x3E;
constexpr std::size_t kPassword = 0x42;
constexpr std::size_t kPasswordSize = 40;
constexpr std::size_t kCreationDate = 0x72;

/// The header, the map of free pages and the catalog: no database has fewer.
constexpr std::uint32_t kMinPages = 3;

/// The mask is the RC4 key stream of this fixed key.
constexpr std::array<std::uint8_t, 4> kMaskKey{0xC7, 0xDA, 0x39, 0x6B};

void unmask(std::span<std::uint8_t> bytes) {
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<std::uint8_t>(j + state[i] + kMaskKey[i % kMaskKey.size()]);
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
        return start.size() >= 0x18 && std::memcmp(start.data() + 4, text.data(), text.size()) == 0;
    };
    if (begins("Standard ACE DB")) {
        throw Error{Fault::NewerFormat,
                    "The file is an ACE database (Access 2007 or later), not a Jet 4.0 one."};
    }
    if (!begins("Standard Jet DB")) {
        throw Error{Fault::NotADatabase, "The file is not a Jet database."};
    }
    const auto version = load<std::uint32_t>(start, 0x14);
    if (version == 0) {
        throw Error{Fault::OlderFormat,
                    "The file is a Jet 3 database (Access 97), not a Jet 4.0 one."};
    }
    if (version != 1) {
        throw Error{Fault::NewerFormat, "The file is a database of a later format than Jet 4.0."};
    }
}

bool hasPassword(Bytes header) {
    const auto created = load<double>(header, kCreationDate);
    const bool sane = std::isfinite(created) && std::abs(created) < 2e9;
    const std::int32_t mask = sane ? static_cast<std::int32_t>(created) : 0;
    for (std::size_t i = 0; i < kPasswordSize; i += sizeof mask) {
        if (load<std::int32_t>(header, kPassword + i) != mask) return true;
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
    std::uint64_t last = 0;
    for (std::size_t i = 0; 1 + 4 * (i + 1) <= row.size(); ++i) {
        const PageNumber bitmap{load<std::uint32_t>(row, 1 + 4 * i)};
        if (bitmap == kNoPage) {
            if (i == 0) return 0;  // not even the header page would be in use
            continue;
        }
        if (raw(bitmap) >= from) {
            last = std::max<std::uint64_t>(last, raw(bitmap));
            continue;
        }
        const Bytes page = pages.page(bitmap);
        if (page[0] != kBitmapPageType) return 0;
        last = std::max(last, lastClearBit(page.subspan(kBitmapOffset),
                                           std::uint64_t{i} * kPagesPerBitmap, from));
    }
    return last;
}

/// The last page that the map of free pages counts as used, if it lies behind the end; else 0.
std::uint64_t lastPageMissing(PageReader& pages) {
    const std::uint32_t pageCount = pages.storage().pageCount();
    const std::vector<std::uint8_t> row = readUsageMapRow(pages, kFreePages);
    std::uint64_t last = 0;
    if (row[0] == 0) {
        last = lastClearBit(Bytes{row}.subspan(5), load<std::uint32_t>(row, 1), pageCount);
    } else if (row[0] == 1) {
        last = lastUsedByReference(pages, row, pageCount);
    }
    return last < kMaxFilePages ? last : 0;
}

}  // namespace

void checkLength(PageReader& pages) {
    std::uint64_t missing = 0;
    try {
        missing = lastPageMissing(pages);
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged) throw;
    }
    // Asked for again, as another program may be appending to the file.
    const std::uint32_t pageCount = pages.storage().pageCount();
    if (missing < pageCount) return;
    throw Error{Fault::Truncated, "The file is truncated: it holds " + std::to_string(pageCount) +
                                      " of " + std::to_string(missing + 1) + " pages."};
}

void checkHeader(const Storage& storage) {
    HeaderPage page{};
    const std::size_t got = storage.readAt(0, page);
    checkSignature(Bytes{page}.first(got));
    if (got < page.size() || storage.size() % kPageSize != 0) {
        throw Error{Fault::Truncated, "The file is truncated: it ends in the middle of a page."};
    }
    if (storage.pageCount() < kMinPages) {
        throw Error{Fault::Truncated, "The file is truncated: it ends before its catalog."};
    }
    unmask(std::span{page}.subspan(kMasked, kMaskedSize));
    if (load<std::uint32_t>(page, kDatabaseKey) != 0) {
        throw Error{Fault::Encrypted, "The database is encrypted."};
    }
    if (hasPassword(page)) {
        throw Error{Fault::PasswordProtected, "The database is protected by a password."};
    }
}

void writeHeader(Page& page) {
    constexpr std::string_view kSignature = "Standard Jet DB";
    constexpr std::string_view kVersionText = "4.0";
    constexpr std::uint64_t kCreated = 0x40E4AB3E3BD3853E;  // 2015-11-21
    constexpr std::uint32_t kBuild = 9756;
    constexpr std::uint16_t kAnsiCodePage = 1252;
    constexpr std::uint16_t kGeneral = 0x0409;
    constexpr std::size_t kCommitBytes = 0xE00;
    page.fill(0);
    const auto put = [&](std::size_t offset, auto value) {
        std::memcpy(page.data() + offset, &value, sizeof value);
    };
    page[1] = 1;
    std::ranges::copy(kSignature, page.begin() + 4);
    put(0x14, std::uint32_t{1});
    put(0x18, RowId{PageNumber{1}, 0}.packed());
    put(0x1C, RowId{PageNumber{1}, 1}.packed());
    for (std::uint32_t table = 0; table < 4; ++table) put(0x20 + 4 * table, 2 + table);
    put(0x3C, kAnsiCodePage);
    const auto mask = static_cast<std::int32_t>(std::bit_cast<double>(kCreated));
    for (std::size_t i = 0; i < kPasswordSize; i += sizeof mask) put(kPassword + i, mask);
    put(0x6A, kBuild);
    put(0x6E, kGeneral);
    put(kCreationDate, kCreated);
    unmask(std::span{page}.subspan(kMasked, kMaskedSize));
    put(0x98, std::uint32_t{0x654});
    std::ranges::copy(kVersionText, page.begin() + 0x9C);
    page[kCommitBytes] = 1;
    for (std::size_t at = kCommitBytes + 1; at < kPageSize; at += 2) page[at] = 1;
}

}  // namespace jet
