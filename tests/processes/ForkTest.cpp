// What a child made by fork() has of its parent's locks and manager, with threads at work in the parent.
#include <atomic>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

#include <gtest/gtest.h>

#include <dataModule/common/Event.h>
#include <dataModule/common/Thread.h>
#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/DebugOutput.h>

#include "Child.h"
#include "common/FileLock.h"
#include "SettingsRoot.h"
#include "TemporaryDirectory.h"

namespace td::test {
namespace {

constexpr int CHILDS_PATIENCE = 30000; ///< milliseconds
constexpr _DataCategory_t ASPECT = PICTURE_FACTORY_ASPECT;
const std::vector<int> FIRST{0};
constexpr const char* START = "InputHStart";

int openLockFiles() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        count += std::filesystem::read_symlink(entry.path(), gone).extension() == ".lock" ? 1 : 0;
    }
    return count;
}

/// Threads that do something over and over while the object lives.
class AtWork {
public:
    AtWork(int threads, const std::function<void(int)>& work) {
        for (int i = 0; i < threads; ++i)
            m_threads.emplace_back([this, work, i] {
                while (!m_ends)
                    work(i);
            });
    }
    ~AtWork() {
        m_ends = true;
        for (std::thread& thread : m_threads)
            thread.join();
    }
    AtWork(const AtWork&) = delete;
    AtWork& operator=(const AtWork&) = delete;

private:
    std::atomic<bool> m_ends{false};
    std::vector<std::thread> m_threads;
};

TEST(ForkTest, AChildHoldsNoLockWhenItsParentHasDied) {
    TemporaryDirectory directory;
    const std::string path = directory.file("a.lock");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t parent = startChild([&] {
        FileLock lock;
        if (!lock.lock(path, FileLock::Kind::Exclusive))
            return 1;
        const pid_t child = startChild([&] {
            // What was inherited is not held, and to give it back does nothing, not to the parent either.
            bool kept = lock.isHeld();
            lock.unlock();
            FileLock other;
            kept = kept || other.tryLock(path, FileLock::Kind::Shared) != FileLock::Attempt::Busy;
            static_cast<void>(!write(ready[1], kept ? "-" : "+", 1));
            for (;;)
                pause();
            return 0;
        });
        static_cast<void>(!write(ready[1], &child, sizeof child));
        for (;;)
            pause();
        return 0;
    });
    std::string message;
    char next = 0;
    while (message.size() < 1 + sizeof(pid_t) && read(ready[0], &next, 1) == 1)
        message += next;
    close(ready[0]);
    close(ready[1]);
    kill(parent, SIGKILL);
    endOf(parent);
    FileLock lock;
    EXPECT_EQ(lock.tryLock(path, FileLock::Kind::Exclusive), FileLock::Attempt::Locked);
    // The two wrote in either order.
    ASSERT_EQ(message.size(), 1 + sizeof(pid_t));
    const bool answeredFirst = message.front() == '+' || message.front() == '-';
    pid_t grandchild = 0;
    std::memcpy(&grandchild, message.data() + (answeredFirst ? 1 : 0), sizeof grandchild);
    EXPECT_EQ(answeredFirst ? message.front() : message.back(), '+');
    kill(grandchild, SIGKILL);
}

TEST(ForkTest, NoLockFileIsOpenInAChildWhateverTheOtherThreadsAreAt) {
    TemporaryDirectory directory;
    const AtWork locking(3, [&](int thread) {
        FileLock lock;
        lock.lock(directory.file("locks/" + std::to_string(thread % 2) + ".lock"), FileLock::Kind::Exclusive);
    });
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(endOf(startChild(openLockFiles)), 0) << i;
}

