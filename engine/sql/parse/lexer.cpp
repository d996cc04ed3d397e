#include "engine/jet/text.h"
#include "engine/sql/parse/token.h"
#include "engine/sql/values/calendar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace sql {

namespace {

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

bool isBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\u00A0' || c == u'\u3000';
}

char16_t lower(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c; }

bool startsName(char16_t c) {
    return (lower(c) >= u'a' && lower(c) <= u'z') || c == u'_' || c >= 0x80;
}

bool continuesName(char16_t c) { return (startsName(c) && !isBlank(c)) || isDigit(c) || c == u'$'; }

class Lexer {
public:
    explicit Lexer(std::u16string_view text) : text_{text} {}

    Token next() {
        while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
        Token token;
        token.position = at_;
        if (at_ == text_.size()) return token;
        const char16_t c = text_[at_];
        if (c == u'[') return quotedName(std::move(token), u']');
        if (c == u'`') return quotedName(std::move(token), u'`');
        if (c == u'\'' || c == u'"') return textLiteral(std::move(token));
        if (c == u'#') return dateLiteral(std::move(token));
        if (isDigit(c) || (c == u'.' && isDigit(peek(1)))) return numberLiteral(std::move(token));
        if (startsName(c)) return plainName(std::move(token));
        return symbol(std::move(token));
    }

private:
    char16_t peek(std::size_t ahead) const {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : u'\0';
    }

    Token plainName(Token token) {
        const std::size_t start = at_;
        while (at_ < text_.size() && continuesName(text_[at_])) ++at_;
        token.kind = TokenKind::Name;
        token.text = text_.substr(start, at_ - start);
        return token;
    }

    Token quotedName(Token token, char16_t closing) {
        const std::size_t end = text_.find(closing, at_ + 1);
        if (end == std::u16string_view::npos || end == at_ + 1) {
            throwSyntax(text_, token.position, "Invalid bracketing of a name");
        }
        token.kind = TokenKind::Name;
        token.text = text_.substr(at_ + 1, end - at_ - 1);
        token.quoted = true;
        at_ = end + 1;
        return token;
    }

    /// A quote inside the literal is written twice.
    Token textLiteral(Token token) {
        const char16_t quote = text_[at_++];
        std::u16string content;
        for (;;) {
            const std::size_t end = text_.find(quote, at_);
            if (end == std::u16string_view::npos) {
                throwSyntax(text_, token.position, "Syntax error in text that is not closed");
            }
            content += text_.substr(at_, end - at_);
            at_ = end + 1;
            if (peek(0) != quote) break;
            content += quote;
            ++at_;
        }
        token.kind = TokenKind::Literal;
        token.value = std::move(content);
        return token;
    }

    Token dateLiteral(Token token) {
        const std::size_t end = text_.find(u'#', at_ + 1);
        const auto date = end == std::u16string_view::npos
                              ? std::nullopt
                              : parseDate(text_.substr(at_ + 1, end - at_ - 1));
        if (!date) throwSyntax(text_, token.position, "Syntax error in date");
        token.kind = TokenKind::Literal;
        token.value = *date;
        at_ = end + 1;
        return token;
    }

    void skipDigits(std::string& digits) {
        while (isDigit(peek(0))) digits += static_cast<char>(text_[at_++]);
    }

    Token numberLiteral(Token token) {
        std::string digits;
        bool integral = true;
        skipDigits(digits);
        if (peek(0) == u'.') {
            integral = false;
            digits += '.';
            ++at_;
            skipDigits(digits);
        }
        const bool sign = peek(1) == u'+' || peek(1) == u'-';
        if (lower(peek(0)) == u'e' && isDigit(peek(sign ? 2 : 1))) {
            integral = false;
            digits += 'e';
            if (peek(1) == u'-') digits += '-';
            at_ += sign ? 2 : 1;
            skipDigits(digits);
        }
        if (continuesName(peek(0))) throwSyntax(text_, token.position, "Syntax error in number");
        token.kind = TokenKind::Literal;
        token.value = number(digits, integral, token.position);
        return token;
    }

    jet::Value number(const std::string& digits, bool integral, std::size_t position) const {
        const char* const end = digits.data() + digits.size();
        std::int32_t whole = 0;
        if (integral && std::from_chars(digits.data(), end, whole).ec == std::errc{}) return whole;
        double value = 0;
        const auto parsed = std::from_chars(digits.data(), end, value);
        if (parsed.ec != std::errc{} || parsed.ptr != end || !std::isfinite(value)) {
            throwSyntax(text_, position, "Syntax error in number");
        }
        return value;
    }

    Token symbol(Token token) {
        static constexpr std::array<std::u16string_view, 17> kSymbols{
            u"<=", u">=", u"<>", u"(", u")", u",", u".", u";", u"!",
            u"*",  u"+",  u"-",  u"/", u"&", u"=", u"<", u">"};
        const auto rest = text_.substr(at_);
        const auto found = std::find_if(kSymbols.begin(), kSymbols.end(), [rest](auto candidate) {
            return rest.substr(0, candidate.size()) == candidate;
        });
        if (found == kSymbols.end()) throwSyntax(text_, at_);
        token.kind = TokenKind::Symbol;
        token.text = *found;
        at_ += found->size();
        return token;
    }

    std::u16string_view text_;
    std::size_t at_ = 0;
};

}  // namespace

std::vector<Token> tokenize(std::u16string_view text) {
    Lexer lexer{text};
    std::vector<Token> tokens;
    do {
        tokens.push_back(lexer.next());
    } while (tokens.back().kind != TokenKind::End);
    return tokens;
}

bool sameWord(std::u16string_view left, std::u16string_view right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(),
                      [](char16_t a, char16_t b) { return lower(a) == lower(b); });
}

void throwSyntax(std::u16string_view statement, std::size_t position, const char* reason) {
    constexpr std::size_t kShown = 40;
    if (position >= statement.size()) {
        throw Error{Fault::Syntax, std::string{reason} + " near the end of the statement."};
    }
    std::string shown = jet::toUtf8(statement.substr(position, kShown));
    if (statement.size() - position > kShown) shown += "...";
    throw Error{Fault::Syntax, std::string{reason} + " near '" + shown + "'."};
}

}  // namespace sql
