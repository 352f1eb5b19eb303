// The listeners over the system's own semaphores and shared memory, posted by another process.
#include <chrono>
#include <csignal>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include <fcntl.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/fileOperator/AbstractFileOperator.h>
#include <dataModule/fileOperator/FileUserPictureGlobal.h>

#include "Child.h"
#include "common/ListenerNames.h"
#include "fileOperator/OperatorFactory.h"
#include "Gate.h"
#include "LogCapture.h"
#include "Process.h"
#include "RemoveNames.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr int PATIENCE_MILLISECONDS = 60000;
const std::vector<int> DIMS{4, 3, 1};

bool semaphoreExists(const char* name) {
    sem_t* const semaphore = sem_open(name, 0);
    if (semaphore == SEM_FAILED)
        return false;
    sem_close(semaphore);
    return true;
}

/// Permissions of a semaphore, where the system keeps it as a file; 0 where it does not.
mode_t semaphoreMode(const char* name) {
    struct stat status = {};
    const std::string path = std::string("/dev/shm/sem.") + (name[0] == '/' ? name + 1 : name);
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

/// Lets the semaphore's name lead nowhere, so that it cannot be opened; removed like a semaphore.
bool block(const char* name) {
    const std::string path = std::string("/dev/shm/sem.") + (name[0] == '/' ? name + 1 : name);
    return symlink("nowhere", path.c_str()) == 0;
}

bool post(const char* name) {
    return Process::run({"post", name}) == 0;
}

class SmallSet final : public FileDataSeparateManager {
public:
    ~SmallSet() override { stop(); }

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        return category == PICTURE_GLOBAL || category == PICTURE_MODE ? createOperator(category) : nullptr;
    }
};

/// Stops in the middle of a release.
class SlowSet final : public FileDataSeparateManager {
public:
    ~SlowSet() override { stop(); }
    Gate releasing;
    Gate mayRelease;

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        return category == PICTURE_GLOBAL ? new SlowOperator(*this) : nullptr;
    }

private:
    class SlowOperator final : public FileUserPictureGlobal {
    public:
        explicit SlowOperator(SlowSet& set) : m_set(set) {}
        bool releaseFile() override {
            m_set.releasing.open();
            m_set.mayRelease.pass();
            return FileUserPictureGlobal::releaseFile();
        }

    private:
        SlowSet& m_set;
    };
};

class ListenersTest : public testing::Test {
protected:
    ListenersTest() { removeNames(); }
    ~ListenersTest() override {
        if (m_listener.joinable())
            m_listener.join();
        umask(m_umask);
        removeNames();
    }

    void listenWith(IDataSeparateManager* manager) {
        m_listener = std::thread([manager] { FileDataSeparateManager::listenSTDSignal(manager); });
    }
    static std::unique_ptr<SmallSet> boot() {
        auto set = std::make_unique<SmallSet>();
        EXPECT_TRUE(set->init(DS_SCOPE_ALL));
        EXPECT_TRUE(set->initAllData());
        set->loadAllData();
        return set;
    }
    static int contrast(IDataSeparateManager& set) {
        std::vector<_Argument_t> args{{"Contrast", -1}};
        return set.loadData(PICTURE_MODE, DIMS, args) ? args.front().value : -1;
    }

    const mode_t m_umask = umask(022);
    SettingsRoot m_root;
    LogCapture m_log;
    std::thread m_listener;
};

