#include "tests/support/long_values.h"

#include <algorithm>

namespace fixture {

namespace {

constexpr std::size_t kMaxInlineBytes = 64;
constexpr std::size_t kMaxSingleBytes = 4076;
constexpr std::size_t kChainBytes = 4072;  ///< content of a full row of a chain, behind its pointer
constexpr std::uint32_t kInlineFlag = 0x80000000;
constexpr std::uint32_t kSingleFlag = 0x40000000;

LongForm formFor(std::size_t length) {
    if (length <= kMaxInlineBytes) return LongForm::Inline;
    return length <= kMaxSingleBytes ? LongForm::Single : LongForm::Chain;
}

void appendHeader(ByteVector& field, std::uint32_t lengthAndFlags, jet::RowId row,
                  std::uint32_t stamp) {
    append(field, lengthAndFlags);
    append(field, row.packed());
    append(field, stamp);
}

}  // namespace

void LongValueWriter::store(ByteView content, LongForm form, ByteVector& field) {
    const auto length = static_cast<std::uint32_t>(content.size());
    switch (form == LongForm::Natural ? formFor(length) : form) {
        case LongForm::Natural:
        case LongForm::Inline:
            appendHeader(field, length | kInlineFlag, {}, 0);
            appendBytes(field, content);
            break;
        case LongForm::Single:
            appendHeader(field, length | kSingleFlag, pages_.append(content), 0);
            break;
        case LongForm::Chain:
            ++stamp_;
            appendHeader(field, length, storeChain(content), stamp_);
            break;
        case LongForm::HandMade:
            appendBytes(field, content);
            break;
    }
}

jet::RowId LongValueWriter::storeChain(ByteView content) {
    const std::size_t count =
        std::max<std::size_t>(1, (content.size() + kChainBytes - 1) / kChainBytes);
    std::vector<jet::PageNumber> chain;
    for (std::size_t i = 0; i < count; ++i) chain.push_back(pages_.allocateAlone());
    for (std::size_t i = 0; i < count; ++i) {
        const jet::RowId next = i + 1 < count ? jet::RowId{chain[i + 1], 0} : jet::RowId{};
        ByteVector row;
        append(row, next.packed());
        const std::size_t start = i * kChainBytes;
        appendBytes(row, content.subspan(start, std::min(kChainBytes, content.size() - start)));
        pages_.writeAlone(chain[i], row, i == 0 ? stamp_ : 0);
    }
    return {chain.front(), 0};
}

}  // namespace fixture
