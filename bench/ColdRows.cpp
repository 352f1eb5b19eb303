#include <benchmark/benchmark.h>

#include "Cold.h"
#include "Peer.h"
#include "Rows.h"

namespace bench {

namespace {

void measure(benchmark::State& state, const std::string& task, const std::string& subject, const Setting& setting) {
    const std::int64_t expected = sumOf(setting.tables);
    Outcome outcome;
    for ([[maybe_unused]] auto _ : state) {
        outcome = inNewProcess(task, subject, setting.directory);
        state.SetIterationTime(outcome.seconds);
    }
    const bool readsAll = task == "load" && subject != "bound" && subject != "ours, user state";
    if (readsAll && outcome.sum != expected)
        state.SkipWithError("the values read are not those that were written");
    if (task == "load" && subject != "bound") {
        std::size_t tableBytes = 0;
        for (const Table& table : setting.tables)
            tableBytes += table.values.size() * sizeof(int);
        state.counters["memory"] = static_cast<double>(outcome.residentBytes);
        state.counters["memory of tables"] =
            static_cast<double>(outcome.residentBytes) / static_cast<double>(tableBytes);
        state.counters["threads left"] = static_cast<double>(outcome.threads);
    }
    if (task == "create") {
        state.counters["syncs"] = static_cast<double>(outcome.syncs);
        state.counters["syncs of a file"] =
            static_cast<double>(outcome.syncs) / static_cast<double>(setting.tables.size());
    }
}

void registerRow(const std::string& task, const std::string& subject, const Setting& setting) {
    benchmark::RegisterBenchmark((task + "/" + subject).c_str(),
                                 [=, &setting](benchmark::State& state) { measure(state, task, subject, setting); })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

void registerColdRows(const Setting& setting) {
    for (const char* subject : {"ours", "ours, user state", "bound"})
        registerRow("load", subject, setting);
    for (const std::string& peer : peerNames())
        registerRow("load", peer, setting);
    registerRow("checksums of a load", "ours", setting);
    for (const char* subject : {"ours", "bound", "SQLite", "LMDB", "LevelDB"})
        registerRow("create", subject, setting);
}

} // namespace bench
