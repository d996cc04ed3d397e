// Damage and foreign files: what a reader must refuse or survive.
//
//   fixture::ByteVector file = builder.bytes();
//   fixture::poke(file, fixture::pageOffset(table.dataPages()[0]), {0x02});
//
// All functions change or make whole files in memory.
#pragma once

#include "tests/support/header_page.h"

#include <initializer_list>

namespace fixture {

constexpr std::size_t pageOffset(jet::PageNumber page) {
    return std::size_t{raw(page)} * jet::kPageSize;
}

/// Overwrites bytes. Requires: they lie within the file.
void poke(ByteVector& file, std::size_t offset, std::initializer_list<std::uint8_t> bytes);
void poke16(ByteVector& file, std::size_t offset, std::uint16_t value);
void poke32(ByteVector& file, std::size_t offset, std::uint32_t value);

/// Where the slot word of a row stands.
constexpr std::size_t slotOffset(jet::RowId row) {
    return pageOffset(row.page()) + 14 + 2 * row.slot();
}

/// Where the first byte of a row stands, as its slot says: of a record, of a usage map, of a part
/// of a long value.
std::size_t rowOffset(ByteView file, jet::RowId row);

/// The row's length, as its slot and the one before it say.
std::size_t rowLength(ByteView file, jet::RowId row);

/// The place of a Memo's or Ole's header in the record at `row`: its 12 bytes hold the length, the
/// row that has the content, and the stamp. `variableIndex` is the column's place among the
/// variable columns.
std::size_t longValueHeaderOffset(ByteView file, jet::RowId row, unsigned variableIndex);

/// Makes a chained long value, whose first part is `row`, a ring of that one part.
void loopChain(ByteVector& file, jet::RowId row);

/// Cuts the file.
void truncate(ByteVector& file, std::size_t length);

/// The first pages of a database of the generation before: 2 KiB a page, format version 0.
ByteVector olderDatabase();

/// Makes the file claim to be of a later generation, by the text of its signature or by its format
/// version alone.
void claimAceSignature(ByteVector& file);
void claimVersion(ByteVector& file, std::uint32_t version);

/// Small, valid beginnings of files that are no databases at all.
ByteVector pngFile();
ByteVector zipFile();
ByteVector textFile();

}  // namespace fixture
