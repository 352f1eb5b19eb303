#include <array>
#include <random>

#include <benchmark/benchmark.h>

#include "Opened.h"

namespace bench {

namespace {

constexpr td::_DataCategory_t CATEGORY = td::PICTURE_MODE;
constexpr std::size_t REQUESTS = 1024;

struct Request {
    std::vector<int> dims;
    const td::Field* field;
};

/// All over the category, made before the clock runs.
std::vector<Request> randomRequests(const td::CategoryLayout& layout) {
    std::mt19937 random(7);
    std::vector<Request> requests;
    for (std::size_t i = 0; i < REQUESTS; ++i) {
        const int record = static_cast<int>(random() % static_cast<unsigned int>(layout.recordCount()));
        const std::size_t field = random() % layout.fields.size();
        requests.push_back({dimensionsOf(layout, record), &layout.fields[field]});
    }
    return requests;
}

/// Runs `read` with one request after another; `isRight` looks at one answer.
template <class Read>
void run(benchmark::State& state, const std::vector<Request>& requests, Read read) {
    std::size_t next = static_cast<std::size_t>(state.thread_index()) * 100;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(read(requests[next++ % REQUESTS]));
}

void readFieldOfOurs(benchmark::State& state, const Setting& setting, const std::vector<Request>& requests) {
    td::FileDataSeparateManager& manager = library(setting).manager();
    std::vector<td::_Argument_t> args(1);
    run(state, requests, [&](const Request& request) {
        args[0].name = request.field->argumentName();
        manager.loadData(CATEGORY, request.dims, args);
        return args[0].value;
    });
}

void readRecordOfOurs(benchmark::State& state, const Setting& setting, const std::vector<Request>& requests) {
    td::FileDataSeparateManager& manager = library(setting).manager();
    std::vector<td::_Argument_t> args;
    run(state, requests, [&](const Request& request) {
        args.clear();
        manager.loadData(CATEGORY, request.dims, args);
        return args.back().value;
    });
}

void readFieldOf(Peer& peer, benchmark::State& state, const std::vector<Request>& requests) {
    run(state, requests,
        [&](const Request& request) { return peer.readField(tableOf(CATEGORY), request.dims.data(), *request.field); });
}

void readRecordOf(Peer& peer, benchmark::State& state, const std::vector<Request>& requests) {
    std::array<int, 64> values{};
    run(state, requests, [&](const Request& request) {
        peer.readRecord(tableOf(CATEGORY), request.dims.data(), values.data());
        return values.back();
    });
}

/// Every peer answers what the library answers.
bool agree(Peer& peer, const Setting& setting, const std::vector<Request>& requests) {
    for (const Request& request : requests) {
        std::vector<td::_Argument_t> args{{request.field->argumentName(), 0}};
        library(setting).manager().loadData(CATEGORY, request.dims, args);
        if (peer.readField(tableOf(CATEGORY), request.dims.data(), *request.field) != args[0].value)
            return false;
    }
    return true;
}

template <class Run>
void registerRow(const std::string& row, const std::string& subject, bool parallel, Run body) {
    const auto benchmark = benchmark::RegisterBenchmark((row + "/" + subject).c_str(), body);
    benchmark->UseRealTime();
    if (parallel)
        benchmark->Threads(1)->Threads(2)->Threads(8);
    else
        benchmark->Threads(1);
}

} // namespace

void registerReadRows(const Setting& setting) {
    static const std::vector<Request> requests =
        randomRequests(*setting.tables[static_cast<std::size_t>(tableOf(CATEGORY))].layout);
    const Setting* const all = &setting;
    registerRow("read field", "ours", true, [all](benchmark::State& state) { readFieldOfOurs(state, *all, requests); });
    registerRow("read record", "ours", true,
                [all](benchmark::State& state) { readRecordOfOurs(state, *all, requests); });
    for (const std::string& name : peerNames()) {
        Peer* const subject = &peer(name, setting);
        if (!agree(*subject, setting, requests))
            throw std::runtime_error(name + " answers other values than the library");
        const bool parallel = subject->readsInParallel();
        registerRow("read field", name, parallel,
                    [subject](benchmark::State& state) { readFieldOf(*subject, state, requests); });
        registerRow("read record", name, parallel,
                    [subject](benchmark::State& state) { readRecordOf(*subject, state, requests); });
    }
}

} // namespace bench