TEST_F(ListenersTest, ASuspendCycleClosesAndReopensTheFiles) {
    const auto set = boot();
    listenWith(set.get());
    ASSERT_TRUE(m_log.waitFor("1.1 just waitting"));
    // A signal is no reason to stop waiting.
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    pthread_kill(m_listener.native_handle(), SIGUSR1);

    EXPECT_TRUE(set->storeData(PICTURE_MODE, DIMS, {{"Contrast", 71}}));
    ASSERT_TRUE(post(names::RELEASE_SEMAPHORE));
    ASSERT_TRUE(m_log.waitFor("2.1 just waitting"));
    EXPECT_TRUE(m_log.contains("1.2 release data Module for STD successfully.\n"));
    EXPECT_THAT(semaphoreMode(names::RELEASE_SEMAPHORE), testing::AnyOf(0666, 0)) << "whatever the umask";
    EXPECT_THAT(semaphoreMode(names::RELOAD_SEMAPHORE), testing::AnyOf(0666, 0));
    EXPECT_EQ(set->getFileHandler(PICTURE_MODE), nullptr);
    EXPECT_EQ(set->getFileHandler(PICTURE_GLOBAL), nullptr);
    EXPECT_EQ(contrast(*set), -1) << "no requests while released";
    set->backupData();
    EXPECT_FALSE(m_log.contains("Handle one backup request")) << "and no backups";
    EXPECT_NE(m_root.read(Copy::Current, "pic_mode_usr.ini").find("Contrast                 = 0071"), std::string::npos)
        << "the image holds nothing unwritten";

    ASSERT_TRUE(post(names::RELOAD_SEMAPHORE));
    m_listener.join();
    EXPECT_TRUE(m_log.contains("3.listen STD signal thread is over ,so close the semphore.\n"));
    EXPECT_EQ(contrast(*set), 71);
    EXPECT_NE(set->getFileHandler(PICTURE_MODE), nullptr);
    EXPECT_TRUE(set->storeData(PICTURE_MODE, DIMS, {{"Contrast", 72}}));
    EXPECT_TRUE(set->waitStored(PATIENCE_MILLISECONDS));
    EXPECT_FALSE(semaphoreExists(names::RELEASE_SEMAPHORE));
    EXPECT_FALSE(semaphoreExists(names::RELOAD_SEMAPHORE));
    EXPECT_EQ(umask(022), 026U);
}

TEST_F(ListenersTest, AReloadBeforeTheReleaseWaitsForIt) {
    const auto set = boot();
    ASSERT_TRUE(post(names::RELOAD_SEMAPHORE));
    listenWith(set.get());
    ASSERT_TRUE(m_log.waitFor("1.1 just waitting"));
    EXPECT_EQ(contrast(*set), 50);
    ASSERT_TRUE(post(names::RELEASE_SEMAPHORE));
    m_listener.join();
    EXPECT_TRUE(m_log.contains("2.2 reload data Module for STD successfully.\n"));
    EXPECT_EQ(contrast(*set), 50);
}

TEST_F(ListenersTest, AFailedReleaseEndsTheCycleAndLeavesTheNames) {
    SmallSet empty; // no operators: nothing to release, which counts as a failure
    ASSERT_TRUE(post(names::RELEASE_SEMAPHORE));
    ASSERT_TRUE(post(names::RELOAD_SEMAPHORE));
    listenWith(&empty);
    m_listener.join();
    EXPECT_TRUE(m_log.contains("release dataModule failed for STD.\n"));
    EXPECT_FALSE(m_log.contains("2.1 just waitting"));
    EXPECT_TRUE(semaphoreExists(names::RELEASE_SEMAPHORE));
    EXPECT_TRUE(semaphoreExists(names::RELOAD_SEMAPHORE));
}

TEST_F(ListenersTest, AFileThatCannotBeLoadedAgainIsReported) {
    const auto set = boot();
    ASSERT_TRUE(post(names::RELEASE_SEMAPHORE));
    listenWith(set.get());
    ASSERT_TRUE(m_log.waitFor("2.1 just waitting"));
    for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
        m_root.remove(copy, "pic_mode_usr.ini");
    ASSERT_TRUE(post(names::RELOAD_SEMAPHORE));
    m_listener.join();
    EXPECT_TRUE(m_log.contains(" reload file [pic_mode_usr.ini] failed.\n"));
    EXPECT_TRUE(m_log.contains("resume all data files successfully"));
    EXPECT_TRUE(m_log.contains("reload dataModule failed for STD.\n"));
    EXPECT_NE(set->getFileHandler(PICTURE_GLOBAL), nullptr) << "the others are loaded";
    EXPECT_TRUE(semaphoreExists(names::RELEASE_SEMAPHORE));
    EXPECT_TRUE(semaphoreExists(names::RELOAD_SEMAPHORE));
}

