#include "src/db/trace_filter.h"

#include "engine/ado/value_formatter.h"
#include "src/text/text.h"

namespace {

constexpr std::u16string_view kItem = u"Item:";
constexpr std::size_t kProcessColumn = 33;
constexpr std::size_t kLevelColumn = 10;

std::u16string padded(std::u16string text, std::size_t width) {
    if (text.size() < width) text.resize(width, u' ');
    return text;
}

}  // namespace

std::u16string plainText(const jet::Value& value) {
    std::u16string text;
    ado::ValueFormatter{}.append(value, text);
    return text;
}

std::u16string constructFilterExpression(const UniqueTraces& traces) {
    std::u16string expression;
    bool allTicked = true;
    for (const UniqueTrace& trace : traces) {
        if (!trace.selected) {
            allTicked = false;
            continue;
        }
        if (!expression.empty()) expression += u" OR ";
        expression += u" ( qrxIndex = '" + plainText(trace.qrxIndex) + u"' ) ";
    }
    return allTicked ? u"-1" : expression;
}

std::u16string whereClause(const std::u16string& expression) {
    return u"WHERE " + (expression.empty() ? std::u16string{u"-1 = 1"} : expression);
}

std::u16string componentKey(const UniqueTrace& trace) { return u"c-" + plainText(trace.component); }

std::u16string componentText(const UniqueTrace& trace) {
    return plainText(trace.component) + u" Component";
}

std::u16string itemKey(std::size_t row) {
    return std::u16string{kItem} + toText(static_cast<std::int64_t>(row));
}

std::optional<std::size_t> rowOfKey(std::u16string_view key) {
    if (!key.starts_with(kItem) || key.size() == kItem.size()) return std::nullopt;
    std::size_t row = 0;
    for (const char16_t digit : key.substr(kItem.size())) {
        if (digit < u'0' || digit > u'9') return std::nullopt;
        row = row * 10 + (digit - u'0');
    }
    return row;
}

std::u16string itemText(const UniqueTrace& trace) {
    return padded(plainText(trace.process) + u" Process", kProcessColumn) + u"  " +
           padded(u"Level: " + plainText(trace.traceLevel), kLevelColumn) + u"   Source: " +
           plainText(trace.source);
}
