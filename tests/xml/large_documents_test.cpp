#include "settings/job.h"
#include "support/scripted_host.h"
#include "xml/loaded_text.h"
#include "xml/structure_model.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

using testing::LoadBytes;

TEST(LargeDocuments, DistinctPathsAreNotSearchedForOneByOne)
{
    constexpr int kPaths = 20'000; // a search from the first would take 400 million steps for each of the two rounds
    std::string round;
    for (int i = 0; i < kPaths; ++i) {
        round.append("<t").append(std::to_string(i)).append(" a='1'/>");
    }
    LoadResult loaded = LoadBytes("<a><b>" + round + "</b><b>" + round + "</b></a>");
    EXPECT_EQ(loaded.document.Paths().Size(), kPaths + 3u);
    testing::ScriptedHost host;
    Job job(host);
    StructureModel model;
    AnalyseStructure(job, loaded.document, model);
    EXPECT_EQ(model.UpperBound(), kPaths + 2u);
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
