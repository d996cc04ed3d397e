#include "engine/jet/check/ownership.h"

#include "engine/jet/format/page.h"

namespace jet::checking {
namespace {

// From the top: 4 bits for the kind, 9 for the part, 19 for the table.
constexpr unsigned kPartShift = 19;
constexpr unsigned kKindShift = 28;
static_assert(format::page::kMaxCount <= 1u << kPartShift);

std::uint32_t pack(const Owner& owner) {
    return static_cast<std::uint32_t>(owner.kind) << kKindShift | owner.part << kPartShift |
           raw(owner.table);
}

Owner unpack(std::uint32_t packed) {
    constexpr std::uint32_t kTableMask = (1u << kPartShift) - 1;
    constexpr std::uint32_t kPartMask = (1u << (kKindShift - kPartShift)) - 1;
    return {static_cast<OwnerKind>(packed >> kKindShift), PageNumber{packed & kTableMask},
            (packed >> kPartShift) & kPartMask};
}

}  // namespace

std::string describe(const Owner& owner) {
    const std::string table = "the table on page " + std::to_string(raw(owner.table));
    switch (owner.kind) {
        case OwnerKind::Header:
            return "the file itself";
        case OwnerKind::FreePages:
            return "the map of free pages";
        case OwnerKind::Definition:
            return "the definition of " + table;
        case OwnerKind::MapRows:
            return "usage maps";
        case OwnerKind::Bitmap:
            return owner.table == kNoPage ? "the map of free pages" : "a usage map of " + table;
        case OwnerKind::Rows:
            return "the rows of " + table;
        case OwnerKind::LongValues:
            return "long values of " + table + ", column " + std::to_string(owner.part);
        case OwnerKind::Index:
            return "an index of " + table + ", number " + std::to_string(owner.part);
        case OwnerKind::None:
            break;
    }
    return "nothing";
}

std::optional<Owner> PageOwners::claim(PageNumber page, const Owner& owner) {
    std::uint32_t& packed = packed_[raw(page)];
    const Owner before = unpack(packed);
    if (before.kind != OwnerKind::None) {
        if (before.kind == OwnerKind::MapRows && before == owner) return std::nullopt;
        return before;
    }
    packed = pack(owner);
    return std::nullopt;
}

Owner PageOwners::of(PageNumber page) const { return unpack(packed_[raw(page)]); }

}  // namespace jet::checking
