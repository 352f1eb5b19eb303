#include <algorithm>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <dataModule/fileOperator/TextLayout.h>

#include "Cold.h"
#include "Opened.h"
#include "Syncs.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr td::_DataCategory_t MODE = td::PICTURE_MODE;
constexpr td::_DataCategory_t COPIED = td::PICTURE_MODE;
constexpr td::_DataCategory_t RESTORED = td::PICTURE_COLOR_TUNER;
constexpr td::_DataCategory_t GROUPED = td::PICTURE_FACTORY_WB;
constexpr int SOURCES = 16;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::size_t fileSize(const td::CategoryLayout& layout) {
    return td::text::commentBlock(layout).size() + static_cast<std::size_t>(td::text::SUMMARY_LENGTH) +
           static_cast<std::size_t>(layout.contentLength());
}

/// The layouts from the smallest file to the largest.
std::vector<const td::CategoryLayout*> bySize(const Setting& setting) {
    std::vector<const td::CategoryLayout*> layouts;
    for (const Table& table : setting.tables)
        layouts.push_back(table.layout);
    std::stable_sort(layouts.begin(), layouts.end(),
                     [](const auto* one, const auto* other) { return fileSize(*one) < fileSize(*other); });
    return layouts;
}

/// A record that changes all over from one store to the next.
class ChangingRecord {
public:
    ChangingRecord(const Setting& setting, const td::CategoryLayout& layout, int record)
        : m_layout(layout), m_dims(dimensionsOf(layout, record)), m_table(tableOf(layout.category)), m_record(record),
          m_values(setting.tables[static_cast<std::size_t>(m_table)].record(record),
                   setting.tables[static_cast<std::size_t>(m_table)].record(record) + layout.fieldCount()) {}

    /// Changes the first `count` fields.
    void change(int count) {
        m_turn = (m_turn + 1) % 50;
        m_args.clear();
        for (const td::Field& field : m_layout.fields) {
            if (count-- <= 0)
                break;
            m_values[static_cast<std::size_t>(field.position)] = 100 + m_turn;
            m_args.push_back({field.argumentName(), 100 + m_turn});
        }
    }

    const std::vector<int>& dims() const { return m_dims; }
    const std::vector<td::_Argument_t>& args() const { return m_args; }
    Change asChange() const { return {m_table, m_record, m_values.data()}; }
    int* values() { return m_values.data(); }

private:
    const td::CategoryLayout& m_layout;
    const std::vector<int> m_dims;
    const int m_table;
    const int m_record;
    std::vector<int> m_values;
    std::vector<td::_Argument_t> m_args;
    int m_turn = 0;
};

/// A file of the size of `layout`'s, written to as bare as can be.
class BareFile {
public:
    BareFile(const Setting& setting, const td::CategoryLayout& layout)
        : m_layout(layout), m_text(fileSize(layout), 'x'), m_file(make(setting, layout.file)),
          m_side(make(setting, std::string(layout.file) + ".side")) {
        writeOnly(m_file, 0, m_text.size());
        sync(m_file);
    }
    ~BareFile() {
        close(m_file);
        close(m_side);
    }
    BareFile(const BareFile&) = delete;
    BareFile& operator=(const BareFile&) = delete;

