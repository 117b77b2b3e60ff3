#include "xml/loaded_text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>

namespace velmora {
namespace {

namespace fs = std::filesystem;

/// A file of tab-separated columns with a heading: one map per line.
std::vector<std::map<std::string, std::string>> ReadTable(const fs::path& path)
{
    std::ifstream file(path);
    const auto fields = [](const std::string& line) {
        std::vector<std::string> result;
        std::istringstream stream(line);
        for (std::string field; std::getline(stream, field, '\t');)
            result.push_back(field);
        return result;
    };
    std::string line;
    std::getline(file, line);
    const std::vector<std::string> heading = fields(line);
    std::vector<std::map<std::string, std::string>> rows;
    while (std::getline(file, line)) {
        const std::vector<std::string> values = fields(line);
        std::map<std::string, std::string>& row = rows.emplace_back();
        for (std::size_t i = 0; i < std::min(values.size(), heading.size()); ++i)
            row[heading[i]] = values[i];
    }
    return rows;
}

/// Elements, attributes, depth, paths, and the longest attribute in characters.
std::string Figures(const Document& document)
{
    std::size_t attributes = 0, depth = 0, longest = 0;
    std::vector<std::size_t> depths(document.ElementCount(), 1);
    for (ElementId e = 0; e < document.ElementCount(); ++e) {
        attributes += document.AttributeCount(e);
        if (e != 0)
            depths[e] = depths[document.Parent(e)] + 1;
        depth = std::max(depth, depths[e]);
        for (std::uint32_t i = 0; i < document.AttributeCount(e); ++i) {
            const std::string_view value = document.AttributeValue(e, i);
            const auto characters =
                std::count_if(value.begin(), value.end(), [](char c) { return (c & 0xC0) != 0x80; });
            longest = std::max(longest, static_cast<std::size_t>(characters));
        }
    }
    std::ostringstream text;
    text << document.ElementCount() << " elements, " << attributes << " attributes, depth " << depth << ", "
         << document.Paths().Size() - 1 << " paths, longest attribute " << longest;
    return text.str();
}

TEST(Corpus, EveryRealFileHasTheFiguresCountedElsewhere)
{
    REQUIRE_SHARED(shared);
    const fs::path folder = shared / "corpus" / "xml";
    const auto rows = ReadTable(folder / "facts.tsv");
    ASSERT_GT(rows.size(), 30u);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.at("file"));
        const LoadResult loaded = LoadDocument((folder / row.at("file")).string(), [] {});
        EXPECT_EQ(loaded.problem, "");
        EXPECT_EQ(Figures(loaded.document), row.at("elements") + " elements, " + row.at("attributes") +
                                                " attributes, depth " + row.at("depth") + ", " + row.at("paths") +
                                                " paths, longest attribute " + row.at("longest_attribute"));
    }
}

} // namespace
} // namespace velmora
