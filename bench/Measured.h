/// Rows of samples, each of which takes its own time of a part of what it does.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace bench {

using Clock = std::chrono::steady_clock;

struct Sample {
    bool isFirst = false; ///< it makes what the others only write to, and does not count
    double seconds = 0;
    long syncs = -1;  ///< between start() and countSyncs(), if that was asked
    double bytes = 0; ///< size of the file that was at work; 0 where that tells nothing

    void start();
    void stop(Clock::time_point end = Clock::now()) { seconds = std::chrono::duration<double>(end - m_start).count(); }
    void countSyncs();

private:
    Clock::time_point m_start;
    long m_syncsBefore = 0;
};

/// Takes one sample; what it throws is an error of the row.
using Take = std::function<void(Sample&)>;

/// Between two samples: a person's keys come one by one, and no store profits from one that the same tick of the
/// kernel's clock saw, which leaves a file's times as they are.
void pause();

/// A row "row/subject" of so many samples, some time apart, after a first one that does not count. Those of a bound are
/// taken in turn with them, so that moods of the disk hit both alike, and make the counter "bound", in seconds.
void addMeasured(const std::string& name, int samples, const Take& take, const Take& bound = nullptr);

} // namespace bench
