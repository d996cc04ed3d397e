#include "src/macros/macro_level.h"

#include "src/log/procedure.h"
#include "src/text/text.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace macros {
namespace {

bool isBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

/// Takes characters from the front of a text into plain ASCII.
class NumberReader {
public:
    explicit NumberReader(std::u16string_view text) : rest_{text} {}

    void skipBlanks() {
        while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
    }

    void takeSign() {
        if (rest_.empty() || (rest_.front() != u'-' && rest_.front() != u'+')) return;
        // The sign "+" is not known to from_chars.
        if (rest_.front() == u'-') number_.push_back('-');
        rest_.remove_prefix(1);
    }

    void takeDigits() {
        for (; !rest_.empty() && isDigit(rest_.front()); rest_.remove_prefix(1)) {
            number_.push_back(static_cast<char>(rest_.front()));
        }
    }

    void takeFraction() {
        if (rest_.empty() || rest_.front() != u'.') return;
        number_.push_back('.');
        rest_.remove_prefix(1);
        takeDigits();
    }

    /// Without digits behind it, from_chars leaves the letter out again.
    void takeExponent() {
        if (rest_.empty() || (rest_.front() != u'e' && rest_.front() != u'E')) return;
        number_.push_back('e');
        rest_.remove_prefix(1);
        if (!rest_.empty() && rest_.front() == u'+') number_.push_back('+');
        takeSign();
        takeDigits();
    }

    const std::string& number() const { return number_; }

private:
    std::u16string_view rest_;
    std::string number_;
};

double leadingNumber(std::u16string_view text) {
    NumberReader reader{text};
    reader.skipBlanks();
    reader.takeSign();
    reader.takeDigits();
    reader.takeFraction();
    reader.takeExponent();
    const std::string& number = reader.number();
    double value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    const bool tiny = number.find("e-") != std::string::npos;
    return tiny ? 0 : std::numeric_limits<double>::infinity();
}

}  // namespace

std::int16_t toLevel(std::u16string_view text) {
    // The default rounding of the processor takes halves to the even neighbour.
    const double rounded = std::nearbyint(leadingNumber(text));
    if (rounded < std::numeric_limits<std::int16_t>::min() ||
        rounded > std::numeric_limits<std::int16_t>::max()) {
        throw RuntimeError{RuntimeError::kOverflow, u"Overflow"};
    }
    return static_cast<std::int16_t>(rounded);
}

bool keyNamesLevel(std::u16string_view key, std::int16_t level) {
    return key.find(toText(level)) != std::u16string_view::npos;
}

}  // namespace macros
