#include <dataModule/common/EventIdGenerator.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace td {

TEST(EventIdGenerator, CountsUpWithoutGapsOnAllThreads) {
    constexpr int THREADS = 4;
    constexpr int EACH = 1000;
    EventIdGenerator* const generator = EventIdGenerator::instance();
    const int first = generator->peekNextEventId();
    std::vector<std::vector<int>> ids(THREADS);
    std::vector<std::thread> threads;
    for (std::vector<int>& mine : ids) {
        threads.emplace_back([&mine, generator] {
            for (int count = 0; count < EACH; ++count)
                mine.push_back(generator->createNextEventId());
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    std::set<int> all;
    for (const std::vector<int>& mine : ids) {
        EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
        all.insert(mine.begin(), mine.end());
    }
    EXPECT_EQ(all.size(), static_cast<std::size_t>(THREADS * EACH));
    EXPECT_EQ(*all.begin(), first);
    EXPECT_EQ(generator->peekNextEventId(), first + THREADS * EACH);
}

} // namespace td
