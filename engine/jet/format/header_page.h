// The header page, page 0: what kind of file this is, and how it is protected.
//
//   offset  size  meaning
//   0x00    4     00 01 00 00
//   0x04    16    "Standard Jet DB" or the signature of another format, ended by a zero byte
//   0x14    4     version: 0 = Jet 3, 1 = Jet 4, more = later
//   0x18    128   masked with the RC4 key stream of a fixed key; in it:
//   0x18    4       row id of the map of free pages
//   0x1C    4       row id of a second map, empty in every file seen
//   0x20    4 x 4   pages of the system tables' definitions
//   0x3C    2       ANSI code page
//   0x3E    4       database key, 0 = pages are stored plainly
//   0x42    40      password, masked with the whole days of the creation date
//   0x6A    2       build of the engine that made the file
//   0x6E    2       text order of new columns: language
//   0x71    1       and version
//   0x72    8       creation date
//   0x98    4       0x654
//   0x9C    4       "4.0"
//   0xA0    3424    zeros
//   0xE00   256 x 2 commit counters: for the user who opened the file alone, then for 255 others
//
// The mask is the same in every file; it protects nothing.
#pragma once

#include "engine/jet/format/field.h"
#include "engine/jet/format/types.h"

#include <array>
#include <string_view>

namespace jet::format::header_page {

inline constexpr Field<std::uint32_t> kStart{0x00};
inline constexpr std::size_t kSignature = 0x04;
inline constexpr Field<std::uint32_t> kVersion{0x14};
inline constexpr std::size_t kMasked = 0x18;
inline constexpr std::size_t kMaskedSize = 128;
inline constexpr Field<RowId> kFreePages{0x18};
inline constexpr Field<RowId> kSecondMap{0x1C};
inline constexpr Field<std::array<PageNumber, 4>> kSystemTables{0x20};
inline constexpr Field<std::uint16_t> kAnsiCodePage{0x3C};
inline constexpr Field<std::uint32_t> kDatabaseKey{0x3E};
inline constexpr std::size_t kPassword = 0x42;
inline constexpr Field<std::uint16_t> kBuild{0x6A};
inline constexpr Field<std::uint16_t> kLanguage{0x6E};
inline constexpr Field<std::uint8_t> kOrderVersion{0x71};
inline constexpr Field<double> kCreationDate{0x72};
inline constexpr Field<std::uint32_t> kMagic{0x98};
inline constexpr Field<std::uint32_t> kVersionText{0x9C};
inline constexpr std::size_t kZeros = 0xA0;
inline constexpr std::size_t kCommits = 0xE00;

/// Of kStart: the type of the page, and a mark that no other page has.
inline constexpr std::uint32_t kStartValue = 0x100;

inline constexpr std::string_view kJetSignature = "Standard Jet DB";
inline constexpr std::string_view kAceSignature = "Standard ACE DB";  ///< Access 2007 and later

inline constexpr std::uint32_t kJet3 = 0;
inline constexpr std::uint32_t kJet4 = 1;

inline constexpr std::array<std::uint8_t, 4> kMaskKey{0xC7, 0xDA, 0x39, 0x6B};

inline constexpr std::uint32_t kMagicValue = 0x654;
inline constexpr std::uint32_t kVersionTextValue = 0x302E34;  ///< "4.0"

/// The password is masked four bytes at a time.
inline constexpr std::size_t kPasswordWords = 10;
constexpr Field<std::int32_t> passwordWord(std::size_t index) {
    return {kPassword + sizeof(std::int32_t) * index};
}

inline constexpr std::size_t kCommitCounters = 256;
constexpr Field<std::uint16_t> commitCounter(std::size_t user) {
    return {kCommits + sizeof(std::uint16_t) * user};
}

/// Of a new file: the counter of those who open it alone, then that of everybody else.
inline constexpr std::uint16_t kFirstExclusiveCommit = 0x0101;
inline constexpr std::uint16_t kFirstSharedCommit = 0x0100;

}  // namespace jet::format::header_page
