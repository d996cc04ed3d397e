#include "engine/ado/connection_string.h"

#include "engine/ado/error.h"

#include <algorithm>
#include <optional>

namespace ado {
namespace {

char16_t lower(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

bool isQuote(char16_t c) { return c == u'\'' || c == u'"'; }

/// Takes a quoted value, which `text` begins with, and what follows up to the semicolon.
std::u16string takeQuoted(std::u16string_view& text) {
    const char16_t quote = text.front();
    std::u16string value;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] != quote) {
            value.push_back(text[i]);
        } else if (i + 1 < text.size() && text[i + 1] == quote) {
            value.push_back(text[i++]);
        } else {
            const std::size_t end = text.find(u';', i);
            text.remove_prefix(end == std::u16string_view::npos ? text.size() : end + 1);
            return value;
        }
    }
    throwInvalidArgument("a connection string with an open quote.");
}

std::u16string_view takePiece(std::u16string_view& text) {
    const std::size_t end = std::min(text.find(u';'), text.size());
    const std::u16string_view piece = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return piece;
}

/// Takes "name =" if the next piece has one.
std::optional<std::u16string_view> takeName(std::u16string_view& text) {
    const std::size_t equals = text.find(u'=');
    if (equals == std::u16string_view::npos || equals > text.find(u';')) return std::nullopt;
    const std::u16string_view name = trimmed(text.substr(0, equals));
    text.remove_prefix(equals + 1);
    return name;
}

}  // namespace

ConnectionString::ConnectionString(std::u16string_view text) {
    while (!text.empty()) {
        if (const auto name = takeName(text)) {
            const std::size_t start = std::min(text.find_first_not_of(u' '), text.size());
            text.remove_prefix(start);
            const bool quoted = !text.empty() && isQuote(text.front());
            values_.emplace_back(
                *name, quoted ? takeQuoted(text) : std::u16string{trimmed(takePiece(text))});
            continue;
        }
        const std::u16string_view piece = takePiece(text);
        if (trimmed(piece).empty()) continue;
        if (values_.empty()) throwInvalidArgument("a connection string without a name.");
        values_.back().second.append(u";").append(piece);
    }
}

std::u16string ConnectionString::value(std::u16string_view name) const {
    for (auto item = values_.rbegin(); item != values_.rend(); ++item) {
        if (equalsIgnoringCase(item->first, name)) return item->second;
    }
    return {};
}

bool equalsIgnoringCase(std::u16string_view left, std::u16string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char16_t a, char16_t b) { return lower(a) == lower(b); });
}

std::u16string_view trimmed(std::u16string_view text) {
    constexpr std::u16string_view kBlanks = u" \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::u16string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

}  // namespace ado
