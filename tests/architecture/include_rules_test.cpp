// Who may include whom: one table, held against every #include in the sources.

#include "support/shared.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::testing {
namespace {

/// One part of the house and the parts that it may include, itself aside; blank-separated.
///
/// `jet` is the engine's face: the files that lie in src/jet itself.
struct Part {
    std::string_view name;
    std::string_view mayInclude;
};
constexpr Part kParts[] = {
    {"jet/base", ""},
    {"jet/store", "jet/base"},
    {"jet/index", "jet/base jet/store"},
    {"jet/table", "jet/base jet/store jet/index"},
    {"jet/catalog", "jet/base jet/store jet/index jet/table"},
    {"jet/relations", "jet/base jet/store jet/index jet/table jet/catalog"},
    {"jet/sql", "jet/base jet/store jet/index jet/table jet/catalog jet/relations"},
    {"jet", "jet/base jet/store jet/index jet/table jet/catalog jet/relations jet/sql"},
    {"jet/c", "jet jet/base"},
    {"platform", ""},
    {"host", ""},
    {"log", "platform host"},
    {"settings", "platform host log"},
    {"source", "platform host log settings"},
    {"mapping", "platform host log settings"},
    {"xml", "platform host log settings source"},
    {"plan", "platform host log settings mapping xml"},
    {"schema", "platform host log settings xml plan jet jet/base"},
    {"import", "platform host log settings source xml plan schema"},
    {"xml_export", "platform host log settings schema"},
    {"driver", "platform host log settings source mapping xml plan schema import xml_export"},
    {"app", "platform host log settings source mapping xml plan schema import xml_export driver"},
    {"console", "platform host log settings source mapping xml plan schema import xml_export driver app"},
    {"ui", "platform host log settings source mapping xml plan schema import xml_export driver app"},
};

/// Libraries from outside that only some parts know: a pattern for the header's name, and these parts.
struct OutsideLibrary {
    std::regex header;
    std::string_view onlyIn;
};
const OutsideLibrary kOutsideLibraries[] = {
    {std::regex("Q[A-Z].*"), "ui"},
    {std::regex("expat.*\\.h"), "xml"},
    {std::regex("iconv\\.h"), "platform"},
    {std::regex("archive(_entry)?\\.h"), "source"},
    // The operating system's own, and not those of the language C.
    {std::regex("(sys/.*|(?!std(def|int)\\.)[a-z]+)\\.h"), "platform jet/store"},
};

/// What asks the operating system by way of the standard library.
constexpr std::string_view kSystemWords[] = {"getenv", "localtime", "tmpfile", "random_device", "fopen"};

bool IsListed(std::string_view list, const std::string& word)
{
    return (" " + std::string(list) + " ").find(" " + word + " ") != std::string::npos;
}

const Part* FindPart(const std::string& name)
{
    const auto found =
        std::find_if(std::begin(kParts), std::end(kParts), [&](const Part& p) { return p.name == name; });
    return found == std::end(kParts) ? nullptr : found;
}

/// The part that a path below src/ belongs to: "jet/store/pager.h" to "jet/store", "jet/recordset.h" to "jet".
std::string PartOf(const std::filesystem::path& path)
{
    std::vector<std::string> names;
    for (const std::filesystem::path& name : path)
        names.push_back(name.string());
    if (names.size() < 2)
        return {};
    if (names[0] != "jet")
        return names[0];
    if (names.size() > 2)
        return "jet/" + names[1];
    return "jet";
}

/// What is wrong with one include; empty when nothing is.
std::string Objection(const std::filesystem::path& source, const std::string& header, bool quoted)
{
    const std::string from = PartOf(source);
    const Part* part = FindPart(from);
    if (part == nullptr)
        return "lies in a folder that is no part of the house";
    if (!quoted) {
        for (const OutsideLibrary& library : kOutsideLibraries)
            if (std::regex_match(header, library.header))
                return IsListed(library.onlyIn, from) ? "" : "may be known in " + std::string(library.onlyIn) + " only";
        return {};
    }
    const std::string to = PartOf(header);
    if (FindPart(to) == nullptr)
        return "does not start at src/ with the name of a part";
    if (to != from && !IsListed(part->mayInclude, to))
        return from + " may not include " + to;
    return {};
}

/// Calls `visit` with each line of each source, and the source's path below src/.
template <class Visit>
void ForEachLine(const Visit& visit)
{
    const std::filesystem::path root = VELMORA_SOURCE_FOLDER;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp" && extension != ".inc")
            continue;
        std::istringstream text(ReadFile(entry.path()));
        for (std::string line; std::getline(text, line);)
            visit(std::filesystem::relative(entry.path(), root), line);
    }
}

TEST(Architecture, EveryIncludePointsDownwards)
{
    const std::regex include(R"re([ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"].*)re");
    int includes = 0;
    ForEachLine([&](const std::filesystem::path& source, const std::string& line) {
        std::smatch match;
        if (line.find("include") == line.npos || !std::regex_match(line, match, include))
            return;
        ++includes;
        const std::string header = match[2];
        EXPECT_EQ(Objection(source, header, match[1] == "\""), "") << source.generic_string() << " includes " << header;
    });
    EXPECT_GT(includes, 0) << "no sources found";
}

TEST(Architecture, TheSystemIsAskedInTwoPlaces)
{
    ForEachLine([](const std::filesystem::path& source, const std::string& line) {
        const std::string part = PartOf(source);
        for (const std::string_view word : kSystemWords) {
            if (part != "platform" && part != "jet/store") {
                EXPECT_EQ(line.find(word), line.npos) << source.generic_string() << ": " << line;
            }
        }
    });
}

} // namespace
} // namespace velmora::testing
