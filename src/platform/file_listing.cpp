#include "platform/file_listing.h"

#include "platform/paths.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace velmora {

namespace {

namespace fs = std::filesystem;

char Folded(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
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

bool Matches(std::string_view pattern, std::string_view name, bool foldCase) noexcept
{
    const auto same = [foldCase](char a, char b) { return a == b || (foldCase && Folded(a) == Folded(b)); };
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
        } else if (p < pattern.size() && same(pattern[p], name[n])) {
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

/// The ordinary files in the folder of `path` whose names match the pattern at its end, in no order.
std::vector<std::string> FilesMatching(const std::string& path, bool foldCase)
{
    const std::string folder(FolderPart(path));
    const std::string pattern(NamePart(path));
    std::vector<std::string> files;
    std::error_code error;
    fs::directory_iterator entry(folder.empty() ? fs::path(".") : PathFromUtf8(folder), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const std::string name = Utf8FromPath(entry->path().filename());
        const bool hidden = name.starts_with('.') && !pattern.starts_with('.');
        std::error_code unreadable;
        if (!hidden && Matches(pattern, name, foldCase) && entry->is_regular_file(unreadable))
            files.push_back(folder + name);
    }
    return files;
}

} // namespace

bool MatchesWildcards(std::string_view pattern, std::string_view name) noexcept
{
    return Matches(pattern, name, kNamesIgnoreCase);
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
    std::vector<std::string> files = FilesMatching(path, kNamesIgnoreCase);
    std::sort(files.begin(), files.end());
    return files;
}

std::size_t CountFilesInAnyCase(std::string_view typed)
{
    return FilesMatching(NativePath(typed), true).size();
}

} // namespace velmora