TEST_F(ListenersTest, WithoutASemaphoreThereIsNoCycle) {
    const auto set = boot();
    ASSERT_TRUE(block(names::RELEASE_SEMAPHORE));
    EXPECT_EQ(FileDataSeparateManager::listenSTDSignal(set.get()), nullptr);
    EXPECT_TRUE(m_log.contains("create sem for release data Module failed.\n"));
    removeNames();

    ASSERT_TRUE(block(names::RELOAD_SEMAPHORE));
    ASSERT_TRUE(post(names::RELEASE_SEMAPHORE));
    EXPECT_EQ(FileDataSeparateManager::listenSTDSignal(set.get()), nullptr);
    EXPECT_TRUE(m_log.contains("1.2 release data Module for STD successfully.\n"));
    EXPECT_TRUE(m_log.contains("create sem for reload data Module failed.\n"));
    EXPECT_FALSE(m_log.contains("2.1 just waitting"));
    EXPECT_TRUE(set->resumeFileSources()) << "by whoever finds it released";
    EXPECT_EQ(contrast(*set), 50);
}

TEST_F(ListenersTest, WhatWasNotLoadedStaysSo) {
    SmallSet set;
    ASSERT_TRUE(set.init(DS_SCOPE_ALL));
    ASSERT_TRUE(set.initAllData());
    EXPECT_TRUE(set.releaseFileSources());
    EXPECT_TRUE(set.resumeFileSources());
    EXPECT_EQ(contrast(set), -1);
}

TEST_F(ListenersTest, AListenerEndsWhenItsManagerIsReleased) {
    FileDataSeparateManager* const manager = FileDataSeparateManager::instance();
    listenWith(manager);
    ASSERT_TRUE(m_log.waitFor("1.1 just waitting"));
    FileDataSeparateManager::release();
    m_listener.join();
    EXPECT_TRUE(m_log.contains("error occur when waitting release sem from STD.\n"));
    EXPECT_EQ(FileDataSeparateManager::listenSTDSignal(nullptr), nullptr);
}

