#include "engine/jet/definition_parts.h"

#include "engine/jet/bytes.h"

#include <algorithm>
#include <optional>

namespace jet {
namespace {

namespace layout = format::table_definition;

std::size_t columnsBegin(std::size_t physicalIndexes) {
    return format::index_counter::placeOf(physicalIndexes);
}

/// Whether a column's block has its constant.
bool isColumn(Bytes bytes, std::size_t begin) {
    if (begin + format::column::kSize > bytes.size()) return false;
    return load(bytes.subspan(begin), format::column::kMagic) == layout::kMagicValue;
}

std::size_t columnsFrom(Bytes bytes, std::size_t begin) {
    std::size_t count = 0;
    while (count < layout::kMaxColumns && isColumn(bytes, begin + count * format::column::kSize)) {
        ++count;
    }
    return count;
}

/// Whether blocks of columns, few of them damaged, stand where the counts say, and no more.
bool agree(Bytes bytes, std::size_t physicalIndexes, std::size_t columns) {
    const std::size_t begin = columnsBegin(physicalIndexes);
    const std::size_t end = begin + columns * format::column::kSize;
    if (end > bytes.size() || isColumn(bytes, end)) return false;
    std::size_t sound = 0;
    for (std::size_t i = 0; i < columns; ++i) {
        if (isColumn(bytes, begin + i * format::column::kSize)) ++sound;
    }
    return 2 * sound > columns;
}

/// The first byte behind a name; nothing if no name can stand there.
std::optional<std::size_t> nameEnd(Bytes bytes, std::size_t begin) {
    if (begin + layout::kNameLengthSize > bytes.size()) return std::nullopt;
    const std::size_t length = load<std::uint16_t>(bytes, begin);
    const std::size_t end = begin + layout::kNameLengthSize + length;
    constexpr std::size_t kMaxLength = sizeof(char16_t) * layout::kMaxNameLength;
    if (length == 0 || length % 2 != 0 || length > kMaxLength) return std::nullopt;
    return end <= bytes.size() ? std::optional{end} : std::nullopt;
}

std::u16string textOf(Bytes bytes) {
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    return text;
}

/// Finds the names, of which one may have a damaged length.
class NameSearch {
public:
    NameSearch(Bytes bytes, std::size_t begin, const DefinitionParts& parts)
        : bytes_{bytes}, parts_{parts}, starts_{begin} {
        while (starts_.size() <= parts_.columns) {
            const auto end = nameEnd(bytes_, starts_.back());
            if (!end) break;
            starts_.push_back(*end);
        }
    }

    ColumnNames run() {
        ColumnNames found;
        if (starts_.size() == parts_.columns + 1 && endsWell(starts_.back())) {
            found.end = starts_.back();
        } else {
            found.end = skipDamagedName();
        }
        found.names.resize(parts_.columns);
        for (std::size_t i = 0; i + 1 < starts_.size(); ++i) {
            const std::size_t begin = starts_[i] + layout::kNameLengthSize;
            const std::size_t length = starts_[i + 1] - begin;
            if (length <= sizeof(char16_t) * layout::kMaxNameLength) {
                found.names[i] = textOf(bytes_.subspan(begin, length));
            }
        }
        return found;
    }

private:
    /// Whether what follows the names begins here.
    bool endsWell(std::size_t end) const {
        if (parts_.physicalIndexes == 0) return isListOfMaps(end);
        if (end + sizeof(std::uint32_t) > bytes_.size()) return false;
        return load<std::uint32_t>(bytes_, end) == format::physical_index::kMagicValue;
    }

    /// Whether what ends a definition without indexes begins here.
    bool isListOfMaps(std::size_t begin) const {
        for (std::size_t i = 0; i <= parts_.columns; ++i) {
            if (begin + sizeof layout::kNoColumn > bytes_.size()) return false;
            const auto id = load<std::uint16_t>(bytes_, begin);
            if (id == layout::kNoColumn) return true;
            if (id >= layout::kMaxColumnsEver) return false;
            begin += format::long_value_maps::kSize;
        }
        return false;
    }

    /// Where the `count` names from `begin` on end, if all are sound.
    std::optional<std::size_t> soundNames(std::size_t begin, std::size_t count,
                                          std::vector<std::size_t>& starts) const {
        for (std::size_t i = 0; i < count; ++i) {
            starts.push_back(begin);
            const auto end = nameEnd(bytes_, begin);
            if (!end) return std::nullopt;
            begin = *end;
        }
        starts.push_back(begin);
        return endsWell(begin) ? std::optional{begin} : std::nullopt;
    }

    /// Looks for the name whose length is wrong and the place where the next one begins. Returns the
    /// end of all names; 0 if there is no such place.
    std::size_t skipDamagedName() {
        constexpr std::size_t kMaxLength = sizeof(char16_t) * layout::kMaxNameLength;
        for (std::size_t i = 0; i < std::min(starts_.size(), parts_.columns); ++i) {
            const std::size_t text = starts_[i] + layout::kNameLengthSize;
            for (std::size_t length = 2; length <= kMaxLength; length += 2) {
                std::vector<std::size_t> after;
                const auto end = soundNames(text + length, parts_.columns - i - 1, after);
                if (!end) continue;
                starts_.resize(i + 1);
                starts_.insert(starts_.end(), after.begin(), after.end());
                return *end;
            }
        }
        return 0;
    }

    Bytes bytes_;
    const DefinitionParts& parts_;
    std::vector<std::size_t> starts_;  ///< of the names that are known, and the end of the last one
};

}  // namespace

DefinitionParts findParts(Bytes bytes, PageNumber first) {
    const std::size_t columns = load(bytes, layout::kColumnCount);
    const std::size_t physical = load(bytes, layout::kPhysicalIndexCount);
    const bool possible = columns <= layout::kMaxColumns && physical <= layout::kMaxIndexesRead;
    if (possible && columns == 0) return {physical, columns, true};
    if (possible && agree(bytes, physical, columns)) {
        const DefinitionParts parts{physical, columns, true};
        const std::size_t last = columnsBegin(physical) + (columns - 1) * format::column::kSize;
        // What should be the last column may be the first name.
        const std::size_t names = last + format::column::kSize;
        if (isColumn(bytes, last) || readColumnNames(bytes, names, parts).end != 0) return parts;
    }
    for (std::size_t i = 0; i <= layout::kMaxIndexesRead; ++i) {
        const std::size_t count = columnsFrom(bytes, columnsBegin(i));
        if (count > 0) return {i, count, false};
    }
    throwDamaged(first, "no columns can be found in the table definition");
}

ColumnNames readColumnNames(Bytes bytes, std::size_t begin, const DefinitionParts& parts) {
    return NameSearch{bytes, begin, parts}.run();
}

bool isUsableName(std::u16string_view name) {
    return !name.empty() && std::ranges::none_of(name, [](char16_t unit) {
        return unit < u' ' || (unit >= 0xD800 && unit < 0xE000) || unit >= 0xFFFE;
    });
}

}  // namespace jet
