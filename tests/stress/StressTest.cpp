// All operations from many threads, life after life, with backups, merges, releases, resumes and reloads between them,
// each life ended at a random moment. What must hold: a record is never seen or written half (every record is stored
// with the same value in all its fields), what a thread stored in a record of its own it finds there until it stores
// anew, after waitStored() in the next life too, and the files of an ended life verify. The sanitizers, the check of
// the lock order and the watchdog see the rest. So this shows invariants 4, 5 and 6 of AbstractFileOperator.h.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/common/Thread.h>
#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/DebugOutput.h>

#include "fileOperator/CategoryLayout.h"
#include "fileOperator/OperatorFactory.h"
#include "fileOperator/text/TextLayout.h"
#include "Options.h"
#include "SettingsRoot.h"
#include "Watchdog.h"

namespace td::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int PATIENCE_MILLISECONDS = 60000;
constexpr unsigned WATCHDOG_SECONDS = 100; ///< of one life
constexpr int CLIENTS = 6;
constexpr int LONGEST_LIFE_MILLISECONDS = 250;
constexpr int FACTORY_VALUE = 1;
constexpr int LARGEST_VALUE = 99; ///< fits every key line form
constexpr int NO_VALUE = -1;
constexpr const char* TV_TYPE = "TVTYPE01";

/// What happens to a category: anything that leaves whole records; stores by the owners of the records, and what must
/// not change a value; files that come and go.
enum class Treatment { Whole, Owned, Removed };

struct Subject {
    _DataCategory_t category;
    Treatment treatment;

    const CategoryLayout& layout() const { return *layoutOf(category); }
};

/// Without dimensions; with bulk copies through the queue and at once; hexadecimal; small and middling.
constexpr Subject SUBJECTS[] = {
    {PICTURE_GLOBAL, Treatment::Whole},
    {PICTURE_SOURCE_ONLY, Treatment::Whole},
    {PICTURE_WB_2_POINT, Treatment::Whole},
    {PICTURE_WB_20_GAIN_IDX, Treatment::Whole},
    {PICTURE_FACTORY_ASPECT, Treatment::Whole},
    {SOUND_DELAY, Treatment::Whole},
    {SOUND_EQ, Treatment::Owned},
    {PICTURE_LOW_BLUE_LIGHT, Treatment::Owned},
    {PICTURE_MODE_SELF, Treatment::Removed},
};
/// The one with groups; large, so it takes part in some lives only.
constexpr Subject GROUPED{PICTURE_FACTORY_WB, Treatment::Whole};

class Random {
public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}
    /// 0 to `count` - 1.
    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_engine); }
    bool oneIn(int count) { return below(count) == 0; }

private:
    std::mt19937_64 m_engine;
};

std::vector<int> dimsOf(const CategoryLayout& layout, int record) {
    int indices[MAX_DIMENSIONS] = {};
    layout.indicesOf(record, indices);
    return {indices, indices + layout.dimensionCount()};
}

/// Every field of a record, with one value.
std::vector<_Argument_t> allFields(const CategoryLayout& layout, int value) {
    std::vector<_Argument_t> args;
    for (const Field& field : layout.fields)
        args.push_back({field.argumentName(), value});
    return args;
}

/// A file in which all fields of all records have one value.
std::string uniformFile(const CategoryLayout& layout, const char* version) {
    const std::vector<int> values(layout.fields.size(), FACTORY_VALUE);
    std::string contents;
    for (int record = 0; record < layout.recordCount(); ++record) {
        char lines[text::SECTION_BUFFER];
        text::formatSection(layout, values.data(), lines, sizeof lines);
        contents += text::sectionId(layout, dimsOf(layout, record).data()) + "\n" + lines;
    }
    return text::commentBlock(layout) + text::summary(TV_TYPE, version, checksum(contents), true) + contents;
}

class StressedSet final : public FileDataSeparateManager {
public:
    explicit StressedSet(std::vector<Subject> subjects) : m_subjects(std::move(subjects)) { setTvType(TV_TYPE); }
    ~StressedSet() override { stop(); }

    const std::vector<Subject>& subjects() const { return m_subjects; }
    /// The one value of a record; fails the test when it has several, NO_VALUE when it cannot be read.
    int valueOfRecord(const CategoryLayout& layout, int record) {
        std::vector<_Argument_t> args = allFields(layout, NO_VALUE);
        if (!loadData(layout.category, dimsOf(layout, record), args))
            return NO_VALUE;
        for (const _Argument_t& arg : args) {
            EXPECT_EQ(arg.value, args.front().value) << layout.file << ": half of record " << record;
        }
        return args.front().value;
    }
    bool storeRecord(const CategoryLayout& layout, int record, int value) {
        return storeData(layout.category, dimsOf(layout, record), allFields(layout, value));
    }

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        for (const Subject& subject : m_subjects) {
            if (subject.category == category)
                return createOperator(category);
        }
        return nullptr;
    }

private:
    const std::vector<Subject> m_subjects;
};

