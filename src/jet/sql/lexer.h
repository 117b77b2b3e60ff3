#pragma once

#include <cstddef>
#include <string_view>

namespace jet::sql {

enum class TokenKind {
    End,
    Word,   ///< a keyword or a bare name
    Name,   ///< a name in brackets; the text is what stands between them
    Number, ///< decimal digits
    Symbol, ///< one character of punctuation
    Bad,    ///< a bracket without its end, or a character that no statement holds
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string_view text;  ///< a part of the statement
    std::size_t offset = 0; ///< bytes from the statement's start to the token's
};

/// Cuts a statement into tokens; a view of the text, which must outlive it. Never throws: what it cannot read is a Bad
/// token, for the parser to complain of.
class Lexer {
public:
    explicit Lexer(std::string_view sql) noexcept : sql_(sql) {}

    [[nodiscard]] Token Next() noexcept;

private:
    [[nodiscard]] Token Take(TokenKind kind, std::size_t end) noexcept;

    std::string_view sql_;
    std::size_t at_ = 0;
};

} // namespace jet::sql
