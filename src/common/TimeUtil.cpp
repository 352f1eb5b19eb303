#include <dataModule/common/TimeUtil.h>

#include <chrono>
#include <ctime>
#include <thread>

#include "common/Log.h"

namespace td {

TimeUtil* TimeUtil::instance() {
    static auto* const timer = new TimeUtil;
    return timer;
}

void TimeUtil::reset() {
    m_start.set(0, 0);
    m_end.set(0, 0);
}

bool TimeUtil::start() {
    reset();
    return read(m_start);
}

bool TimeUtil::end() {
    return read(m_end);
}

int TimeUtil::getElapsed() const {
    constexpr std::int64_t NANOSECONDS_PER_MILLISECOND = 1000000;
    constexpr std::int64_t MILLISECONDS_PER_SECOND = 1000;
    // In 64 bits: another thread may set the points while they are read, and any difference may come out of that.
    const std::int64_t seconds = std::int64_t{m_end.seconds} - m_start.seconds;
    const std::int64_t nanoseconds = std::int64_t{m_end.nanoseconds} - m_start.nanoseconds;
    if (seconds < 0 || (seconds == 0 && nanoseconds < 0)) {
        TD_WARNING("The time point record is invalid.\n");
        return -1;
    }
    return static_cast<int>(nanoseconds / NANOSECONDS_PER_MILLISECOND + MILLISECONDS_PER_SECOND * seconds);
}

bool TimeUtil::hungUp(int seconds) {
    start();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    end();
    getElapsed();
    return true;
}

bool TimeUtil::read(Point& point) {
    timespec now{};
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return false;
    point.set(static_cast<std::int32_t>(now.tv_sec), static_cast<std::int32_t>(now.tv_nsec));
    return true;
}

} // namespace td