    /// What a store of the library consists of: the sections written to a file beside this one and synced, then here,
    /// with a checksum line, and synced.
    void store(int sections) {
        m_text.assign(m_text.size(), m_text[0] == 'x' ? 'y' : 'x');
        const std::size_t start = m_text.size() - static_cast<std::size_t>(m_layout.contentLength());
        const std::size_t distance = (m_text.size() - start) / static_cast<std::size_t>(sections);
        writeOnly(m_side, 0, sectionSize() * static_cast<std::size_t>(sections));
        sync(m_side);
        for (int i = 0; i < sections; ++i)
            writeOnly(m_file, start + distance * static_cast<std::size_t>(i), sectionSize());
        writeOnly(m_file, start - static_cast<std::size_t>(td::text::CRC_LINE_LENGTH),
                  static_cast<std::size_t>(td::text::CRC_LINE_LENGTH));
        sync(m_file);
    }

private:
    std::size_t sectionSize() const {
        return static_cast<std::size_t>(m_layout.sectionLength() - m_layout.headerLength());
    }
    static int make(const Setting& setting, const std::string& name) {
        const std::string directory = setting.directory + "/bare/";
        fs::create_directories(directory);
        const int descriptor = open((directory + name).c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (descriptor < 0)
            throw std::runtime_error("cannot make " + directory + name);
        return descriptor;
    }
    void writeOnly(int file, std::size_t offset, std::size_t size) {
        if (pwrite(file, m_text.data(), size, static_cast<off_t>(offset)) != static_cast<ssize_t>(size))
            throw std::runtime_error("cannot write");
    }
    static void sync(int file) {
        if (fsync(file) != 0)
            throw std::runtime_error("cannot sync");
    }

    const td::CategoryLayout& m_layout;
    std::string m_text;
    const int m_file;
    const int m_side;
};

// --- the rows ---

/// Between two measurements of a store: a person's keys come one by one, and no store profits from one that the same
/// tick of the kernel's clock saw, which leaves a file's times as they are.
void pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

/// The call alone; the worker sleeps when it comes.
void storeCall(benchmark::State& state, const Setting& setting, int fields) {
    Library& subject = library(setting);
    const td::CategoryLayout& layout = *setting.tables[static_cast<std::size_t>(tableOf(MODE))].layout;
    ChangingRecord record(setting, layout, layout.recordCount() / 2);
    for ([[maybe_unused]] auto _ : state) {
        pause();
        record.change(fields);
        const auto start = Clock::now();
        subject.manager().storeData(MODE, record.dims(), record.args());
        state.SetIterationTime(secondsSince(start));
        subject.waitStored();
    }
}

/// Calls one after another, as a slider makes them; the worker is at work from the first on.
void storeCallsInARow(benchmark::State& state, const Setting& setting, const td::CategoryLayout& busyWith, int fields) {
    constexpr int CALLS = 100;
    Library& subject = library(setting);
    const td::CategoryLayout& layout = *setting.tables[static_cast<std::size_t>(tableOf(MODE))].layout;
    ChangingRecord busy(setting, busyWith, 0);
    ChangingRecord record(setting, layout, layout.recordCount() / 2);
    for ([[maybe_unused]] auto _ : state) {
        // A store of another file first: the calls compete with the worker for the queue, not for one file.
        for (int i = 0; i < 3; ++i) {
            busy.change(1);
            subject.manager().storeData(busyWith.category, busy.dims(), busy.args());
        }
        double seconds = 0;
        for (int i = 0; i < CALLS; ++i) {
            record.change(fields);
            const auto start = Clock::now();
            subject.manager().storeData(MODE, record.dims(), record.args());
            seconds += secondsSince(start);
        }
        state.SetIterationTime(seconds / CALLS);
        subject.waitStored();
    }
}

/// The longest of many calls to `stored`, some time apart, while the worker writes `written`.
void longestStoreCall(benchmark::State& state, const Setting& setting, const td::CategoryLayout& written,
                      const td::CategoryLayout& stored) {
    constexpr int CALLS = 200;
    constexpr int QUEUED = 50;
    Library& subject = library(setting);
    ChangingRecord busy(setting, written, 0);
    ChangingRecord record(setting, stored, stored.recordCount() / 2);
    for ([[maybe_unused]] auto _ : state) {
        for (int i = 0; i < QUEUED; ++i) {
            busy.change(1);
            subject.manager().storeData(written.category, busy.dims(), busy.args());
        }
        double longest = 0;
        for (int i = 0; i < CALLS; ++i) {
            const auto next = Clock::now() + std::chrono::microseconds(50);
            while (Clock::now() < next) {
            }
            record.change(1);
            const auto start = Clock::now();
            subject.manager().storeData(stored.category, record.dims(), record.args());
            longest = std::max(longest, secondsSince(start));
        }
        state.SetIterationTime(longest);
        subject.waitStored();
    }
}

/// A call that comes while the worker, idle for ten seconds, backs up all files.
void storeCallDuringBackup(benchmark::State& state, const Setting& setting) {
    Library& subject = library(setting);
    std::vector<ChangingRecord> records;
    for (const Table& table : setting.tables)
        records.emplace_back(setting, *table.layout, 0);
    const std::string backups = setting.directory + WORK + "/var/local/dataModule/backup";
    for ([[maybe_unused]] auto _ : state) {
        for (std::size_t i = 0; i < records.size(); ++i) {
            records[i].change(1);
            subject.manager().storeData(setting.tables[i].layout->category, records[i].dims(), records[i].args());
        }
        subject.waitStored();
        const auto before = fs::last_write_time(backups);
        const auto deadline = Clock::now() + std::chrono::seconds(20);
        while (fs::last_write_time(backups) == before && Clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        ChangingRecord& record = records[static_cast<std::size_t>(tableOf(MODE))];
        record.change(1);
        const auto start = Clock::now();
        subject.manager().storeData(MODE, record.dims(), record.args());
        state.SetIterationTime(secondsSince(start));
        if (start >= deadline)
            state.SkipWithError("no backup was made");
        subject.waitStored();
    }
}

void durableStoreOfOurs(benchmark::State& state, const Setting& setting, const td::CategoryLayout& layout) {
    Library& subject = library(setting);
    ChangingRecord record(setting, layout, layout.recordCount() / 2);
    // The first store makes what the others only write to.
    record.change(1);
    subject.manager().storeData(layout.category, record.dims(), record.args());
    subject.waitStored();
    const long before = syncCount();
    for ([[maybe_unused]] auto _ : state) {
        pause();
        record.change(1);
        const auto start = Clock::now();
        subject.manager().storeData(layout.category, record.dims(), record.args());
        subject.waitStored();
        state.SetIterationTime(std::chrono::duration<double>(lastSyncEnd() - start).count());
    }
    state.counters["syncs"] = static_cast<double>(syncCount() - before) / static_cast<double>(state.iterations());
    state.counters["bytes"] = static_cast<double>(fileSize(layout));
}

void bareStore(benchmark::State& state, const Setting& setting, const td::CategoryLayout& layout, int sections) {
    BareFile file(setting, layout);
    file.store(sections);
    const long before = syncCount();
    for ([[maybe_unused]] auto _ : state) {
        pause();
        const auto start = Clock::now();
        file.store(sections);
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["syncs"] = static_cast<double>(syncCount() - before) / static_cast<double>(state.iterations());
}

/// `count` records of the peer, equally far from each other, changed in one go.
void durableStoreOfPeer(benchmark::State& state, const Setting& setting, const std::string& name,
                        const td::CategoryLayout& layout, int count, int fields) {
    Peer& subject = peer(name, setting);
    std::vector<ChangingRecord> records;
    for (int i = 0; i < count; ++i)
        records.emplace_back(setting, layout, layout.recordCount() / count * i);
    const long before = syncCount();
    for ([[maybe_unused]] auto _ : state) {
        std::vector<Change> changes;
        for (ChangingRecord& record : records) {
            record.change(fields);
            changes.push_back(record.asChange());
        }
        pause();
        const auto start = Clock::now();
        subject.store(changes);
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["syncs"] = static_cast<double>(syncCount() - before) / static_cast<double>(state.iterations());
}

/// Until the copies are on disk: the call writes them itself.
void copyToAllSources(benchmark::State& state, const Setting& setting) {
    Library& subject = library(setting);
    const td::CategoryLayout& layout = *setting.tables[static_cast<std::size_t>(tableOf(COPIED))].layout;
    ChangingRecord record(setting, layout, layout.recordCount() / 2);
    long syncs = 0;
    for ([[maybe_unused]] auto _ : state) {
        record.change(layout.fieldCount());
        subject.manager().storeData(COPIED, record.dims(), record.args());
        subject.waitStored();
        pause();
        const long before = syncCount();
        const auto start = Clock::now();
        subject.manager().applySettingForAllSources(COPIED, record.dims());
        state.SetIterationTime(secondsSince(start));
        syncs += syncCount() - before;
    }
    state.counters["syncs"] = static_cast<double>(syncs) / static_cast<double>(state.iterations());
}

/// The call, which reads the factory values, or all of it until they are on disk.
void restoreForAllSources(benchmark::State& state, const Setting& setting, bool untilStored) {
    Library& subject = library(setting);
    const td::CategoryLayout& layout = *setting.tables[static_cast<std::size_t>(tableOf(RESTORED))].layout;
    ChangingRecord record(setting, layout, layout.recordCount() / 2);
    long syncs = 0;
    for ([[maybe_unused]] auto _ : state) {
        pause();
        const long before = syncCount();
        const auto start = Clock::now();
        subject.manager().restoreSettingForAllSource(RESTORED, record.dims());
        if (untilStored)
            subject.waitStored();
        state.SetIterationTime(secondsSince(start));
        subject.waitStored();
        syncs += syncCount() - before;
    }
    state.counters["syncs"] = static_cast<double>(syncs) / static_cast<double>(state.iterations());
}

void groupStore(benchmark::State& state, const Setting& setting) {
    Library& subject = library(setting);
    const std::vector<int> temperatures{0, 1, 2, 3, 4, 5};
    const std::vector<int> ranges{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    static td::GroupArray data;
    int turn = 0;
    const long before = syncCount();
    for ([[maybe_unused]] auto _ : state) {
        ++turn;
        for (auto& source : data) {
            for (auto& row : source)
                std::fill(std::begin(row), std::end(row), turn);
        }
        const auto start = Clock::now();
        subject.manager().storeDataForGroup(GROUPED, {0, 0, 0, 0, 0}, temperatures, ranges, data);
        subject.waitStored();
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["syncs"] = static_cast<double>(syncCount() - before) / static_cast<double>(state.iterations());
}

void loadOne(benchmark::State& state, const Setting& setting, const td::CategoryLayout& layout) {
    Library& subject = library(setting);
    subject.waitStored();
    for ([[maybe_unused]] auto _ : state) {
        const auto start = Clock::now();
        if (!subject.manager().loadData(layout.category))
            state.SkipWithError("cannot load");
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["bytes"] = static_cast<double>(fileSize(layout));
}

// --- their registration ---

constexpr int STORES = 40; ///< of a row, each some time after the other
constexpr int FEW = 5;     ///< of what takes long

/// A row that times a part of each of its iterations itself.
template <class Body>
benchmark::internal::Benchmark* add(const std::string& name, int iterations, Body body) {
    return benchmark::RegisterBenchmark(name.c_str(), body)
        ->UseManualTime()
        ->Iterations(iterations)
        ->Unit(benchmark::kMicrosecond);
}

void addBound(const Setting& setting, const std::string& row, const td::CategoryLayout& layout, int sections) {
    add(row + "/bound", STORES,
        [&setting, &layout, sections](benchmark::State& state) { bareStore(state, setting, layout, sections); });
}

void addPeers(const Setting& setting, const std::string& row, const td::CategoryLayout& layout, int count, int fields) {
    for (const std::string& name : peerNames()) {
        if (!peer(name, setting).stores())
            continue;
        // Those that write a whole file take longer.
        const bool wholeFile = name == "GKeyFile" || name == "PropertyTree";
        add(std::string(row).append("/").append(name), wholeFile ? FEW : STORES,
            [&setting, &layout, name, count, fields](benchmark::State& state) {
                durableStoreOfPeer(state, setting, name, layout, count, fields);
            });
    }
}

void registerCalls(const Setting& setting, const td::CategoryLayout& mode, const td::CategoryLayout& largest) {
    for (const int fields : {1, 24}) {
        const std::string what = std::to_string(fields).append(fields == 1 ? " field" : " fields");
        add("store call, " + what + "/ours", STORES,
            [&setting, fields](benchmark::State& state) { storeCall(state, setting, fields); });
        addPeers(setting, "store call, " + what, mode, 1, fields);
        add("store call of many, " + what + "/ours", FEW, [&setting, &largest, fields](benchmark::State& state) {
            storeCallsInARow(state, setting, largest, fields);
        });
    }
    add("longest store call, another file is written/ours", FEW,
        [&](benchmark::State& state) { longestStoreCall(state, setting, largest, mode); });
    add("longest store call, the same file is written/ours", FEW,
        [&](benchmark::State& state) { longestStoreCall(state, setting, mode, mode); });
    if (!setting.shortRun)
        add("store call, backup of all files runs/ours", 1, [&](benchmark::State& state) {
            storeCallDuringBackup(state, setting);
        })->Repetitions(3);
}

void registerDurableRow(const Setting& setting, const std::string& row, const td::CategoryLayout& layout) {
    add(row + "/ours", STORES, [&](benchmark::State& state) { durableStoreOfOurs(state, setting, layout); });
    addBound(setting, row, layout, 1);
    addPeers(setting, row, layout, 1, 1);
}

void registerBulkRows(const Setting& setting) {
    const td::CategoryLayout& copied = *setting.tables[static_cast<std::size_t>(tableOf(COPIED))].layout;
    const td::CategoryLayout& restored = *setting.tables[static_cast<std::size_t>(tableOf(RESTORED))].layout;
    const td::CategoryLayout& grouped = *setting.tables[static_cast<std::size_t>(tableOf(GROUPED))].layout;
    add("copy to all sources/ours", FEW, [&](benchmark::State& state) { copyToAllSources(state, setting); });
    addBound(setting, "copy to all sources", copied, SOURCES - 1);
    addPeers(setting, "copy to all sources", copied, SOURCES - 1, copied.fieldCount());

    add("restore for all sources, call/ours", FEW,
        [&](benchmark::State& state) { restoreForAllSources(state, setting, false); });
    add("restore for all sources/ours", FEW,
        [&](benchmark::State& state) { restoreForAllSources(state, setting, true); });
    addBound(setting, "restore for all sources", restored, SOURCES);
    addPeers(setting, "restore for all sources", restored, SOURCES, restored.fieldCount());

    if (setting.shortRun)
        return;
    constexpr int RECORDS = 960;
    add("group store of 960 records/ours", 1, [&](benchmark::State& state) { groupStore(state, setting); });
    addBound(setting, "group store of 960 records", grouped, RECORDS);
    addPeers(setting, "group store of 960 records", grouped, RECORDS, grouped.fieldCount());
}

void registerGrowth(const Setting& setting, const std::vector<const td::CategoryLayout*>& layouts) {
    constexpr std::size_t STEPS = 5;
    for (std::size_t step = 0; step <= STEPS; ++step) {
        const td::CategoryLayout& layout = *layouts[(layouts.size() - 1) * step / STEPS];
        const std::string file = " of " + std::to_string((fileSize(layout) + 512) / 1024) + " KiB/ours";
        add("load of one file" + file, FEW, [&](benchmark::State& state) { loadOne(state, setting, layout); });
        add("durable store in a file" + file, STORES,
            [&](benchmark::State& state) { durableStoreOfOurs(state, setting, layout); });
    }
}

} // namespace

void registerStoreRows(const Setting& setting) {
    const std::vector<const td::CategoryLayout*> layouts = bySize(setting);
    const td::CategoryLayout& mode = *setting.tables[static_cast<std::size_t>(tableOf(MODE))].layout;
    registerCalls(setting, mode, *layouts.back());
    registerDurableRow(setting, "durable store, smallest file", *layouts.front());
    registerDurableRow(setting, "durable store, largest file", *layouts.back());
    registerBulkRows(setting);
    if (!setting.shortRun)
        registerGrowth(setting, layouts);
}

} // namespace bench
