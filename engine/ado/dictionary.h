// The distinct texts of a column, each with a small number.
//
//   ado::Dictionary dictionary;
//   const std::uint32_t code = dictionary.code(field.bytes, rows, seen);
//   if (code != ado::Dictionary::kNoCode) jet::appendUtf16(dictionary.stored(code), text);
//
// Texts are kept as they are stored in the file, so that a known one is recognised without being
// decoded. One text in two stored forms has two codes. One thread adds; any thread may read the
// codes it has been told of.
#pragma once

#include "engine/ado/stable_array.h"
#include "engine/jet/format/types.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace ado {

class Dictionary {
public:
    /// As many codes as two bytes and the mark for Null leave room for.
    static constexpr std::uint32_t kMaxCodes = 65'535;

    Dictionary();

    static constexpr std::uint32_t kNoCode = 0xFFFF'FFFF;

    /// The code of `stored`, which is added if need be. kNoCode if the dictionary would not pay: it
    /// is full, takes more than a byte for each of `rows`, or nearly every text is another one.
    /// `rows` is the number of rows that the table is known to have, `seen` those added already.
    std::uint32_t code(jet::Bytes stored, std::uint64_t rows, std::uint64_t seen);

    /// Codes are 0 to size() - 1.
    std::uint32_t size() const { return size_.load(std::memory_order_acquire); }

    jet::Bytes stored(std::uint32_t code) const {
        const Entry& entry = entries_[code];
        return {entry.bytes, entry.length};
    }

    /// Memory held; for the thread that adds, or when it has ended.
    std::size_t byteCount() const;

private:
    struct Entry {
        const std::uint8_t* bytes = nullptr;
        std::uint32_t length = 0;
    };

    std::uint32_t& slotFor(jet::Bytes stored, std::uint64_t hash);
    bool worthAdding(jet::Bytes stored, std::uint64_t rows, std::uint64_t seen) const;
    const std::uint8_t* keep(jet::Bytes stored);
    void grow();

    StableArray<Entry> entries_;
    std::atomic<std::uint32_t> size_{0};

    // Of the adding thread only. A slot holds 16 bits of the hash and, below, the code + 1; 0 marks
    // an empty one.
    std::vector<std::uint32_t> slots_;
    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
    std::size_t blockBytes_ = 0;
    std::size_t blockUsed_ = 0;
    std::size_t textBytes_ = 0;
};

}  // namespace ado
