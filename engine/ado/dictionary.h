// The distinct texts of a column, each with a small number as its code.
//
//   ado::Dictionary dictionary;
//   const std::uint32_t code = dictionary.code(field.bytes, rows, seen);
//   if (code != ado::Dictionary::kNoCode) jet::appendUtf16(dictionary.stored(code), text);
//
// Texts are kept as stored in the file, so that known ones are recognised without decoding. A text
// stored in two forms has two codes. One thread adds; any thread may read the codes that it has
// been given.
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
    /// As many codes as fit in two bytes beside the code for Null.
    static constexpr std::uint32_t kMaxCodes = 65'535;

    Dictionary();

    static constexpr std::uint32_t kNoCode = 0xFFFF'FFFF;

    /// The code of `stored`, which is added if necessary. kNoCode if a dictionary does not pay off:
    /// it is full, needs more than a byte per row, or nearly every text is distinct.
    /// `rows` is the expected number of rows in the table, `seen` the number added so far.
    std::uint32_t code(jet::Bytes stored, std::uint64_t rows, std::uint64_t seen);

    /// Codes are 0 to size() - 1.
    std::uint32_t size() const { return size_.load(std::memory_order_acquire); }

    jet::Bytes stored(std::uint32_t code) const {
        const Entry& entry = entries_[code];
        return {entry.bytes, entry.length};
    }

    /// Memory in use. Only the adding thread may call, or any when it has ended.
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

    // Used by the adding thread only. A slot is 16 bits of the hash and, below, the code + 1; 0 is
    // an empty slot.
    std::vector<std::uint32_t> slots_;
    std::vector<std::unique_ptr<std::uint8_t[]>> blocks_;
    std::size_t blockBytes_ = 0;
    std::size_t blockUsed_ = 0;
    std::size_t textBytes_ = 0;
};

}  // namespace ado
