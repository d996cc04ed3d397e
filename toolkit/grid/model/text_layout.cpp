#include "toolkit/grid/model/text_layout.h"

#include "toolkit/grid/model/text_units.h"

#include <algorithm>

namespace grid {
namespace {

constexpr wchar_t kMiddleDot = L'\x00B7';
constexpr wchar_t kReplacement = L'\xFFFD';
constexpr std::size_t kTabBlanks = 4;

bool isControl(wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); }
bool isBlank(wchar_t c) { return c == L' ' || c == 0x3000; }

// One layout: carries what every step needs.
class Layout {
public:
    Layout(std::wstring_view text, TextBox box, TextMeasure& measure, std::vector<TextLine>& lines)
        : text_(text), box_(box), measure_(measure), lines_(lines) {}

    bool run() {
        lines_.clear();
        std::size_t position = 0;
        std::size_t end = textEnd();
        do {
            std::size_t paragraph = std::min(text_.find(L'\n', position), end);
            if (!addParagraph(position, paragraph, paragraph < end)) return false;
            position = paragraph + 1;
        } while (position <= end);
        return true;
    }

private:
    std::size_t textEnd() const {
        std::size_t end = text_.size();
        while (end > 0 && (isBlank(text_[end - 1]) || text_[end - 1] == L'\n')) {
            --end;
        }
        return end;
    }

    bool onLastLine() const { return static_cast<int>(lines_.size()) + 1 >= box_.lines; }

    // Returns false when the lines are used up before the text.
    bool addParagraph(std::size_t begin, std::size_t end, bool moreFollows) {
        std::size_t position = begin;
        while (true) {
            std::wstring_view rest = text_.substr(position, end - position);
            TextMeasure::Fit fit = measure_.fit(rest, box_.width);
            bool fits = fit.count == rest.size();
            if (onLastLine() && (!fits || moreFollows)) {
                addCutLine(rest, position);
                return false;
            }
            if (fits) {
                lines_.push_back({position, rest.size(), fit.width, false});
                return true;
            }
            position = addBrokenLine(rest, position, fit);
        }
    }

    // Adds the part of `rest` that goes on this line; returns where the next line begins.
    std::size_t addBrokenLine(std::wstring_view rest, std::size_t position, TextMeasure::Fit fit) {
        std::size_t cut = breakBefore(rest, fit.count);
        std::size_t length = cut;
        while (length > 0 && isBlank(rest[length - 1])) {
            --length;
        }
        std::wstring_view line = rest.substr(0, length);
        int width = length == fit.count ? fit.width : measure_.width(line);
        lines_.push_back({position, length, width, false});
        while (cut < rest.size() && isBlank(rest[cut])) {
            ++cut;
        }
        return position + cut;
    }

    // The last line: as much as leaves room for the ellipsis.
    void addCutLine(std::wstring_view rest, std::size_t position) {
        int ellipsis = measure_.width(std::wstring_view(&kEllipsis, 1));
        TextMeasure::Fit fit = measure_.fit(rest, box_.width - ellipsis);
        std::size_t length = unitBorder(rest, 0, fit.count);
        while (length > 0 && isBlank(rest[length - 1])) {
            --length;
        }
        int width = length == fit.count ? fit.width : measure_.width(rest.substr(0, length));
        lines_.push_back({position, length, width + ellipsis, true});
    }

    // The last place at or before `limit` where the line may end; inside a word only when the
    // word alone is too long, and never before the first unit.
    static std::size_t breakBefore(std::wstring_view rest, std::size_t limit) {
        for (std::size_t at = limit; at > 0; --at) {
            if (mayBreakAt(rest, at)) return at;
        }
        std::size_t cut = unitBorder(rest, 0, limit);
        return cut > 0 ? cut : unitEnd(rest, 0);
    }

    // Requires: 0 < at < rest.size().
    static bool mayBreakAt(std::wstring_view rest, std::size_t at) {
        if (isBlank(rest[at]) || isBlank(rest[at - 1])) return !onlyBlanksBefore(rest, at);
        if (rest[at] < 0x2E80 && rest[at - 1] < 0x2E80) return false;
        if (unitBorder(rest, 0, at) != at) return false;
        char32_t after = codePointAt(rest, at);
        std::size_t last = at - 1;
        if (last > 0 && codePointLength(rest, last - 1) == 2) --last;
        bool ideographic = isIdeographic(after) || isIdeographic(codePointAt(rest, last));
        return ideographic && !mayNotBeginLine(after);
    }

    // Indentation is no place to break: it would leave an empty line.
    static bool onlyBlanksBefore(std::wstring_view rest, std::size_t at) {
        return std::all_of(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(at), isBlank);
    }

    std::wstring_view text_;
    TextBox box_;
    TextMeasure& measure_;
    std::vector<TextLine>& lines_;
};

}  // namespace

void showable(std::wstring_view text, LineBreaks breaks, std::size_t most, std::wstring& shown) {
    shown.clear();
    wchar_t lineBreak = breaks == LineBreaks::keep ? L'\n' : L' ';
    for (std::size_t i = 0; i < text.size() && shown.size() < most; ++i) {
        wchar_t c = text[i];
        if (c == L'\t') {
            shown.append(kTabBlanks, L' ');
        } else if (c == L'\n' || c == L'\r') {
            shown.push_back(lineBreak);
            bool pair = c == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n';
            i += pair ? 1 : 0;
        } else if (isControl(c)) {
            shown.push_back(kMiddleDot);
        } else if (codePointLength(text, i) == 2) {
            shown.append(text.substr(i, 2));
            ++i;
        } else {
            shown.push_back(codePointAt(text, i) == 0xFFFD ? kReplacement : c);
        }
    }
}

bool layOutText(std::wstring_view text, TextBox box, TextMeasure& measure,
                std::vector<TextLine>& lines) {
    return Layout(text, box, measure, lines).run();
}

}  // namespace grid