/// What every call on the inherited manager answers; the result is the number of the first that does otherwise, or 0.
int inheritedCallThatWorks(FileDataSeparateManager& manager, const std::atomic<int>& lines) {
    std::vector<_Argument_t> args{{START, -7}};
    _ThreadStaticInfo_t statistics = {1, 1, 1, 1};
    GroupArray group = {};
    SelfDefinedGroupArray selfDefined = {};
    const std::function<bool()> calls[] = {
        [&] { return manager.init(DS_SCOPE_DVBMAIN); },
        [&] { return manager.stop(); },
        [&] { return manager.loadManufactoryPath(); },
        [&] { return manager.initCurrentFromManufactory(); },
        [&] { return manager.initAllData(); },
        [&] { return manager.initData(ASPECT); },
        [&] { return manager.loadAllData(); },
        [&] { return manager.loadAllData(VIDEO); },
        [&] { return manager.resetForLoadAllData(VIDEO); },
        [&] { return manager.loadData(ASPECT); },
        [&] { return manager.loadData(ASPECT, "/nowhere"); },
        [&] { return manager.loadData(ASPECT, FIRST, args) || args.front().value != -7; },
        [&] { return manager.storeData(ASPECT, FIRST, args); },
        [&] { return manager.restoreSetting(ASPECT, FIRST); },
        [&] { return manager.restoreSettingForAllSource(ASPECT, FIRST); },
        [&] { return manager.restoreSettingFromCurrent(ASPECT, FIRST); },
        [&] { return manager.refreshDataFromManufactory(ASPECT); },
        [&] { return manager.refreshDataFromCurrent(ASPECT); },
        [&] { return manager.applySettingForAllSources(ASPECT, FIRST); },
        [&] { return manager.applySettingForAllMode(ASPECT, FIRST); },
        [&] { return manager.loadDataForGroup(ASPECT, FIRST, FIRST, group); },
        [&] { return manager.storeDataForGroup(ASPECT, FIRST, FIRST, FIRST, group); },
        [&] { return manager.loadDataForSelfDefinedGroup(ASPECT, FIRST, FIRST, selfDefined); },
        [&] { return manager.storeDataForSelfDefinedGroup(ASPECT, FIRST, FIRST, selfDefined); },
        [&] { return manager.removeDataFile(ASPECT); },
        [&] { return manager.releaseFileSources(); },
        [&] { return manager.resumeFileSources(); },
        [&] { return manager.getApplySettingFlag(ASPECT, START); },
        [&] { return manager.restoreApplySettingFlag(ASPECT, START); },
        [&] { return manager.getFileHandler(ASPECT) != nullptr; },
        [&] { return manager.getFileOperator(ASPECT) != nullptr; },
        [&] { return manager.setTvType("TV"); },
        [&] { return *manager.getTvType() != '\0'; },
        [&] { return *manager.getManufactoryPath() != '\0'; },
        [&] { return manager.setStoreFileFlag(false); },
        [&] { return manager.getStoreFileFlag(); },
        [&] { return manager.setReservedFlag(true) || manager.getReservedFlag(); },
        [&] { return manager.setReservedValue(1) || manager.getReservedValue() != 0; },
        [&] { return manager.backupData(); },
        [&] { return manager.waitStored(CHILDS_PATIENCE); },
        [&] {
            manager.getWorkerStatistics(statistics);
            return statistics.handled != 0;
        },
    };
    int number = 0;
    for (const auto& call : calls) {
        ++number;
        const int before = lines;
        if (call() || lines == before || lines > before + 2)
            return number;
    }
    return 0;
}

/// The child's life; 0, or where it went wrong.
int live(int value) {
    static std::atomic<int> lines{0};
    DebugOutput::setSink([](DebugOutput::Level, const char* line) {
        lines += std::strstr(line, "the manager belongs to the parent") != nullptr ? 1 : 0;
    });
    FileDataSeparateManager* const inherited = FileDataSeparateManager::instance();
    const int worked = inheritedCallThatWorks(*inherited, lines);
    if (worked != 0)
        return worked;
    FileDataSeparateManager::release();
    FileDataSeparateManager* const own = FileDataSeparateManager::instance();
    if (own == inherited)
        return 100;
    if (!CHILDREN_MAY_START_THREADS)
        return 0;
    if (!own->init(DS_SCOPE_DVBMAIN))
        return 101;
    own->loadAllData();
    std::vector<_Argument_t> args{{START, -7}};
    if (!own->loadData(ASPECT, FIRST, args) || args.front().value < 0)
        return 102;
    if (!own->storeData(ASPECT, FIRST, {{START, value}}) || !own->waitStored(CHILDS_PATIENCE))
        return 103;
    own->backupData();
    if (!own->stop())
        return 104;
    FileDataSeparateManager::release();
    return 0;
}

class ForkedManagerTest : public testing::Test {
protected:
    ForkedManagerTest() {
        m_manager = FileDataSeparateManager::instance();
        EXPECT_TRUE(m_manager->init(DS_SCOPE_DVBMAIN));
        EXPECT_TRUE(m_manager->initAllData());
        m_manager->loadAllData();
    }
    ~ForkedManagerTest() override { FileDataSeparateManager::release(); }

    SettingsRoot m_root;
    FileDataSeparateManager* m_manager = nullptr;
};

TEST_F(ForkedManagerTest, AChildMakesAManagerOfItsOwn) {
    {
        int stored = 0;
        const AtWork clients(3, [&](int thread) {
            std::vector<_Argument_t> args;
            m_manager->loadData(ASPECT, FIRST, args);
            for (int i = 0; i < 1000 && thread == 2; ++i)
                const Event event(nullptr, {});
            if (thread == 0)
                m_manager->loadData(ASPECT);
            if (thread == 1) {
                m_manager->storeData(ASPECT, {1}, {{START, ++stored % 1000}});
                m_manager->waitStored(CHILDS_PATIENCE);
            }
        });
        for (int i = 0; i < 20; ++i)
            ASSERT_EQ(endOf(startChild([i] { return live(100 + i); })), 0) << i;
        // A child's child has the same rights.
        EXPECT_EQ(endOf(startChild([] { return endOf(startChild([] { return live(200); })); })), 0);
    }
    m_manager->loadData(ASPECT);
    std::vector<_Argument_t> args{{START, -7}};
    EXPECT_TRUE(m_manager->loadData(ASPECT, FIRST, args)) << "the parent's goes on";
    EXPECT_EQ(args.front().value, CHILDREN_MAY_START_THREADS ? 200 : 0) << "and finds what the last child stored";
}

} // namespace
} // namespace td::test
