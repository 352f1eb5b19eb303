/// Measures how long an operation took, for log lines. One instance is shared by everybody: concurrent measurements
/// overwrite each other's points, which only makes a logged number wrong.
#pragma once

#include <atomic>
#include <cstdint>

#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API TimeUtil {
public:
    /// The one instance of the process; never destroyed.
    static TimeUtil* instance();
    virtual ~TimeUtil() = default;
    TimeUtil(const TimeUtil&) = delete;
    TimeUtil& operator=(const TimeUtil&) = delete;

    /// Both points to zero.
    void reset();
    /// Resets, then takes the start point. False when the clock cannot be read.
    bool start();
    /// Takes the end point. False when the clock cannot be read.
    bool end();
    /// Whole milliseconds from start to end, or -1 (with a log line) when the end lies before the start.
    int getElapsed() const;
    /// Sleeps for `seconds` between a start and an end.
    bool hungUp(int seconds);

private:
    TimeUtil() = default;

    /// A reading of CLOCK_MONOTONIC.
    struct Point {
        std::atomic<std::int32_t> seconds{0};
        std::atomic<std::int32_t> nanoseconds{0};

        /// Nothing else is published by it, so no order with other memory is asked for.
        void set(std::int32_t wholeSeconds, std::int32_t rest) {
            seconds.store(wholeSeconds, std::memory_order_relaxed);
            nanoseconds.store(rest, std::memory_order_relaxed);
        }
    };
    static bool read(Point& point);

    Point m_start;
    Point m_end;
};

/// Ends the shared measurement and tells how long it took, as getElapsed() does.
inline int elapsedMilliseconds() {
    TimeUtil::instance()->end();
    return TimeUtil::instance()->getElapsed();
}

} // namespace td
