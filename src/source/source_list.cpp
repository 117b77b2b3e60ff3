#include "source/source_list.h"

#include "platform/file_listing.h"
#include "platform/paths.h"
#include "platform/utf8.h"
#include "source/source.h"

#include <algorithm>
#include <cstdio>
#include <unordered_set>

namespace velmora {

namespace {

/// The names in `text`, as typed.
std::vector<std::string> Names(std::string_view text)
{
    if (text.find(kSourceSeparator) == text.npos || !ListFiles(text).empty())
        return {std::string(text)};
    std::vector<std::string> names;
    for (std::size_t begin = 0, end = 0; begin <= text.size(); begin = end + 1) {
        end = std::min(text.find(kSourceSeparator, begin), text.size());
        if (end > begin)
            names.emplace_back(text.substr(begin, end - begin));
    }
    return names;
}

bool IsList(std::string_view name)
{
    return name.starts_with(kListMark);
}

/// The lines of a file that are not empty; nullopt when it cannot be read.
std::optional<std::vector<std::string>> LinesOf(std::string_view path)
{
    std::FILE* const file = OpenFileStream(NativePath(path), "rb");
    if (file == nullptr)
        return std::nullopt;
    std::vector<std::string> lines(1);
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
        if (c == '\n')
            lines.emplace_back();
        else if (c != '\r')
            lines.back() += static_cast<char>(c);
    }
    std::fclose(file);
    lines.front() = std::string(WithoutByteOrderMark(lines.front()));
    std::erase(lines, "");
    return lines;
}

std::string NoFileMatches(const std::string& pattern)
{
    const std::size_t inAnyCase = CountFilesInAnyCase(pattern);
    return inAnyCase == 0 ? "No files to import"
                          : "No files to import (" + std::to_string(inAnyCase) + " in other letter case)";
}

/// Collects the files of all names.
class Listing {
public:
    explicit Listing(bool isOneName) : isOneName_(isOneName) {}

    void Add(const std::string& name)
    {
        if (IsList(name))
            return AddLinesOf(name.substr(1));
        const std::vector<std::string> found = ListFiles(name);
        for (const std::string& path : found)
            AddFile(path);
        if (found.empty())
            Miss(name, name.find_first_of("*?") == name.npos ? "File does not exist!" : NoFileMatches(name));
    }
    [[nodiscard]] SourceFiles Take()
    {
        if (files_.paths.empty() && !files_.problem)
            files_.problem = "No files to import";
        return std::move(files_);
    }

private:
    void AddLinesOf(const std::string& list)
    {
        isOneName_ = false;
        const std::optional<std::vector<std::string>> lines = LinesOf(list);
        if (!lines)
            return Miss(list, "The list of sources cannot be read");
        for (const std::string& line : *lines) {
            if (FileExists(line))
                AddFile(NativePath(line));
            else
                Miss(line, "File does not exist!");
        }
    }
    void AddFile(const std::string& path)
    {
        if (known_.insert(Utf8FromPath(PathFromUtf8(path).lexically_normal())).second)
            files_.paths.push_back(path);
    }
    /// One name alone needs not be said again.
    void Miss(const std::string& name, const std::string& problem)
    {
        if (!files_.problem)
            files_.problem = isOneName_ ? problem : problem + " [" + name + "]; nothing was converted";
    }

    bool isOneName_;
    SourceFiles files_;
    std::unordered_set<std::string> known_;
};

} // namespace

SourceFiles ListSourceFiles(std::string_view text)
{
    if (TrimWhiteSpace(text).empty())
        return {{}, "No XML file specified!"};
    if (text == kStandardInput)
        return {{std::string(text)}, std::nullopt};
    const std::vector<std::string> names = Names(text);
    Listing listing(names.size() == 1);
    for (const std::string& name : names)
        listing.Add(name);
    return listing.Take();
}

bool NamesSource(std::string_view text, std::string_view path)
{
    if (path.empty() || text == kStandardInput)
        return false;
    for (const std::string& name : Names(text))
        if (IsSameFile(path, IsList(name) ? name.substr(1) : name))
            return true;
    if (!FileExists(path))
        return false;
    const std::string identity = FileIdentity(NativePath(path));
    const std::vector<std::string> sources = ListSourceFiles(text).paths;
    return std::any_of(sources.begin(), sources.end(),
                       [&](const std::string& source) { return FileIdentity(source) == identity; });
}

} // namespace velmora
