// Page 0: what kind of file it is, and the block that is scrambled with a fixed key.
#pragma once

#include "tests/support/page_file.h"

#include <string_view>

namespace fixture {

/// The moment of creation that every database made here claims: 2015-11-21. The security
/// identifiers in the catalog are valid for this moment only.
inline constexpr std::uint64_t kCreationDateBits = 0x40E4AB3E3BD3853E;

/// The header of a Jet 4.0 database with neither password nor database key.
PageImage headerPage();

/// Changes a whole file in place: a password of up to 20 characters.
void setPassword(ByteVector& file, std::u16string_view password);

/// Encrypts every page but the first with a key that depends on `databaseKey` and the page.
void encryptPages(ByteVector& file, std::uint32_t databaseKey);

/// XORs `bytes` with the RC4 key stream of `key`.
void applyRc4(std::span<std::uint8_t> bytes, ByteView key);

}  // namespace fixture
