#include "engine/jet/text.h"

#include "tests/support/record_writer.h"

#include <gtest/gtest.h>

#include <random>

namespace jet {
namespace {

using fixture::ByteVector;

std::u16string decode(const ByteVector& stored) {
    std::u16string text;
    appendUtf16(stored, text);
    return text;
}

std::string decodeUtf8(const ByteVector& stored) {
    std::string text;
    appendUtf8(stored, text);
    return text;
}

ByteVector utf16(std::u16string_view text) {
    ByteVector bytes;
    for (char16_t unit : text) fixture::append(bytes, unit);
    return bytes;
}

/// The format's compressed form, straight from its description.
ByteVector compressed(std::u16string_view text) {
    ByteVector bytes{0xFF, 0xFE};
    bool wide = false;
    for (char16_t unit : text) {
        if ((unit > 0xFF) != wide) bytes.push_back(0);
        wide = unit > 0xFF;
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        if (wide) bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

TEST(StoredText, Plain) {
    EXPECT_EQ(decode(utf16(u"Grüße, Ωμέγα, 日本, 🙂")),
              u"Grüße, Ωμέγα, 日本, 🙂");
    EXPECT_EQ(decodeUtf8(utf16(u"Grüße, Ωμέγα, 日本, 🙂")),
              "Grüße, Ωμέγα, 日本, 🙂");
    EXPECT_EQ(decode({}), u"");
    EXPECT_EQ(decodeUtf8({}), "");
}

TEST(StoredText, PlainTextMayHoldZeros) {
    const std::u16string text{u"a\0b", 3};
    EXPECT_EQ(decode(utf16(text)), text);
    EXPECT_EQ(decodeUtf8(utf16(text)), std::string("a\0b", 3));
}

TEST(StoredText, Compressed) {
    EXPECT_EQ(decode({0xFF, 0xFE, 'a', 'b', 0xFC}), u"abü");
    EXPECT_EQ(decodeUtf8({0xFF, 0xFE, 'a', 'b', 0xFC}), "abü");
    EXPECT_EQ(decode({0xFF, 0xFE}), u"");
    EXPECT_EQ(decodeUtf8({0xFF, 0xFE}), "");
}

TEST(StoredText, StretchesOfBothKinds) {
    const ByteVector stored{0xFF, 0xFE, 0,    0x24, 0x04, 0x30, 0x04,
                            0,    0x20, 0x61, 0x62, 0,    0xE5, 0x65};
    EXPECT_EQ(decode(stored), u"Фа ab日");
    EXPECT_EQ(decodeUtf8(stored), "Фа ab日");
}

TEST(StoredText, AStretchMayBeEmpty) {
    const ByteVector stored{0xFF, 0xFE, 'a', 0, 0, 'b', 0, 0, 0};
    EXPECT_EQ(decode(stored), u"ab");
    EXPECT_EQ(decodeUtf8(stored), "ab");
}

TEST(StoredText, OddEndsAreDropped) {
    EXPECT_EQ(decode({'a', 0, 'b'}), u"a");
    EXPECT_EQ(decodeUtf8({'a', 0, 'b'}), "a");
    EXPECT_EQ(decode({'a'}), u"");
    EXPECT_EQ(decodeUtf8({0xFF}), "");
    EXPECT_EQ(decode({0xFF, 0xFE, 'a', 0, 0x24, 0x04, 0x30}), u"aФ");
    EXPECT_EQ(decodeUtf8({0xFF, 0xFE, 'a', 0, 0x24, 0x04, 0x30}), "aФ");
    EXPECT_EQ(decode({0xFF, 0xFE, 0}), u"");
    EXPECT_EQ(decodeUtf8({0xFF, 0xFE, 0, 0x24}), "");
}

TEST(StoredText, SurrogatesWithoutTheirPartner) {
    const std::u16string lone{u'a', 0xD83D, u'b', 0xDE42, 0xDE42, 0xD83D};
    EXPECT_EQ(decode(utf16(lone)), lone);
    EXPECT_EQ(decodeUtf8(utf16(lone)), "a\uFFFDb\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(toUtf8(std::u16string{0xD83D, 0xD83D, 0xDE42}), "\uFFFD🙂");
}

// The two halves became two replacement characters in UTF-8, but one character in UTF-16.
TEST(StoredText, ASurrogatePairAcrossAnEmptyStretch) {
    const ByteVector stored{0xFF, 0xFE, 0, 0x3D, 0xD8, 0, 0, 0x42, 0xDE, 0, 'a'};
    EXPECT_EQ(decode(stored), u"🙂a");
    EXPECT_EQ(decodeUtf8(stored), "🙂a");
    const ByteVector apart{0xFF, 0xFE, 0, 0x3D, 0xD8, 0, 'x', 0, 0x42, 0xDE};
    EXPECT_EQ(decodeUtf8(apart), "\uFFFDx\uFFFD");
}

TEST(StoredText, AppendsBehindWhatIsThere) {
    std::string utf8 = "before ";
    appendUtf8(compressed(u"afté日"), utf8);
    appendUtf8(utf16(u"!"), utf8);
    EXPECT_EQ(utf8, "before afté日!");
    std::u16string text = u"before ";
    appendUtf16(compressed(u"afté日"), text);
    appendUtf16(utf16(u"!"), text);
    EXPECT_EQ(text, u"before afté日!");
}

TEST(StoredText, EveryCodePointInBothForms) {
    for (char32_t code = 1; code < 0x110000; code += code < 0x3000 ? 1 : 97) {
        if (code >= 0xD800 && code < 0xE000) continue;
        std::u16string text;
        if (code < 0x10000) {
            text.push_back(static_cast<char16_t>(code));
        } else {
            text.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
        }
        const std::string utf8 = toUtf8(text);
        ASSERT_EQ(toUtf16(utf8), text) << std::hex << static_cast<unsigned>(code);
        if (code != 0xFEFF) {
            ASSERT_EQ(decodeUtf8(utf16(text)), utf8) << std::hex << static_cast<unsigned>(code);
        }
        const bool encodable = (text[0] & 0xFF) != 0 && (text.back() & 0xFF) != 0;
        if (encodable) {
            ASSERT_EQ(decode(compressed(text)), text) << std::hex << static_cast<unsigned>(code);
        }
    }
}

/// Texts of the lengths around the eight bytes that are copied at once.
TEST(StoredText, AsciiWithAnAccentAnywhere) {
    for (std::size_t length = 1; length < 40; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            std::u16string text(length, u'x');
            text[at] = u'é';
            ASSERT_EQ(decodeUtf8(compressed(text)), toUtf8(text));
            text[at] = u'日';
            ASSERT_EQ(decodeUtf8(compressed(text)), toUtf8(text));
            ASSERT_EQ(decode(compressed(text)), text);
        }
    }
}

/// Bytes in which marks, changes of the form and surrogates are frequent.
ByteVector randomStored(std::mt19937& random) {
    static constexpr std::uint8_t kTelling[] = {0,    0,    0xFF, 0xFE, 0xD8,
                                                0xDB, 0xDC, 0xDF, 'a',  0x80};
    ByteVector stored(random() % 40);
    for (std::uint8_t& byte : stored) {
        byte = random() % 3 == 0 ? static_cast<std::uint8_t>(random())
                                 : kTelling[random() % std::size(kTelling)];
    }
    if (random() % 2 == 0) stored.insert(stored.begin(), {0xFF, 0xFE});
    return stored;
}

TEST(StoredText, BothDecodersAgreeOnAnyBytes) {
    std::mt19937 random{2521};
    for (int round = 0; round < 200000; ++round) {
        const ByteVector stored = randomStored(random);
        ASSERT_EQ(decodeUtf8(stored), toUtf8(decode(stored))) << testing::PrintToString(stored);
    }
}

/// What toUtf16 makes of any bytes is text that comes back unchanged.
TEST(Utf8, AnyBytesBecomeText) {
    std::mt19937 random{9025};
    for (int round = 0; round < 100000; ++round) {
        std::string bytes(random() % 20, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random() % 4 == 0 ? random() % 128 : 128 + random() % 128);
        const std::u16string text = toUtf16(bytes);
        ASSERT_EQ(toUtf16(toUtf8(text)), text);
        ASSERT_LE(text.size(), bytes.size());
    }
}

TEST(Utf8, Malformed) {
    EXPECT_EQ(toUtf16("a\x80z"), u"a\uFFFDz");
    EXPECT_EQ(toUtf16("\xC3"), u"\uFFFD");
    EXPECT_EQ(toUtf16("\xC3z"), u"\uFFFDz");
    EXPECT_EQ(toUtf16("\xC0\x80"), u"\uFFFD\uFFFD");    // overlong
    EXPECT_EQ(toUtf16("\xE0\x80\x80"), u"\uFFFD");      // overlong
    EXPECT_EQ(toUtf16("\xED\xA0\x80"), u"\uFFFD");      // a surrogate
    EXPECT_EQ(toUtf16("\xF4\x90\x80\x80"), u"\uFFFD");  // above U+10FFFF
    EXPECT_EQ(toUtf16("\xF0\x9F\x99\x82\xFF"), u"🙂\uFFFD");
}

TEST(StoredText, AgreesWithTheWriterOfTheFixtures) {
    for (const std::u16string_view text :
         {u"plain", u"Größe 日本 und ab", u"Фа ab c in a long Latin text", u"", u"日"}) {
        for (bool compress : {false, true}) {
            ByteVector stored;
            fixture::appendStoredText(text, compress, stored);
            EXPECT_EQ(decode(stored), text);
        }
    }
}

}  // namespace
}  // namespace jet
