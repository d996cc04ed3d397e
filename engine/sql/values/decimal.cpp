#include "engine/sql/values/decimal.h"

#include <algorithm>

namespace sql {

namespace {

constexpr std::size_t kMaxDigits = 40;
constexpr std::size_t kMaxExponentDigits = 4;

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

class DecimalText {
public:
    explicit DecimalText(std::u16string_view text) : text_{text} {}

    std::optional<Decimal> parse() {
        skipBlanks();
        number_.negative = peek() == u'-';
        if (peek() == u'-' || peek() == u'+') ++at_;
        bool any = digits();
        if (peek() == u'.') {
            ++at_;
            const std::size_t start = at_;
            any = digits() || any;
            number_.exponent = -static_cast<int>(at_ - start);
        }
        if (!any || !exponent()) return std::nullopt;
        skipBlanks();
        if (at_ != text_.size()) return std::nullopt;
        number_.digits.erase(
            0, std::min(number_.digits.find_first_not_of('0'), number_.digits.size()));
        return number_;
    }

private:
    char16_t peek() const { return at_ < text_.size() ? text_[at_] : u'\0'; }

    void skipBlanks() {
        while (peek() == u' ' || peek() == u'\t') ++at_;
    }

    bool digits() {
        const std::size_t start = at_;
        for (; isDigit(peek()); ++at_) number_.digits += static_cast<char>(peek());
        return at_ > start;
    }

    bool exponent() {
        if (peek() != u'e' && peek() != u'E') return true;
        ++at_;
        const bool negative = peek() == u'-';
        if (peek() == u'-' || peek() == u'+') ++at_;
        int value = 0;
        const std::size_t start = at_;
        for (; isDigit(peek()); ++at_) {
            if (at_ - start == kMaxExponentDigits) return false;
            value = value * 10 + (peek() - u'0');
        }
        number_.exponent += negative ? -value : value;
        return at_ > start;
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
    Decimal number_;
};

void addOne(std::string& digits) {
    auto digit = digits.rbegin();
    for (; digit != digits.rend() && *digit == '9'; ++digit) *digit = '0';
    if (digit == digits.rend()) {
        digits.insert(digits.begin(), '1');
    } else {
        ++*digit;
    }
}

/// Whether what is cut off at `kept` takes the digits before it up by one.
bool roundsUp(const std::string& digits, std::size_t kept) {
    if (digits[kept] != '5') return digits[kept] > '5';
    const bool half = digits.find_first_not_of('0', kept + 1) == std::string::npos;
    const bool odd = kept > 0 && (digits[kept - 1] - '0') % 2 != 0;
    return !half || odd;
}

}  // namespace

std::optional<Decimal> parseDecimal(std::u16string_view text) { return DecimalText{text}.parse(); }

std::optional<std::string> roundedDigits(const Decimal& number, int scale) {
    std::string digits = number.digits;
    if (digits.empty()) return digits;
    const int shift = number.exponent + scale;
    if (static_cast<int>(digits.size()) + shift > static_cast<int>(kMaxDigits)) return std::nullopt;
    if (shift >= 0) return digits.append(static_cast<std::size_t>(shift), '0');
    const auto cut = static_cast<std::size_t>(-shift);
    if (cut > digits.size()) return std::string{};
    const std::size_t kept = digits.size() - cut;
    const bool up = roundsUp(digits, kept);
    digits.resize(kept);
    if (up) addOne(digits);
    return digits;
}

}  // namespace sql
