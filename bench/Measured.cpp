#include "Measured.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "Syncs.h"

namespace bench {

namespace {

Sample sampleOf(const Take& take, bool isFirst) {
    Sample sample;
    sample.isFirst = isFirst;
    pause();
    take(sample);
    return sample;
}

void measure(benchmark::State& state, const Take& take, const Take& bound) {
    const Sample sample = sampleOf(take, false);
    state.SetIterationTime(sample.seconds);
    if (sample.syncs >= 0)
        state.counters["syncs"] = static_cast<double>(sample.syncs);
    if (sample.bytes > 0)
        state.counters["bytes"] = sample.bytes;
    if (bound)
        state.counters["bound"] = sampleOf(bound, false).seconds;
}

} // namespace

void Sample::start() {
    m_syncsBefore = syncCount();
    m_start = Clock::now();
}

void Sample::countSyncs() {
    syncs = syncCount() - m_syncsBefore;
}

void pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

void addMeasured(const std::string& name, int samples, const Take& take, const Take& bound) {
    const auto run = [take, bound, isFirst = true](benchmark::State& state) mutable {
        for ([[maybe_unused]] auto _ : state) {
            try {
                if (std::exchange(isFirst, false)) {
                    sampleOf(take, true);
                    if (bound)
                        sampleOf(bound, true);
                }
                measure(state, take, bound);
            } catch (const std::exception& error) {
                state.SkipWithError(error.what());
            }
        }
    };
    benchmark::RegisterBenchmark(name.c_str(), run)
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(samples)
        ->DisplayAggregatesOnly(true)
        ->Unit(benchmark::kMicrosecond)
        ->ComputeStatistics("longest",
                            [](const std::vector<double>& all) { return *std::max_element(all.begin(), all.end()); });
}

} // namespace bench
