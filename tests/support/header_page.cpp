#include "tests/support/header_page.h"

#include <array>
#include <bit>
#include <numeric>
#include <stdexcept>

namespace fixture {

namespace {

constexpr std::size_t kScrambledBegin = 0x18;
constexpr std::size_t kScrambledBytes = 128;
constexpr std::size_t kDatabaseKey = 0x3E;
constexpr std::size_t kPassword = 0x42;
constexpr std::size_t kPasswordBytes = 40;
constexpr std::size_t kCommitBytes = 0xE00;
constexpr std::array<std::uint8_t, 4> kHeaderKey{0xC7, 0xDA, 0x39, 0x6B};

/// Scrambles the block or makes it plain again.
void scramble(std::span<std::uint8_t> header) {
    applyRc4(header.subspan(kScrambledBegin, kScrambledBytes), kHeaderKey);
}

/// The password's bytes are covered with the whole days of the creation date.
void coverPassword(std::span<std::uint8_t> header) {
    const auto days = static_cast<std::int32_t>(std::bit_cast<double>(kCreationDateBits));
    std::array<std::uint8_t, 4> cover{};
    put(cover, 0, days);
    for (std::size_t i = 0; i < kPasswordBytes; ++i) header[kPassword + i] ^= cover[i % 4];
}

void putPlainFields(std::span<std::uint8_t> header) {
    put(header, 0x18, std::uint32_t{0x00000100});  // map of free pages: row 0 of page 1
    put(header, 0x1C, std::uint32_t{0x00000101});
    for (std::uint32_t i = 0; i < 4; ++i) put(header, 0x20 + 4 * i, 2 + i);  // system tables
    put(header, 0x3C, std::uint16_t{1252});
    coverPassword(header);
    put(header, 0x6A, std::uint16_t{9756});  // build of the engine
    put(header, 0x6E, std::uint16_t{0x0409});
    put(header, 0x72, kCreationDateBits);
}

}  // namespace

PageImage headerPage() {
    PageImage page{};
    page[1] = 1;
    std::memcpy(page.data() + 4, "Standard Jet DB", 16);
    put(page, 0x14, std::uint32_t{1});
    putPlainFields(page);
    scramble(page);
    put(page, 0x98, std::uint32_t{0x654});
    std::memcpy(page.data() + 0x9C, "4.0", 4);
    for (std::size_t pair = kCommitBytes; pair < page.size(); pair += 2) page[pair + 1] = 1;
    page[kCommitBytes] = 1;
    return page;
}

void setPassword(ByteVector& file, std::u16string_view password) {
    if (password.size() * 2 > kPasswordBytes) throw std::length_error{"a password is too long"};
    const std::span header{file.data(), jet::kPageSize};
    scramble(header);
    std::memset(header.data() + kPassword, 0, kPasswordBytes);
    for (std::size_t i = 0; i < password.size(); ++i) {
        put(header, kPassword + 2 * i, static_cast<std::uint16_t>(password[i]));
    }
    coverPassword(header);
    scramble(header);
}

void encryptPages(ByteVector& file, std::uint32_t databaseKey) {
    const std::span whole{file};
    scramble(whole.first(jet::kPageSize));
    put(whole, kDatabaseKey, databaseKey);
    scramble(whole.first(jet::kPageSize));
    for (std::uint32_t page = 1; page < file.size() / jet::kPageSize; ++page) {
        std::array<std::uint8_t, 4> key{};
        put(key, 0, databaseKey ^ page);
        applyRc4(whole.subspan(page * jet::kPageSize, jet::kPageSize), key);
    }
}

void applyRc4(std::span<std::uint8_t> bytes, ByteView key) {
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    std::uint8_t j = 0;
    for (std::size_t i = 0; i < state.size(); ++i) {
        j = static_cast<std::uint8_t>(j + state[i] + key[i % key.size()]);
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

}  // namespace fixture