/// One thread's work on a set.
class Client {
public:
    Client(StressedSet& set, int number, std::uint64_t seed)
        : m_set(set), m_number(number), m_random(seed), m_owned(set.subjects().size()) {}

    void workUntil(const std::atomic<bool>& ended) {
        while (!ended) {
            const std::size_t place =
                static_cast<std::size_t>(m_random.below(static_cast<int>(m_set.subjects().size())));
            const Subject& subject = m_set.subjects()[place];
            if (m_random.oneIn(12))
                disturb(subject);
            else if (subject.treatment == Treatment::Owned)
                workOnOwn(subject.layout(), m_owned[place]);
            else
                work(subject.layout(), subject.treatment);
        }
    }

    /// A record of this client's and what it holds.
    struct Own {
        int record = 0;
        int value = NO_VALUE;
    };
    /// By the places of the subjects.
    const std::vector<Own>& owned() const { return m_owned; }

private:
    int anyRecord(const CategoryLayout& layout) { return m_random.below(layout.recordCount()); }
    int anyValue() { return m_random.below(LARGEST_VALUE + 1); }

    void work(const CategoryLayout& layout, Treatment treatment) {
        const int record = anyRecord(layout);
        const std::vector<int> dims = dimsOf(layout, record);
        switch (m_random.below(12)) {
        case 0:
            m_set.applySettingForAllSources(layout.category, dims);
            break;
        case 1:
            m_set.applySettingForAllMode(layout.category, dims);
            break;
        case 2:
            m_set.restoreSetting(layout.category, dims);
            break;
        case 3:
            m_set.restoreSettingForAllSource(layout.category, dims);
            break;
        case 4:
            workOnGroup(layout, dims);
            break;
        case 5:
            if (m_random.oneIn(10))
                m_set.refreshDataFromManufactory(layout.category);
            break;
        case 6:
        case 7:
        case 8:
            m_set.storeRecord(layout, record, anyValue());
            break;
        default:
            if (treatment == Treatment::Whole)
                m_set.valueOfRecord(layout, record);
            break;
        }
    }

    void workOnGroup(const CategoryLayout& layout, const std::vector<int>& dims) {
        if (layout.category != GROUPED.category)
            return;
        GroupArray group = {};
        const std::vector<int> list{1, 3};
        if (!m_set.loadDataForGroup(layout.category, dims, list, group))
            return;
        for (auto& source : group) {
            for (auto& row : source) {
                for (int& value : row)
                    EXPECT_EQ(value, row[0]) << "half of a record in a group";
            }
        }
        m_set.storeDataForGroup(layout.category, dims, list, {0, 2}, group);
    }

    /// Reads back what it stored, and stores anew.
    void workOnOwn(const CategoryLayout& layout, Own& own) {
        if (own.value != NO_VALUE) {
            const int found = m_set.valueOfRecord(layout, own.record);
            // While a file is released or being loaded, a record may not be there to be read.
            if (found != NO_VALUE) {
                EXPECT_EQ(found, own.value) << layout.file << ": a value that was stored is gone";
            }
        }
        if (own.value == NO_VALUE)
            own.record = m_random.below(layout.recordCount() / CLIENTS) * CLIENTS + m_number;
        const int value = anyValue();
        if (m_set.storeRecord(layout, own.record, value))
            own.value = value;
    }

    /// What a middleware does beside stores and loads; it changes no value that was stored.
    void disturb(const Subject& subject) {
        const _DataCategory_t category = subject.category;
        switch (m_random.below(11)) {
        case 0:
            m_set.backupData();
            break;
        case 1:
            m_set.loadData(category);
            break;
        case 2:
            // These two take back what is not in the file yet.
            if (subject.treatment != Treatment::Owned)
                m_set.refreshDataFromCurrent(category);
            break;
        case 3:
            if (subject.treatment != Treatment::Owned)
                m_set.restoreSettingFromCurrent(category, dimsOf(subject.layout(), anyRecord(subject.layout())));
            break;
        case 4:
            if (m_random.oneIn(4))
                m_set.releaseFileSources();
            break;
        case 5:
            m_set.resumeFileSources();
            break;
        case 6:
            m_set.resetForLoadAllData(m_random.oneIn(2) ? VIDEO : SOUND);
            m_set.loadAllData();
            break;
        case 7:
            m_set.waitStored(PATIENCE_MILLISECONDS);
            break;
        case 8:
            m_set.initAllData();
            break;
        case 9: {
            _ThreadStaticInfo_t info = {};
            m_set.getWorkerStatistics(info);
            break;
        }
        default:
            if (subject.treatment == Treatment::Removed)
                m_set.removeDataFile(category);
            break;
        }
    }

    StressedSet& m_set;
    const int m_number;
    Random m_random;
    std::vector<Own> m_owned;
};

class StressTest : public testing::Test {
protected:
    StressTest() : m_random(options().seed) {
        DebugOutput::setSink([](DebugOutput::Level, const char*) {}); // files that come and go are warned of
    }
    ~StressTest() override { DebugOutput::setSink({}); }

