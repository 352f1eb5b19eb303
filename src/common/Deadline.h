/// Points in time on the monotonic clock, so that a set clock neither delays nor hurries a wait.
#pragma once

#include <cstdint>
#include <ctime>

namespace td {

/// The point `milliseconds` from now.
inline timespec deadlineIn(std::int64_t milliseconds) {
    constexpr std::int64_t MILLISECONDS = 1000;
    constexpr long NANOSECONDS_PER_MILLISECOND = 1000000;
    constexpr long NANOSECONDS = 1000000000;

    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += static_cast<time_t>(milliseconds / MILLISECONDS);
    deadline.tv_nsec += static_cast<long>(milliseconds % MILLISECONDS) * NANOSECONDS_PER_MILLISECOND;
    if (deadline.tv_nsec >= NANOSECONDS) {
        deadline.tv_nsec -= NANOSECONDS;
        ++deadline.tv_sec;
    }
    return deadline;
}

inline bool hasPassed(const timespec& deadline) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec != deadline.tv_sec ? now.tv_sec > deadline.tv_sec : now.tv_nsec >= deadline.tv_nsec;
}

} // namespace td
