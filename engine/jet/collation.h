// The "General" text order of this format (LCID 0x0409, version 0), the one that index keys are
// made of: letters without case, accents second, hyphens and apostrophes last, trailing blanks
// ignored. Two texts are equal exactly if their keys are.
//
//   if (jet::compareText(u"Notifier", u"NOTIFIER") == std::strong_ordering::equal) use(text);
//   names.emplace(jet::textKey(text), table);
//
// Pure functions; any thread may call them.
#pragma once

#include "engine/jet/format/types.h"

#include <compare>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// Appends the key of `text`, without the flag byte that marks null in an index: weights, then
/// what tells accents and ignored characters apart, ended by a zero byte. Bytes of a descending
/// key compare the other way round. No characters are cut off: pass the
/// first format::index_key::kMaxCharacters for an index.
void appendTextKey(std::u16string_view text, bool ascending, std::vector<std::uint8_t>& key);

/// The ascending key as a string of bytes: for hash sets, maps and memcmp.
std::string textKey(std::u16string_view text);

/// Compares like the keys.
std::strong_ordering compareText(std::u16string_view left, std::u16string_view right);

}  // namespace jet
