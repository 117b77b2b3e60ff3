#include "platform/worker.h"

#include "platform/bounded_queue.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <stdexcept>
#include <vector>

namespace velmora {
namespace {

TEST(Worker, HandsOverEverythingInOrderThroughAQueueOfOne)
{
    constexpr int kItems = 10'000;
    BoundedQueue<int> queue(1);
    const auto worker = Worker::Start([&] {
        for (int i = 0; i < kItems; ++i)
            ASSERT_TRUE(queue.Push(i));
        queue.Close();
    });
    std::vector<int> items;
    while (const std::optional<int> item = queue.Pop())
        items.push_back(*item);
    worker->Join();
    ASSERT_EQ(items.size(), static_cast<std::size_t>(kItems));
    EXPECT_TRUE(std::is_sorted(items.begin(), items.end()));
}

TEST(Worker, IsWokenWhenItsQueueIsClosed)
{
    BoundedQueue<int> full(1), empty(1);
    ASSERT_TRUE(full.Push(1));
    bool pushed = true, popped = true;
    const auto pusher = Worker::Start([&] { pushed = full.Push(2); });
    const auto popper = Worker::Start([&] { popped = empty.Pop().has_value(); });
    full.Close();
    empty.Close();
    pusher->Join();
    popper->Join();
    EXPECT_FALSE(pushed);
    EXPECT_FALSE(popped);
    EXPECT_EQ(full.Pop(), 1) << "what was in it can still be taken";
}

TEST(Worker, ThrowsWhatItsWorkHasThrownOrHasEndedWhenItIsGone)
{
    const auto worker = Worker::Start([] { throw std::runtime_error("no"); });
    EXPECT_THROW(worker->Join(), std::runtime_error);
    bool hasEnded = false;
    Worker::Start([&] { hasEnded = true; }).reset();
    EXPECT_TRUE(hasEnded);
}

} // namespace
} // namespace velmora
