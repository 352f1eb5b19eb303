#include <dataModule/common/TimeUtil.h>

#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "LogCapture.h"

namespace td {

TEST(TimeUtil, MeasuresFromStartToEnd) {
    TimeUtil* const timer = TimeUtil::instance();
    ASSERT_TRUE(timer->start());
    ASSERT_TRUE(timer->end());
    EXPECT_GE(timer->getElapsed(), 0);
    timer->reset();
    EXPECT_EQ(timer->getElapsed(), 0);
    const auto now = [] {
        using namespace std::chrono;
        return static_cast<int>(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
    };
    const int before = now();
    ASSERT_TRUE(timer->end()); // from the zero point of the monotonic clock
    EXPECT_THAT(timer->getElapsed(), testing::AllOf(testing::Ge(before), testing::Le(now()))) << "milliseconds";
    EXPECT_TRUE(timer->hungUp(0));
}

TEST(TimeUtil, RefusesAnEndBeforeTheStart) {
    const test::LogCapture log;
    TimeUtil* const timer = TimeUtil::instance();
    ASSERT_TRUE(timer->end());
    ASSERT_TRUE(timer->start()); // forgets the end point
    EXPECT_EQ(timer->getElapsed(), -1);
    EXPECT_EQ(log.count("[dataModule] The time point record is invalid.\n"), 1U);
}

} // namespace td
