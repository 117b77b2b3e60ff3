#include "log/passwords.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr std::string_view kSchemeEnd = "://";

bool IsLetter(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Whether the word that ends before `equals` is the key of a password.
bool IsPasswordKey(std::string_view text, std::size_t equals)
{
    std::size_t begin = equals;
    while (begin > 0 && IsLetter(text[begin - 1]))
        --begin;
    std::string key(text.substr(begin, equals - begin));
    std::transform(key.begin(), key.end(), key.begin(), [](char c) { return static_cast<char>(c | 0x20); });
    constexpr std::string_view kKeys[] = {"pwd", "pw", "pass", "passwd", "password"};
    return std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys);
}

/// The end of the value that begins at `begin`; one whose quote is never closed goes to the end.
std::size_t ValueEnd(std::string_view text, std::size_t begin)
{
    if (text.substr(begin, 1) == "\"")
        return std::min(text.find('"', begin + 1), text.size() - 1) + 1;
    return std::min(text.find(' ', begin), text.size());
}

/// The length of the `user:password` before an "@" in an authority at the beginning of `rest`; 0 when it has none.
std::size_t UserLength(std::string_view rest)
{
    const std::string_view authority = rest.substr(0, rest.find_first_of("/?#\\\" \t\r\n"));
    const std::size_t at = authority.rfind('@');
    return at == authority.npos ? 0 : at;
}

std::string WithoutPasswordValues(std::string_view text)
{
    std::string result;
    std::size_t kept = 0;
    for (std::size_t equals = 0; (equals = text.find('=', equals)) != text.npos; ++equals) {
        if (equals < kept || !IsPasswordKey(text, equals))
            continue;
        result.append(text.substr(kept, equals + 1 - kept));
        kept = ValueEnd(text, equals + 1);
        if (kept > equals + 1)
            result.append(kHiddenPassword);
    }
    return result.append(text.substr(kept));
}

std::string WithoutUsersOfUrls(std::string_view text)
{
    std::string result;
    std::size_t kept = 0;
    for (std::size_t scheme = 0; (scheme = text.find(kSchemeEnd, scheme)) != text.npos; scheme += kSchemeEnd.size()) {
        const std::size_t user = scheme + kSchemeEnd.size();
        const std::size_t length = UserLength(text.substr(user));
        if (length == 0)
            continue;
        result.append(text.substr(kept, user - kept)).append(kHiddenPassword);
        kept = user + length;
    }
    return result.append(text.substr(kept));
}

} // namespace

std::string WithoutPasswords(std::string_view text)
{
    return WithoutUsersOfUrls(WithoutPasswordValues(text));
}

std::string WithoutUserOfUrl(std::string_view url)
{
    std::string result;
    while (!url.empty()) {
        const std::string_view word = url.substr(0, std::min(url.find(' '), url.size() - 1) + 1);
        const std::size_t scheme = word.find(kSchemeEnd);
        const std::size_t user = scheme == word.npos ? 0 : scheme + kSchemeEnd.size();
        const std::size_t length = UserLength(word.substr(user));
        result.append(word.substr(0, user));
        if (length > 0)
            result.append(kHiddenPassword);
        result.append(word.substr(user + length));
        url.remove_prefix(word.size());
    }
    return result;
}

} // namespace velmora
