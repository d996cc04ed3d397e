#include "engine/jet/losses.h"

namespace jet {
namespace {

using Kind = Loss::Kind;

std::uint64_t& counterOf(Losses& losses, Kind kind) {
    switch (kind) {
        case Kind::Rows:
            return losses.rows;
        case Kind::Pages:
            return losses.pages;
        case Kind::Values:
            return losses.values;
        case Kind::MissingPages:
            return losses.missingPages;
        case Kind::Tables:
            return losses.tables;
        case Kind::Definitions:
            return losses.definitions;
        default:
            return losses.hints;
    }
}

const char* nameOf(Kind kind) {
    switch (kind) {
        case Kind::Rows:
            return "row";
        case Kind::Values:
            return "value";
        case Kind::Tables:
            return "table";
        case Kind::Definitions:
            return "definition";
        case Kind::Hints:
            return "hint";
        default:
            return "page";
    }
}

/// A number with its noun in the singular or plural.
struct Part {
    std::uint64_t count;
    const char* one;
    const char* more;
};

std::string toText(const Part& part) {
    return std::to_string(part.count) + " " + (part.count == 1 ? part.one : part.more);
}

}  // namespace

std::string toText(const Loss& loss) {
    std::string text = nameOf(loss.kind);
    const bool isPage = loss.kind == Kind::Pages || loss.kind == Kind::MissingPages;
    if (loss.slot != Loss::kNoSlot) {
        text += loss.kind == Kind::Rows ? " " : " of row ";
        text += std::to_string(loss.slot);
    }
    if (loss.page != kNoPage) {
        text += (isPage ? " " : loss.slot != Loss::kNoSlot ? " of page " : " on page ");
        text += std::to_string(raw(loss.page));
    }
    return text + ": " + loss.why;
}

void Losses::add(Loss loss, std::uint64_t count) {
    counterOf(*this, loss.kind) += count;
    if (count > 0 && reasons.size() < kMaxReasons) reasons.push_back(std::move(loss));
}

Losses& Losses::operator+=(const Losses& other) {
    rows += other.rows;
    pages += other.pages;
    values += other.values;
    missingPages += other.missingPages;
    tables += other.tables;
    definitions += other.definitions;
    hints += other.hints;
    for (const Loss& loss : other.reasons) {
        if (reasons.size() == kMaxReasons) break;
        reasons.push_back(loss);
    }
    return *this;
}

std::string Losses::summary() const {
    std::vector<Part> parts;
    for (const Part& part :
         {Part{rows, "row", "rows"}, Part{pages, "page", "pages"}, Part{values, "value", "values"},
          Part{missingPages, "page behind the end", "pages behind the end"},
          Part{tables, "table", "tables"},
          Part{definitions, "part of a definition", "parts of definitions"}}) {
        if (part.count != 0) parts.push_back(part);
    }
    if (parts.empty()) return "nothing";
    std::string text = toText(parts.front());
    for (std::size_t i = 1; i < parts.size(); ++i) {
        text += (i + 1 == parts.size() ? " and " : ", ") + toText(parts[i]);
    }
    return text;
}

}  // namespace jet
