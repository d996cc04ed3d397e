// The words and signs of a statement.
//
//   for (const sql::Token& token : sql::tokenize(u"SELECT * FROM People")) use(token);
//
// Plain values; any thread may use them.
#pragma once

#include "engine/jet/value.h"
#include "engine/sql/values/error.h"

#include <string>
#include <string_view>
#include <vector>

namespace sql {

enum class TokenKind {
    Name,     ///< a keyword or a name; `quoted` if it was in brackets
    Literal,  ///< a number, a text or a date
    Symbol,   ///< one of ( ) , . ; ! * + - / & = <> < > <= >=
    End,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::u16string text;       ///< of a Name or Symbol
    bool quoted = false;       ///< a quoted name is never a keyword
    jet::Value value;          ///< of a Literal
    std::size_t position = 0;  ///< of its first character in the statement
};

/// The tokens of a statement; the last one is End. Throws Error{Syntax}.
std::vector<Token> tokenize(std::u16string_view text);

/// Whether two words are equal, ignoring the case of ASCII letters.
bool sameWord(std::u16string_view left, std::u16string_view right);

/// Throws Error{Syntax} that names what is at `position` of the statement.
[[noreturn]] void throwSyntax(std::u16string_view statement, std::size_t position,
                              const char* reason = "Syntax error in query expression");

}  // namespace sql