    void leaveTheFactory(const std::vector<Subject>& subjects) {
        for (const Subject& subject : subjects)
            m_root.write(Copy::Factory, subject.layout().file, uniformFile(subject.layout(), subject.layout().version));
    }

    /// Before some lives a software update: files of an older version, which the boot merges.
    void ageSomeFiles(const std::vector<Subject>& subjects) {
        for (const Subject& subject : subjects) {
            const CategoryLayout& layout = subject.layout();
            if (m_random.oneIn(3) && m_root.exists(Copy::Current, layout.file)) {
                std::string text = m_root.read(Copy::Current, layout.file);
                m_root.write(Copy::Current, layout.file, replaced(text, layout.version, "v9.9"));
            }
        }
    }

    void live(const std::vector<Subject>& subjects) {
        StressedSet set(subjects);
        if (m_random.oneIn(4))
            set.initCurrentFromManufactory();
        else
            ageSomeFiles(subjects);
        ASSERT_TRUE(set.init(DS_SCOPE_ALL));
        set.loadAllData();
        std::atomic<bool> ended{false};
        std::vector<std::unique_ptr<Client>> clients;
        std::vector<std::thread> threads;
        for (int i = 0; i < CLIENTS; ++i) {
            clients.push_back(
                std::make_unique<Client>(set, i, options().seed + static_cast<std::uint64_t>(++m_clients)));
            threads.emplace_back([&client = *clients.back(), &ended] { client.workUntil(ended); });
        }
        // A life's length is no wait for anything: it is the moment at which it ends.
        std::this_thread::sleep_for(std::chrono::milliseconds(m_random.below(LONGEST_LIFE_MILLISECONDS)));
        ended = true;
        for (std::thread& thread : threads)
            thread.join();
        // Some lives are ended in the middle of a queue, some after it.
        m_stored.clear();
        if (!m_random.oneIn(2))
            return;
        // What was stored while a category was released is written once it is loaded again.
        // Without a file it cannot be, and is given up with what is left of the files.
        for (const Subject& subject : subjects) {
            if (subject.treatment == Treatment::Removed)
                set.removeDataFile(subject.category);
            else
                set.loadData(subject.category);
        }
        EXPECT_TRUE(set.waitStored(PATIENCE_MILLISECONDS));
        for (const std::unique_ptr<Client>& client : clients) {
            for (std::size_t place = 0; place < subjects.size(); ++place) {
                const Client::Own& own = client->owned()[place];
                if (own.value != NO_VALUE)
                    m_stored[{subjects[place].category, own.record}] = own.value;
            }
        }
    }

    void checkFiles(const std::vector<Subject>& subjects) {
        for (const Subject& subject : subjects) {
            if (subject.treatment == Treatment::Removed)
                continue;
            const char* const file = subject.layout().file;
            EXPECT_TRUE(checksumIsRight(m_root.read(Copy::Current, file))) << file;
            if (m_root.exists(Copy::Backup, file)) {
                EXPECT_TRUE(checksumIsRight(m_root.read(Copy::Backup, file))) << "backup of " << file;
            }
        }
        StressedSet set(subjects);
        ASSERT_TRUE(set.init(DS_SCOPE_ALL));
        set.loadAllData();
        for (const Subject& subject : subjects) {
            for (int record = 0; subject.treatment != Treatment::Removed && record < subject.layout().recordCount();
                 ++record)
                EXPECT_NE(set.valueOfRecord(subject.layout(), record), NO_VALUE) << subject.layout().file;
        }
        for (const auto& [place, value] : m_stored) {
            const CategoryLayout& layout = *layoutOf(place.first);
            EXPECT_EQ(set.valueOfRecord(layout, place.second), value) << layout.file << ": lost with the life";
        }
    }

    SettingsRoot m_root;
    Random m_random;
    int m_clients = 0;
    /// What the owners had stored when the last life was waited for, by category and record.
    std::map<std::pair<_DataCategory_t, int>, int> m_stored;
};

TEST_F(StressTest, EveryLifeLeavesWholeRecordsAndFilesThatVerify) {
    const std::vector<Subject> small(std::begin(SUBJECTS), std::end(SUBJECTS));
    std::vector<Subject> all = small;
    all.push_back(GROUPED);
    leaveTheFactory(all);
    const auto end = Clock::now() + std::chrono::seconds(options().seconds);
    int lives = 0;
    while (Clock::now() < end && !HasFailure()) {
        SCOPED_TRACE("life " + std::to_string(lives) + " of --seed=" + std::to_string(options().seed));
        const Watchdog watchdog("life " + std::to_string(lives), WATCHDOG_SECONDS);
        const std::vector<Subject>& subjects = lives % 8 == 7 ? all : small;
        live(subjects);
        checkFiles(subjects);
        ++lives;
    }
    RecordProperty("lives", lives);
    std::printf("%d lives\n", lives);
}

} // namespace
} // namespace td::test
