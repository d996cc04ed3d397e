#include "tests/support/damage.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace fixture {

namespace {

constexpr std::size_t kSignature = 4;
constexpr std::size_t kVersion = 0x14;
constexpr std::uint16_t kOffsetMask = 0x1FFF;

ByteVector asBytes(std::string_view text) { return {text.begin(), text.end()}; }

}  // namespace

void poke(ByteVector& file, std::size_t offset, std::initializer_list<std::uint8_t> bytes) {
    const std::span place = std::span{file}.subspan(offset, bytes.size());
    std::copy(bytes.begin(), bytes.end(), place.begin());
}

void poke16(ByteVector& file, std::size_t offset, std::uint16_t value) {
    put(std::span{file}, offset, value);
}

void poke32(ByteVector& file, std::size_t offset, std::uint32_t value) {
    put(std::span{file}, offset, value);
}

std::size_t rowOffset(ByteView file, jet::RowId row) {
    return pageOffset(row.page()) + (get<std::uint16_t>(file, slotOffset(row)) & kOffsetMask);
}

std::size_t rowLength(ByteView file, jet::RowId row) {
    const std::size_t end = row.slot() == 0 ? pageOffset(row.page()) + jet::kPageSize
                                            : rowOffset(file, {row.page(), row.slot() - 1});
    return end - rowOffset(file, row);
}

std::size_t longValueHeaderOffset(ByteView file, jet::RowId row, unsigned variableIndex) {
    const std::size_t begin = rowOffset(file, row);
    const std::size_t maskBytes = (get<std::uint16_t>(file, begin) + 7u) / 8u;
    const std::size_t variableCount = begin + rowLength(file, row) - maskBytes - 2;
    return begin + get<std::uint16_t>(file, variableCount - 2 - 2 * std::size_t{variableIndex});
}

void loopChain(ByteVector& file, jet::RowId row) {
    poke32(file, rowOffset(file, row), row.packed());
}

void truncate(ByteVector& file, std::size_t length) { file.resize(std::min(file.size(), length)); }

ByteVector olderDatabase() {
    constexpr std::size_t kOlderPageSize = 2048;
    const PageImage newer = headerPage();
    ByteVector file{newer.begin(), newer.begin() + kOlderPageSize};
    claimVersion(file, 0);
    static constexpr std::uint8_t kPageTypes[] = {1, 2, 2, 2, 2, 1, 4};
    for (const std::uint8_t type : kPageTypes) {
        ByteVector page(kOlderPageSize);
        page[0] = type;
        page[1] = 1;
        appendBytes(file, page);
    }
    return file;
}

void claimAceSignature(ByteVector& file) {
    constexpr std::string_view kAce{"Standard ACE DB"};
    std::copy(kAce.begin(), kAce.end(), file.begin() + kSignature);
    claimVersion(file, 2);
}

void claimVersion(ByteVector& file, std::uint32_t version) { poke32(file, kVersion, version); }

ByteVector pngFile() {
    static constexpr std::array<std::uint8_t, 33> kImage{
        0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 13, 'I',  'H',  'D',  'R', 0,
        0,    0,   1,   0,   0,    0,    1,    8,    6, 0, 0, 0,  0x1F, 0x15, 0xC4, 0x89};
    ByteVector file{kImage.begin(), kImage.end()};
    file.resize(3 * jet::kPageSize);
    return file;
}

ByteVector zipFile() {
    ByteVector file{'P', 'K', 3, 4, 20, 0, 0, 0, 8, 0};
    file.resize(2 * jet::kPageSize);
    return file;
}

ByteVector textFile() { return asBytes("2006-05-02 08:00:00 a log, not a database\r\n"); }

}  // namespace fixture
