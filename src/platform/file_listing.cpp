#include "platform/file_listing.h"

#include "platform/paths.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace velmora {

namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
constexpr bool kFoldCase = true;
#else
constexpr bool kFoldCase = false;
#endif

char Folded(char c) noexcept
{
    return kFoldCase && c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The position behind the character at `position`: the continuation bytes of UTF-8 belong to the byte in front of
/// them.
std::size_t NextCharacter(std::string_view text, std::size_t position) noexcept
{
    do
        ++position;
    while (position < text.size() && (static_cast<unsigned char>(text[position]) & 0xC0) == 0x80);
    return position;
}

} // namespace

bool MatchesWildcards(std::string_view pattern, std::string_view name) noexcept
{
    std::size_t p = 0;
    std::size_t n = 0;
    // After a mismatch only the last star needs another try, one character further on: earlier ones could give nothing
    // new.
    std::size_t afterStar = std::string_view::npos;
    std::size_t starEnd = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            afterStar = ++p;
            starEnd = n;
        } else if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            n = NextCharacter(name, n);
        } else if (p < pattern.size() && Folded(pattern[p]) == Folded(name[n])) {
            ++p;
            ++n;
        } else if (afterStar != std::string_view::npos) {
            p = afterStar;
            starEnd = NextCharacter(name, starEnd);
            n = starEnd;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

bool HasWildcards(std::string_view path) noexcept
{
    return NamePart(path).find_first_of("*?") != std::string_view::npos;
}

std::vector<std::string> ListFiles(std::string_view typed)
{
    const std::string path = NativePath(typed);
    if (!HasWildcards(path))
        return FileExists(path) ? std::vector<std::string>{path} : std::vector<std::string>{};

    const std::string folder(FolderPart(path));
    const std::string pattern(NamePart(path));
    std::vector<std::string> files;
    std::error_code error;
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : PathFromUtf8(folder), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string name = Utf8FromPath(entry->path().filename());
        const bool hidden = name.starts_with('.') && !pattern.starts_with('.');
        std::error_code unreadable;
        if (!hidden && MatchesWildcards(pattern, name) && entry->is_regular_file(unreadable))
            files.push_back(folder + name);
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace velmora
