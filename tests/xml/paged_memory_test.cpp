#include "xml/paged_memory.h"

#include "xml/paged_array.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(PagedMemory, GoesToAFileWhenTheSharedBudgetIsSpent)
{
    MemoryBudget budget{2'000'000, 0};
    {
        PagedArray<std::uint32_t> first(budget), second(budget);
        for (std::uint32_t i = 0; i < 1'000'000; ++i) {
            first.Add(i);
            if (i < 100'000)
                second.Add(~i);
            if (i == 100'000) {
                EXPECT_FALSE(first.IsInFile());
                EXPECT_FALSE(second.IsInFile());
            }
        }
        EXPECT_TRUE(first.IsInFile());
        EXPECT_FALSE(second.IsInFile());
        for (std::uint32_t i = 0; i < 1'000'000; ++i)
            ASSERT_EQ(first[i], i);
        EXPECT_EQ(second[99'999], ~std::uint32_t{99'999});
        EXPECT_LE(budget.usedBytes, budget.limitBytes);
    }
    EXPECT_EQ(budget.usedBytes, 0u);
}

} // namespace
} // namespace velmora
