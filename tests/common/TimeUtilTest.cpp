#include <dataModule/common/TimeUtil.h>

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
    ASSERT_TRUE(timer->end()); // from the zero point of the monotonic clock
    EXPECT_GT(timer->getElapsed(), 0);
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
