// A statement's tokens, read from front to back by its parsers.
//
//   sql::TokenStream tokens{u"SELECT 1"};
//   tokens.expectWord(u"SELECT");
//   const sql::Token one = tokens.take();
//
// Belongs to one thread.
#pragma once

#include "engine/sql/parse/ast.h"
#include "engine/sql/parse/token.h"

namespace sql {

class TokenStream {
public:
    explicit TokenStream(std::u16string_view text) : text_{text}, tokens_{tokenize(text)} {}

    const Token& peek(std::size_t ahead = 0) const {
        return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
    }

    Token take() {
        Token token = tokens_[at_];
        if (at_ + 1 < tokens_.size()) ++at_;
        return token;
    }

    bool isWord(std::u16string_view word, std::size_t ahead = 0) const {
        const Token& token = peek(ahead);
        return token.kind == TokenKind::Name && !token.quoted && sameWord(token.text, word);
    }

    bool isSymbol(std::u16string_view symbol, std::size_t ahead = 0) const {
        const Token& token = peek(ahead);
        return token.kind == TokenKind::Symbol && token.text == symbol;
    }

    bool takeWord(std::u16string_view word) {
        if (!isWord(word)) return false;
        take();
        return true;
    }

    bool takeSymbol(std::u16string_view symbol) {
        if (!isSymbol(symbol)) return false;
        take();
        return true;
    }

    void expectWord(std::u16string_view word) {
        if (!takeWord(word)) fail();
    }

    void expectSymbol(std::u16string_view symbol) {
        if (!takeSymbol(symbol)) fail();
    }

    /// A name; where only a name is possible, a keyword is one too.
    std::u16string expectName() {
        if (peek().kind != TokenKind::Name) fail();
        return take().text;
    }

    /// The default reason for fail(). `reason` must outlive the stream.
    void setReason(const char* reason) { reason_ = reason; }

    [[noreturn]] void fail() const { fail(reason_); }
    [[noreturn]] void fail(const char* reason) const { failAt(peek().position, reason); }

    [[noreturn]] void failAt(std::size_t position, const char* reason) const {
        throwSyntax(text_, position, reason);
    }

private:
    std::u16string_view text_;
    std::vector<Token> tokens_;
    const char* reason_ = "Syntax error in query expression";
    std::size_t at_ = 0;  ///< always a valid index: the last token, End, is never passed
};

/// Parses the longest expression at the front. Throws Error{Syntax}.
NodePtr parseExpression(TokenStream& tokens);

}  // namespace sql
