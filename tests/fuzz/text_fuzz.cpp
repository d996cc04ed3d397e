// Stored text of any bytes: both decoders give the same text, and it survives the way to UTF-8.
#include "engine/jet/text.h"
#include "tests/fuzz/small_pages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const jet::Bytes stored{data, size};
    std::u16string text;
    jet::appendUtf16(stored, text);
    std::string utf8;
    jet::appendUtf8(stored, utf8);
    fuzz::require(utf8 == jet::toUtf8(text), "both decoders agree");
    fuzz::require(text.size() <= size, "no character of less than a byte");

    const std::u16string known = jet::toUtf16({reinterpret_cast<const char*>(data), size});
    fuzz::require(jet::toUtf16(jet::toUtf8(known)) == known, "text survives the way to UTF-8");
    return 0;
}
