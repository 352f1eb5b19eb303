#include <array>
#include <random>

#include <benchmark/benchmark.h>

#include "Opened.h"

namespace bench {

namespace {

constexpr td::_DataCategory_t CATEGORY = td::PICTURE_MODE;
constexpr td::_DataCategory_t OTHER_CATEGORY = td::PICTURE_COLOR_TUNER;
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

/// Runs `read` with one request after another, once with each before the clock runs: connections are open then, and
/// statements prepared.
template <class Read>
void run(benchmark::State& state, const std::vector<Request>& requests, Read read) {
    for (const Request& request : requests)
        benchmark::DoNotOptimize(read(request));
    std::size_t next = static_cast<std::size_t>(state.thread_index()) * 100;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(read(requests[next++ % REQUESTS]));
}

void readFieldOfOurs(benchmark::State& state, const Setting& setting, td::_DataCategory_t category,
                     const std::vector<Request>& requests) {
    td::FileDataSeparateManager& manager = library(setting).manager();
    std::vector<td::_Argument_t> args(1);
    bool answered = true;
    run(state, requests, [&](const Request& request) {
        args[0].name = request.field->argumentName();
        answered = manager.loadData(category, request.dims, args) && answered;
        return args[0].value;
    });
    if (!answered)
        state.SkipWithError("a read was refused");
}

void readRecordOfOurs(benchmark::State& state, const Setting& setting, const std::vector<Request>& requests) {
    td::FileDataSeparateManager& manager = library(setting).manager();
    std::vector<td::_Argument_t> args;
    bool answered = true;
    run(state, requests, [&](const Request& request) {
        args.clear();
        answered = manager.loadData(CATEGORY, request.dims, args) && answered;
        return args.empty() ? 0 : args.back().value;
    });
    if (!answered)
        state.SkipWithError("a read was refused");
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
        if (!library(setting).manager().loadData(CATEGORY, request.dims, args) ||
            peer.readField(tableOf(CATEGORY), request.dims.data(), *request.field) != args[0].value)
            return false;
    }
    return true;
}

template <class Run>
void registerRow(const std::string& row, const std::string& subject, const std::vector<int>& threads, Run body) {
    const auto benchmark = benchmark::RegisterBenchmark((row + "/" + subject).c_str(), body);
    benchmark->UseRealTime();
    for (const int count : threads)
        benchmark->Threads(count);
}

} // namespace

void registerReadRows(const Setting& setting) {
    const auto requestsFor = [&](td::_DataCategory_t category) {
        return randomRequests(*setting.tables[static_cast<std::size_t>(tableOf(category))].layout);
    };
    static const std::vector<Request> requests = requestsFor(CATEGORY);
    static const std::vector<Request> otherRequests = requestsFor(OTHER_CATEGORY);
    const std::vector<int> severalThreads{1, 2, 8};
    const Setting* const all = &setting;
    registerRow("read field", "ours", severalThreads,
                [all](benchmark::State& state) { readFieldOfOurs(state, *all, CATEGORY, requests); });
    registerRow("read field, a category each", "ours", {2}, [all](benchmark::State& state) {
        const bool isFirst = state.thread_index() == 0;
        readFieldOfOurs(state, *all, isFirst ? CATEGORY : OTHER_CATEGORY, isFirst ? requests : otherRequests);
    });
    registerRow("read record", "ours", severalThreads,
                [all](benchmark::State& state) { readRecordOfOurs(state, *all, requests); });
    for (const std::string& name : peerNames()) {
        Peer* const subject = &peer(name, setting);
        if (!agree(*subject, setting, requests))
            throw std::runtime_error(name + " answers other values than the library");
        const std::vector<int> threads = subject->readsInParallel() ? severalThreads : std::vector<int>{1};
        registerRow("read field", name, threads,
                    [subject](benchmark::State& state) { readFieldOf(*subject, state, requests); });
        registerRow("read record", name, threads,
                    [subject](benchmark::State& state) { readRecordOf(*subject, state, requests); });
    }
}

} // namespace bench
