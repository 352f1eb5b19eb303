#include <algorithm>
#include <filesystem>
#include <memory>
#include <thread>

#include "Cold.h"
#include "Descriptor.h"
#include "fileOperator/text/TextLayout.h"
#include "Measured.h"
#include "Opened.h"
#include "Syncs.h"

namespace fs = std::filesystem;

namespace bench {

namespace {

constexpr td::_DataCategory_t MODE = td::PICTURE_MODE;
constexpr td::_DataCategory_t COPIED = td::PICTURE_MODE;
constexpr td::_DataCategory_t RESTORED = td::PICTURE_COLOR_TUNER;
constexpr td::_DataCategory_t GROUPED = td::PICTURE_FACTORY_WB;

/// So many samples of a store.
int many(const Setting& setting) {
    return setting.shortRun ? 20 : 200;
}

/// So many of what takes longer.
int few(const Setting& setting) {
    return setting.shortRun ? 5 : 20;
}

std::size_t fileSize(const td::CategoryLayout& layout) {
    return td::text::commentBlock(layout).size() + static_cast<std::size_t>(td::text::SUMMARY_LENGTH) +
           static_cast<std::size_t>(layout.contentLength());
}

const td::CategoryLayout& layoutOf(const Setting& setting, td::_DataCategory_t category) {
    return *setting.tables[static_cast<std::size_t>(tableOf(category))].layout;
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

/// A record that changes from one store to the next, wherever in the run it was stored last.
class ChangingRecord {
public:
    ChangingRecord(const Setting& setting, const td::CategoryLayout& layout, int record)
        : m_layout(layout), m_dims(dimensionsOf(layout, record)), m_table(tableOf(layout.category)), m_record(record),
          m_values(setting.tables[static_cast<std::size_t>(m_table)].record(record),
                   setting.tables[static_cast<std::size_t>(m_table)].record(record) + layout.fieldCount()) {}

    /// Changes the first `count` fields.
    void change(int count) {
        static int s_turn = 0;
        s_turn = (s_turn + 1) % 499;
        m_args.clear();
        for (const td::Field& field : m_layout.fields) {
            if (count-- <= 0)
                break;
            m_values[static_cast<std::size_t>(field.position)] = 100 + s_turn;
            m_args.push_back({field.argumentName(), 100 + s_turn});
        }
    }

    td::_DataCategory_t category() const { return m_layout.category; }
    const std::vector<int>& dims() const { return m_dims; }
    const std::vector<td::_Argument_t>& args() const { return m_args; }
    Change asChange() const { return {m_table, m_record, m_values.data(), static_cast<int>(m_args.size())}; }

private:
    const td::CategoryLayout& m_layout;
    const std::vector<int> m_dims;
    const int m_table;
    const int m_record;
    std::vector<int> m_values;
    std::vector<td::_Argument_t> m_args;
};

ChangingRecord middleOf(const Setting& setting, const td::CategoryLayout& layout) {
    return {setting, layout, layout.recordCount() / 2};
}

void store(Library& subject, const ChangingRecord& record) {
    subject.store(record.category(), record.dims(), record.args());
}

/// A file of the size of `layout`'s, written to as bare as can be.
class BareFile {
public:
    BareFile(const Setting& setting, const td::CategoryLayout& layout, int sections)
        : m_layout(layout), m_sections(static_cast<std::size_t>(sections)), m_size(fileSize(layout)),
          m_file(path(setting, layout.file), O_RDWR | O_CREAT | O_TRUNC),
          m_side(path(setting, std::string(layout.file) + ".side"), O_RDWR | O_CREAT | O_TRUNC),
          m_bytes(std::max(sectionSize() * m_sections, CRC_LINE), 'x') {
        m_file.write(std::string(m_size, 'x').data(), m_size, 0);
        m_file.sync();
    }

    /// Makes the bytes that the next store writes.
    void prepare() { m_bytes.assign(m_bytes.size(), m_bytes[0] == 'x' ? 'y' : 'x'); }

    /// What a store of the library consists of: the sections written to a file beside this one and synced, then here,
    /// with a checksum line, and synced.
    void store() const {
        const std::size_t contents = static_cast<std::size_t>(m_layout.contentLength());
        m_side.write(m_bytes.data(), sectionSize() * m_sections, 0);
        m_side.sync();
        for (std::size_t i = 0; i < m_sections; ++i)
            m_file.write(m_bytes.data(), sectionSize(), m_size - contents + contents / m_sections * i);
        m_file.write(m_bytes.data(), CRC_LINE, m_size - contents - CRC_LINE);
        m_file.sync();
    }

private:
    static constexpr std::size_t CRC_LINE = td::text::CRC_LINE_LENGTH;

    std::size_t sectionSize() const { return static_cast<std::size_t>(m_layout.keyLinesLength()); }
    static std::string path(const Setting& setting, const std::string& name) {
        fs::create_directories(setting.directory + "/bare");
        return setting.directory + "/bare/" + name;
    }

    const td::CategoryLayout& m_layout;
    const std::size_t m_sections;
    const std::size_t m_size;
    const Descriptor m_file;
    const Descriptor m_side;
    std::string m_bytes;
};

// --- one sample of each row ---

/// The call alone; the worker sleeps when it comes.
Take storeCall(const Setting& setting, int fields) {
    return [&subject = library(setting), record = middleOf(setting, layoutOf(setting, MODE)),
            fields](Sample& sample) mutable {
        record.change(fields);
        sample.start();
        store(subject, record);
        sample.stop();
        subject.waitStored();
    };
}

/// Calls one after another, as a slider makes them; the worker is at work from the first on.
Take storeCallsInARow(const Setting& setting, const td::CategoryLayout& busyWith, int fields) {
    return [&subject = library(setting), busy = ChangingRecord(setting, busyWith, 0),
            record = middleOf(setting, layoutOf(setting, MODE)), fields](Sample& sample) mutable {
        constexpr int CALLS = 100;
        // A store of another file first: the calls compete with the worker for the queue, not for one file.
        for (int i = 0; i < 3; ++i) {
            busy.change(1);
            store(subject, busy);
        }
        double sum = 0;
        for (int i = 0; i < CALLS; ++i) {
            record.change(fields);
            sample.start();
            store(subject, record);
            sample.stop();
            sum += sample.seconds;
        }
        sample.seconds = sum / CALLS;
        subject.waitStored();
    };
}

/// The longest of many calls to `stored`, some time apart, while the worker writes `written`.
Take longestStoreCall(const Setting& setting, const td::CategoryLayout& written, const td::CategoryLayout& stored) {
    return [&subject = library(setting), busy = ChangingRecord(setting, written, 0),
            record = middleOf(setting, stored)](Sample& sample) mutable {
        constexpr int CALLS = 200;
        constexpr int QUEUED = 50;
        for (int i = 0; i < QUEUED; ++i) {
            busy.change(1);
            store(subject, busy);
        }
        double longest = 0;
        for (int i = 0; i < CALLS; ++i) {
            const auto next = Clock::now() + std::chrono::microseconds(50);
            while (Clock::now() < next) {
            }
            record.change(1);
            sample.start();
            store(subject, record);
            sample.stop();
            longest = std::max(longest, sample.seconds);
        }
        sample.seconds = longest;
        subject.waitStored();
    };
}

/// A call that comes while the worker, idle for ten seconds, backs up all files: to the category whose backup was the
/// first, as a backup of the one that is called would be put off.
Take storeCallDuringBackup(const Setting& setting) {
    std::vector<ChangingRecord> records;
    for (const Table& table : setting.tables)
        records.emplace_back(setting, *table.layout, 0);
    return [&setting, &subject = library(setting), records](Sample& sample) mutable {
        if (sample.isFirst)
            return;
        for (ChangingRecord& record : records) {
            record.change(1);
            store(subject, record);
        }
        subject.waitStored();
        const long syncsBefore = syncCount();
        const fs::file_time_type before = fs::file_time_type::clock::now();
        const auto isBackedUp = [&](const ChangingRecord& record) {
            const std::string name = layoutOf(setting, record.category()).file;
            return fs::last_write_time(setting.directory + WORK + "/var/local/dataModule/backup/" + name) > before;
        };
        const auto deadline = Clock::now() + std::chrono::seconds(20);
        auto found = records.end();
        while (found == records.end() && Clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            found = std::find_if(records.begin(), records.end(), isBackedUp);
        }
        check(found != records.end(), "make a backup");
        found->change(1);
        sample.start();
        store(subject, *found);
        sample.stop();
        // Of each file and its directory.
        check(syncCount() - syncsBefore >= 2 * static_cast<long>(records.size()), "back up all files before the call");
        subject.waitStored();
    };
}

Take durableStore(const Setting& setting, const td::CategoryLayout& layout) {
    return [&subject = library(setting), &layout, record = middleOf(setting, layout)](Sample& sample) mutable {
        sample.bytes = static_cast<double>(fileSize(layout));
        record.change(1);
        sample.start();
        store(subject, record);
        subject.waitStored();
        sample.stop(lastSyncEnd());
        sample.countSyncs();
        check(sample.isFirst || sample.syncs == 2, "store in two syncs");
    };
}

Take bareStore(const Setting& setting, const td::CategoryLayout& layout, int sections) {
    return [file = std::make_shared<BareFile>(setting, layout, sections)](Sample& sample) {
        file->prepare();
        sample.start();
        file->store();
        sample.stop();
    };
}

/// `count` records of the peer, equally far from each other, changed in one go.
Take storeOfPeer(const Setting& setting, const std::string& name, const td::CategoryLayout& layout, int count,
                 int fields) {
    std::vector<ChangingRecord> records;
    for (int i = 0; i < count; ++i)
        records.emplace_back(setting, layout, layout.recordCount() / count * i);
    return [&subject = peer(name, setting), records, fields](Sample& sample) mutable {
        std::vector<Change> changes;
        for (ChangingRecord& record : records) {
            record.change(fields);
            changes.push_back(record.asChange());
        }
        sample.start();
        subject.store(changes);
        sample.stop();
        sample.countSyncs();
    };
}

/// Until the copies are on disk: the call writes them itself.
Take copyToAllSources(const Setting& setting) {
    const td::CategoryLayout& layout = layoutOf(setting, COPIED);
    return [&subject = library(setting), record = middleOf(setting, layout),
            fields = layout.fieldCount()](Sample& sample) mutable {
        record.change(fields);
        store(subject, record);
        subject.waitStored();
        pause();
        sample.start();
        check(subject.manager().applySettingForAllSources(COPIED, record.dims()), "copy to all sources");
        sample.stop();
        sample.countSyncs();
    };
}

/// The call, which reads the factory values, or all of it until they are on disk.
Take restoreForAllSources(const Setting& setting, bool untilStored) {
    const td::CategoryLayout& layout = layoutOf(setting, RESTORED);
    return [&subject = library(setting), dims = dimensionsOf(layout, layout.recordCount() / 2),
            untilStored](Sample& sample) {
        sample.start();
        check(subject.manager().restoreSettingForAllSource(RESTORED, dims), "restore for all sources");
        sample.stop();
        subject.waitStored();
        if (!untilStored)
            return;
        sample.stop(lastSyncEnd());
        sample.countSyncs();
    };
}

Take groupStore(const Setting& setting) {
    return [&subject = library(setting), turn = 0](Sample& sample) mutable {
        static td::GroupArray data;
        ++turn;
        for (auto& source : data) {
            for (auto& row : source)
                std::fill(std::begin(row), std::end(row), turn);
        }
        sample.start();
        check(subject.manager().storeDataForGroup(GROUPED, {0, 0, 0, 0, 0}, {0, 1, 2, 3, 4, 5},
                                                  {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, data),
              "store a group");
        subject.waitStored();
        sample.stop(lastSyncEnd());
        sample.countSyncs();
    };
}

Take loadOne(const Setting& setting, const td::CategoryLayout& layout) {
    return [&subject = library(setting), &layout](Sample& sample) {
        // The second of two: what the rest before it lets grow cold would cover the growth.
        for (int i = 0; i < 2; ++i) {
            sample.start();
            check(subject.manager().loadData(layout.category), "load a file");
            sample.stop();
        }
    };
}

// --- their registration ---

void addPeers(const Setting& setting, const std::string& row, int samples, const td::CategoryLayout& layout, int count,
              int fields) {
    for (const std::string& name : peerNames()) {
        if (!peer(name, setting).stores())
            continue;
        // Those that write a whole file take longer.
        const bool wholeFile = name == "GKeyFile" || name == "PropertyTree";
        addMeasured(std::string(row).append("/").append(name), wholeFile ? std::min(samples, few(setting)) : samples,
                    storeOfPeer(setting, name, layout, count, fields));
    }
}

void registerCalls(const Setting& setting, const td::CategoryLayout& largest) {
    const td::CategoryLayout& mode = layoutOf(setting, MODE);
    for (const int fields : {1, 24}) {
        const std::string what = std::to_string(fields).append(fields == 1 ? " field" : " fields");
        addMeasured("store call, " + what + "/ours", many(setting), storeCall(setting, fields));
        addPeers(setting, "store call, " + what, many(setting), mode, 1, fields);
        addMeasured("store call of many, " + what + "/ours", few(setting), storeCallsInARow(setting, largest, fields));
    }
    addMeasured("longest store call, another file is written/ours", few(setting),
                longestStoreCall(setting, largest, mode));
    addMeasured("longest store call, the same file is written/ours", few(setting),
                longestStoreCall(setting, mode, mode));
    if (!setting.shortRun)
        addMeasured("longest store call, backup of all files runs/ours", 3, storeCallDuringBackup(setting));
}

void addDurableRow(const Setting& setting, const std::string& row, const td::CategoryLayout& layout) {
    addMeasured(row + "/ours", many(setting), durableStore(setting, layout), bareStore(setting, layout, 1));
}

void registerDurableRows(const Setting& setting, const std::vector<const td::CategoryLayout*>& layouts) {
    for (const auto& [which, layout] : {std::pair("smallest", layouts.front()), std::pair("largest", layouts.back())}) {
        const std::string row = std::string("durable store, ").append(which).append(" file");
        addDurableRow(setting, row, *layout);
        addPeers(setting, row, many(setting), *layout, 1, 1);
    }
    if (setting.shortRun)
        return;
    constexpr std::size_t STEPS = 5;
    for (std::size_t step = 0; step <= STEPS; ++step) {
        const td::CategoryLayout& layout = *layouts[(layouts.size() - 1) * step / STEPS];
        const std::string size = std::to_string((fileSize(layout) + 512) / 1024) + " KiB";
        addMeasured("load of one file of " + size + "/ours", few(setting), loadOne(setting, layout));
        addDurableRow(setting, "durable store in a file of " + size, layout);
    }
}

void registerBulkRows(const Setting& setting) {
    const td::CategoryLayout& copied = layoutOf(setting, COPIED);
    const td::CategoryLayout& restored = layoutOf(setting, RESTORED);
    const td::CategoryLayout& grouped = layoutOf(setting, GROUPED);
    constexpr int OTHERS = 15; // sources
    addMeasured("copy to all sources/ours", few(setting), copyToAllSources(setting),
                bareStore(setting, copied, OTHERS));
    addPeers(setting, "copy to all sources", few(setting), copied, OTHERS, copied.fieldCount());

    addMeasured("restore for all sources, call/ours", few(setting), restoreForAllSources(setting, false));
    addMeasured("restore for all sources/ours", few(setting), restoreForAllSources(setting, true),
                bareStore(setting, restored, OTHERS));
    addPeers(setting, "restore for all sources", few(setting), restored, OTHERS, restored.fieldCount());

    if (setting.shortRun)
        return;
    constexpr int RECORDS = 960;
    addMeasured("group store of 960 records/ours", few(setting), groupStore(setting),
                bareStore(setting, grouped, RECORDS));
    addPeers(setting, "group store of 960 records", few(setting), grouped, RECORDS, grouped.fieldCount());
}

} // namespace

void registerStoreRows(const Setting& setting) {
    const std::vector<const td::CategoryLayout*> layouts = bySize(setting);
    registerCalls(setting, *layouts.back());
    registerDurableRows(setting, layouts);
    registerBulkRows(setting);
}

} // namespace bench
