#include "support/scripted_host.h"
#include "xml/loaded_text.h"
#include "xml/structure_analysis.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::LoadBytes;

std::string Repeat(std::string_view text, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::size_t AnalysedEntries(Document& document)
{
    testing::ScriptedHost host;
    Job job(host);
    StructureModel model;
    velAnalyseXML(job, document, model);
    return model.UpperBound();
}

TEST(LargeDocuments, DepthIsNotLimitedByTheStack)
{
    constexpr int kDepth = 50'000; // more than enough to overflow a stack by recursion, here and when the tree is freed
    LoadResult loaded = LoadBytes(Repeat("<d>", kDepth) + "1" + Repeat("</d>", kDepth));
    ASSERT_EQ(loaded.document.ElementCount(), static_cast<std::size_t>(kDepth));
    EXPECT_EQ(loaded.document.Content(kDepth - 1), "1");
    EXPECT_EQ(AnalysedEntries(loaded.document), static_cast<std::size_t>(kDepth));
    const std::string path = loaded.document.PathText(loaded.document.Path(kDepth - 1));
    EXPECT_EQ(path.size(), 1000u);
    EXPECT_NE(path.find("/d/d...", 400), std::string::npos);
}

TEST(LargeDocuments, AParentMayHaveAnyNumberOfChildren)
{
    constexpr int kChildren = 50'000;
    LoadResult loaded = LoadBytes("<list>" + Repeat("<v>1</v><w/>", kChildren) + "</list>");
    EXPECT_EQ(loaded.document.ChildCount(0), 2u * kChildren);
    EXPECT_EQ(loaded.document.SameTagCount(1), static_cast<std::uint32_t>(kChildren));
    EXPECT_EQ(loaded.document.SameTagCount(2u * kChildren), static_cast<std::uint32_t>(kChildren));
    EXPECT_EQ(AnalysedEntries(loaded.document), 5u);
}

TEST(LargeDocuments, DistinctPathsAreNotSearchedForOneByOne)
{
    constexpr int kPaths = 20'000; // a search from the first would take 400 million steps for each of the two rounds
    std::string round;
    for (int i = 0; i < kPaths; ++i) {
        round.append("<t").append(std::to_string(i)).append(" a='1'/>");
    }
    LoadResult loaded = LoadBytes("<a><b>" + round + "</b><b>" + round + "</b></a>");
    EXPECT_EQ(loaded.document.Paths().Size(), kPaths + 3u);
    EXPECT_EQ(AnalysedEntries(loaded.document), kPaths + 2u);
}

TEST(LargeDocuments, LongTokensDoNotCostTheSquareOfTheirLength)
{
    const std::string longText(5'000'000, 'x');
    const LoadResult loaded = LoadBytes("<a b='" + longText + "'><!--" + longText + "-->" + longText + "</a>");
    EXPECT_EQ(loaded.problem, "");
    EXPECT_TRUE(loaded.document.AttributeValue(0, 0) == longText);
    EXPECT_TRUE(loaded.document.Content(0) == longText);
}

} // namespace
} // namespace velmora
