#include "engine/jet/text.h"

#include "engine/jet/bytes.h"

namespace jet {
namespace {

constexpr char16_t kReplacement = 0xFFFD;
constexpr std::ptrdiff_t kReplacementSize = 3;  ///< in UTF-8
constexpr std::uint64_t kHighs = 0x8080808080808080u;

/// Calls `narrow` and `wide` for the stretches of compressed text, without their marks. Both get
/// a first pointer and an end; a wide stretch is a whole number of pairs.
template <typename Narrow, typename Wide>
void forEachStretch(Bytes stored, Narrow narrow, Wide wide) {
    const std::uint8_t* at = stored.data() + format::text::kCompressed.size();
    const std::uint8_t* const end = stored.data() + stored.size();
    for (bool isWide = false; at < end; isWide = !isWide) {
        const std::uint8_t* stop = at;
        if (isWide) {
            while (end - stop >= 2 && *stop != format::text::kChange) stop += 2;
            wide(at, stop);
            // The stretch is followed by the zero byte, an odd last byte or the end.
        } else {
            stop = static_cast<const std::uint8_t*>(
                std::memchr(at, format::text::kChange, static_cast<std::size_t>(end - at)));
            if (stop == nullptr) stop = end;
            narrow(at, stop);
        }
        at = stop < end ? stop + 1 : end;
    }
}

bool isHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
bool isLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

char32_t join(char16_t high, char16_t low) {
    return 0x10000 + ((char32_t{high} & 0x3FF) << 10) + (char32_t{low} & 0x3FF);
}

/// Requires: room for three bytes at `out`. (A pair of units needs four, and has room for six.)
char* putUtf8(char32_t c, char* out) {
    const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
    if (c < 0x80) {
        *out++ = byte(c);
    } else if (c < 0x800) {
        *out++ = byte(0xC0 | (c >> 6));
        *out++ = byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *out++ = byte(0xE0 | (c >> 12));
        *out++ = byte(0x80 | ((c >> 6) & 0x3F));
        *out++ = byte(0x80 | (c & 0x3F));
    } else {
        *out++ = byte(0xF0 | (c >> 18));
        *out++ = byte(0x80 | ((c >> 12) & 0x3F));
        *out++ = byte(0x80 | ((c >> 6) & 0x3F));
        *out++ = byte(0x80 | (c & 0x3F));
    }
    return out;
}

/// Latin-1 bytes. Eight ASCII bytes at a time are copied as they are.
char* putNarrow(const std::uint8_t* at, const std::uint8_t* end, char* out) {
    while (at < end) {
        while (end - at >= 8 && (load<std::uint64_t>(at) & kHighs) == 0) {
            std::memcpy(out, at, 8);
            at += 8;
            out += 8;
        }
        if (at < end) out = putUtf8(*at++, out);
    }
    return out;
}

/// UTF-16LE units, `at` to `end` a whole number of pairs of bytes.
char* putWide(const std::uint8_t* at, const std::uint8_t* end, char* out) {
    while (at < end) {
        const auto unit = load<char16_t>(at);
        at += 2;
        char32_t c = unit;
        if (isHighSurrogate(unit) && at < end && isLowSurrogate(load<char16_t>(at))) {
            c = join(unit, load<char16_t>(at));
            at += 2;
        } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
            c = kReplacement;
        }
        out = putUtf8(c, out);
    }
    return out;
}

/// Makes room for `most` more characters, lets `put` fill them, and drops what was not used.
template <typename Put>
void appendWith(std::string& out, std::size_t most, Put put) {
    const std::size_t before = out.size();
    out.resize(before + most);
    const char* const end = put(out.data() + before);
    out.resize(static_cast<std::size_t>(end - out.data()));
}

}  // namespace

void appendUtf16(Bytes stored, std::u16string& out) {
    const auto appendWide = [&](const std::uint8_t* at, const std::uint8_t* end) {
        if (at == end) return;  // an empty view may have no memory at all
        const std::size_t before = out.size();
        const auto bytes = static_cast<std::size_t>(end - at);
        out.resize(before + bytes / 2);
        std::memcpy(out.data() + before, at, bytes);
    };
    if (!isCompressedText(stored)) {
        appendWide(stored.data(), stored.data() + (stored.size() & ~std::size_t{1}));
        return;
    }
    forEachStretch(
        stored, [&](const std::uint8_t* at, const std::uint8_t* end) { out.append(at, end); },
        appendWide);
}

void appendUtf8(Bytes stored, std::string& out) {
    if (!isCompressedText(stored)) {
        const std::uint8_t* const end = stored.data() + (stored.size() & ~std::size_t{1});
        appendWith(out, stored.size() / 2 * 3,
                   [&](char* at) { return putWide(stored.data(), end, at); });
        return;
    }
    // A byte makes at most two bytes of UTF-8, a pair of bytes at most three.
    appendWith(out, stored.size() * 2, [&](char* to) {
        char16_t before = 0;  // the unit before a wide stretch; only empty ones are between
        const auto narrow = [&](const std::uint8_t* at, const std::uint8_t* end) {
            if (at < end) before = 0;
            to = putNarrow(at, end, to);
        };
        const auto wide = [&](const std::uint8_t* at, const std::uint8_t* end) {
            if (at == end) return;
            const auto first = load<char16_t>(at);
            if (isHighSurrogate(before) && isLowSurrogate(first)) {
                to = putUtf8(join(before, first), to - kReplacementSize);
                at += 2;
            }
            before = load<char16_t>(end - 2);
            to = putWide(at, end, to);
        };
        forEachStretch(stored, narrow, wide);
        return to;
    });
}

void appendUtf8(std::u16string_view text, std::string& out) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    appendWith(out, text.size() * 3,
               [&](char* at) { return putWide(bytes, bytes + text.size() * 2, at); });
}

std::string toUtf8(std::u16string_view text) {
    std::string out;
    appendUtf8(text, out);
    return out;
}

std::u16string toUtf16(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[i++]);
        const unsigned extra = lead < 0xC2   ? 0
                               : lead < 0xE0 ? 1
                               : lead < 0xF0 ? 2
                               : lead < 0xF5 ? 3
                                             : 0;
        if (lead >= 0x80 && extra == 0) {
            out.push_back(kReplacement);
            continue;
        }
        char32_t c = extra == 0 ? lead : lead & (0x3Fu >> extra);
        unsigned got = 0;
        for (; got < extra && i < utf8.size() && (utf8[i] & 0xC0) == 0x80; ++got) {
            c = (c << 6) | (static_cast<unsigned char>(utf8[i++]) & 0x3Fu);
        }
        constexpr char32_t kMinByLength[] = {0, 0x80, 0x800, 0x10000};
        const bool bad =
            got < extra || c < kMinByLength[extra] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000);
        if (bad) {
            out.push_back(kReplacement);
        } else if (c < 0x10000) {
            out.push_back(static_cast<char16_t>(c));
        } else {
            out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        }
    }
    return out;
}

}  // namespace jet