TEST_F(ListenersTest, StoppingWaitsForAListenerAtWork) {
    SlowSet set;
    ASSERT_TRUE(set.init(DS_SCOPE_ALL));
    ASSERT_TRUE(post(names::RELEASE_SEMAPHORE));
    listenWith(&set);
    set.releasing.pass();
    auto stopping = std::async(std::launch::async, [&] { return set.stop(); });
    // Nothing tells that a thread waits; one that does not has long ended by then.
    EXPECT_EQ(stopping.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    set.mayRelease.open();
    EXPECT_TRUE(stopping.get());
    m_listener.join();
    EXPECT_TRUE(m_log.contains("1.2 release data Module for STD successfully.\n"));
}

TEST_F(ListenersTest, AManagerThatHasGoneBeforeIsNotTouched) {
    FileDataSeparateManager* const manager = FileDataSeparateManager::instance();
    FileDataSeparateManager::release();
    ASSERT_TRUE(post(names::RELEASE_SEMAPHORE));
    EXPECT_EQ(FileDataSeparateManager::listenSTDSignal(manager), nullptr);
    EXPECT_TRUE(m_log.contains("release dataModule failed for STD.\n"));
}

TEST_F(ListenersTest, TheDetailLogFollowsTheSharedWordOnceThereIsOne) {
    FileDataSeparateManager::setListening(true);
    {
        ASSERT_GE(shmget(names::DETAIL_LOG_KEY, 1, IPC_CREAT | 0600), 0); // another one's, too small
        SmallSet refused;
        ASSERT_TRUE(refused.init(DS_SCOPE_ALL));
        ASSERT_TRUE(m_log.waitFor("the next manager starts it again"));
        removeNames();
    }
    ASSERT_TRUE(block(names::LOG_SEMAPHORE));
    const auto set = boot();
    ASSERT_TRUE(m_log.waitFor("create sem for detail log switch failed.\n"));
    EXPECT_EQ(sem_unlink(names::LOG_SEMAPHORE), 0);
    ASSERT_TRUE(m_log.waitFor("just waitting the received sem from user ...\n")) << "it tries again";
    EXPECT_THAT(semaphoreMode(names::LOG_SEMAPHORE), testing::AnyOf(0600, 0));
    EXPECT_FALSE(m_log.contains("contrast = "));

    ASSERT_EQ(Process::run({"switch", "5"}), 0);
    ASSERT_TRUE(m_log.waitFor("make the detail log switch 'OPEN'.\n"));
    EXPECT_TRUE(m_log.contains("received from shm values [5].\n"));
    DebugOutput::setLevel(DebugOutput::Level::Warning); // the port's own
    EXPECT_EQ(contrast(*set), 50);
    EXPECT_TRUE(m_log.contains("contrast = "));
    DebugOutput::setLevel(DebugOutput::Level::Debug);

    ASSERT_EQ(Process::run({"switch", "0"}), 0);
    ASSERT_TRUE(m_log.waitFor("make the detail log switch 'OFF'.\n"));
    m_log.clear();
    EXPECT_EQ(contrast(*set), 50);
    EXPECT_FALSE(m_log.contains("contrast = "));

    // A child made by fork() listens once it has a manager of its own.
    const auto listening = [] {
        shmid_ds status = {};
        return shmctl(shmget(names::DETAIL_LOG_KEY, 0, 0), IPC_STAT, &status) == 0 ? status.shm_nattch : 0;
    };
    const auto before = listening();
    const auto life = [&] {
        DebugOutput::setSink({});
        DebugOutput::setLevel(DebugOutput::Level::Error);
        if (listening() != before)
            return 1;
        if (!CHILDREN_MAY_START_THREADS)
            return 0;
        auto* const own = new SmallSet;
        if (!own->init(DS_SCOPE_ALL))
            return 2;
        while (listening() == before)
            std::this_thread::yield();
        return 0;
    };
    EXPECT_EQ(endOf(startChild(life)), 0);
}

TEST_F(ListenersTest, TheSharedWordIsMadeAndItsRemovalFails) {
    EXPECT_TRUE(FileDataSeparateManager::createDetailLogSwitchSHM());
    const int id = shmget(names::DETAIL_LOG_KEY, names::DETAIL_LOG_SIZE, 0);
    ASSERT_GE(id, 0);
    EXPECT_FALSE(FileDataSeparateManager::deleteDetailLogSwitchSHM()) << "the key is no segment's id";
    EXPECT_TRUE(m_log.contains("remove shm [16909060] error.\n "));
    EXPECT_EQ(shmget(names::DETAIL_LOG_KEY, names::DETAIL_LOG_SIZE, 0), id);
    EXPECT_EQ(FileDataSeparateManager::listenDetailLogSwitch(nullptr), nullptr);
}

TEST_F(ListenersTest, WithoutTheSharedWordThereIsNoListening) {
    ASSERT_GE(shmget(names::DETAIL_LOG_KEY, 1, IPC_CREAT | 0600), 0); // another one's, too small
    FileDataSeparateManager::listenDetailLogSwitch(&m_log);
    EXPECT_TRUE(m_log.contains("shmget error with key = [16909060].\n"));
    EXPECT_TRUE(m_log.contains("create shm for detail log switch failed.\n"));
}

} // namespace
} // namespace td::test
