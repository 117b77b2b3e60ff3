#include "platform/process.h"

#include "platform/paths.h"

#include <algorithm>

namespace velmora {

namespace {

/// The end of the program's path at the beginning of `line`, which stands without quotes.
std::size_t ProgramEnd(std::string_view line)
{
    const std::size_t firstBlank = line.find(' ');
    if (FolderPart(line.substr(0, firstBlank)).empty())
        return firstBlank;
    for (std::size_t blank = firstBlank; blank != line.npos; blank = line.find(' ', blank + 1))
        if (FileExists(line.substr(0, blank)))
            return blank;
    return firstBlank;
}

} // namespace

std::vector<std::string> SplitProgramLine(std::string_view line)
{
    std::vector<std::string> words;
    std::string word;
    bool hasWord = false;
    bool quoted = false;
    std::size_t position = 0;
    if (!line.empty() && line.front() != '"' && line.front() != ' ') {
        position = std::min(ProgramEnd(line), line.size());
        words.emplace_back(line.substr(0, position));
    }
    for (; position < line.size(); ++position) {
        const char c = line[position];
        if (c == ' ' && !quoted) {
            if (hasWord)
                words.push_back(std::move(word));
            word.clear();
            hasWord = false;
            continue;
        }
        hasWord = true;
        if (c == '"')
            quoted = !quoted;
        else
            word += c;
    }
    if (hasWord)
        words.push_back(std::move(word));
    return words;
}

} // namespace velmora
