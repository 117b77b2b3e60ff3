#include "jet/sql/lexer.h"

namespace jet::sql {

namespace {

bool IsBlank(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

/// Bytes of characters outside ASCII count as letters: bare names may hold any of them.
bool IsWordByte(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || IsDigit(c) || (c & 0x80) != 0;
}

} // namespace

Token Lexer::Take(TokenKind kind, std::size_t end) noexcept
{
    const Token token{kind, sql_.substr(at_, end - at_), at_};
    at_ = end;
    return token;
}

Token Lexer::Next() noexcept
{
    while (at_ < sql_.size() && IsBlank(sql_[at_]))
        ++at_;
    if (at_ == sql_.size())
        return Take(TokenKind::End, at_);

    const char first = sql_[at_];
    if (first == '[') {
        // No name holds one, so none can be quoted within the brackets.
        const std::size_t close = sql_.find(']', at_);
        if (close == std::string_view::npos)
            return Take(TokenKind::Bad, sql_.size());
        Token name = Take(TokenKind::Name, close + 1);
        name.text = name.text.substr(1, name.text.size() - 2);
        return name;
    }
    std::size_t end = at_ + 1;
    if (IsWordByte(first)) {
        // A bare name may begin with a digit: only digits to its end make it a number.
        bool digits = IsDigit(first);
        for (; end < sql_.size() && IsWordByte(sql_[end]); ++end)
            digits = digits && IsDigit(sql_[end]);
        return Take(digits ? TokenKind::Number : TokenKind::Word, end);
    }
    const bool known = first == '(' || first == ')' || first == ',' || first == ';' || first == '=' || first == '*';
    return Take(known ? TokenKind::Symbol : TokenKind::Bad, end);
}

} // namespace jet::sql
