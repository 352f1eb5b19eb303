// dmctl log and dmctl std against the library's own listeners.
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

#include <fcntl.h>
#include <semaphore.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>

#include "common/ListenerNames.h"
#include "LogCapture.h"
#include "RemoveNames.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Answer {
    int code = -1;
    std::string text; ///< of both outputs
};

Answer dmctl(const std::string& words) {
    const TemporaryDirectory output;
    const int status = std::system(
        (DMCTL_PROGRAM " --root '" + std::string(rootPrefix()) + "' " + words + " >" + output.file("out") + " 2>&1")
            .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output.read("out")};
}

class SteeringVerbsTest : public testing::Test {
protected:
    SteeringVerbsTest() { removeNames(); }
    ~SteeringVerbsTest() override {
        FileDataSeparateManager::release();
        if (m_listener.joinable())
            m_listener.join();
        umask(m_umask);
        removeNames();
    }

    const SettingsRoot m_root;
    LogCapture m_log;
    std::thread m_listener;
    const mode_t m_umask = umask(022);
};

TEST_F(SteeringVerbsTest, WithoutListenersNothingIsLeftBehind) {
    for (const char* words : {"log on", "log off", "std release", "std reload"}) {
        const Answer answer = dmctl(words);
        EXPECT_EQ(answer.code, 1);
        EXPECT_THAT(answer.text, HasSubstr("nobody listens"));
    }
    EXPECT_THAT(dmctl("log status").text, HasSubstr("off; nobody listens"));
    EXPECT_EQ(sem_open(names::LOG_SEMAPHORE, 0), SEM_FAILED);
    EXPECT_LT(shmget(names::DETAIL_LOG_KEY, 0, 0), 0);
    EXPECT_EQ(dmctl("log").code, 2);
    EXPECT_EQ(dmctl("std relaod").code, 2);

    // A semaphore that a program which has ended left behind: the message is taken back.
    sem_t* const left = sem_open(names::RELEASE_SEMAPHORE, O_CREAT, 0600, 0U);
    ASSERT_NE(left, SEM_FAILED);
    EXPECT_THAT(dmctl("std release").text, HasSubstr("taken back"));
    int value = -1;
    EXPECT_EQ(sem_getvalue(left, &value), 0);
    EXPECT_EQ(value, 0);
    sem_close(left);
}

TEST_F(SteeringVerbsTest, EveryListenerHearsOfTheSwitch) {
    // The library starts this once in a process, which other tests may have had it do. It waits for ever.
    std::thread(FileDataSeparateManager::listenDetailLogSwitch, FileDataSeparateManager::instance()).detach();
    ASSERT_TRUE(m_log.waitFor("just waitting the received sem from user ...\n"));
    // A second one, as another process would be: it has the word attached and waits for posts. A post belongs to
    // nobody, and a listener that is quick may take two: this one takes one of a command, so that the other is left for
    // the first.
    void* const word = shmat(shmget(names::DETAIL_LOG_KEY, 0, 0), nullptr, 0);
    sem_t* const semaphore = sem_open(names::LOG_SEMAPHORE, 0);
    ASSERT_NE(semaphore, SEM_FAILED);
    std::atomic<bool> heard{false};
    std::atomic<bool> over{false};
    std::atomic<bool> ended{false};
    m_listener = std::thread([&] {
        while (sem_wait(semaphore) == 0 && !over) {
            heard = true;
            while (heard && !over)
                std::this_thread::yield();
        }
        ended = true;
    });

    const Answer on = dmctl("log on");
    EXPECT_EQ(on.code, 0) << on.text;
    EXPECT_THAT(on.text, StartsWith("The detail log is on now; 2 processes listen, 2 took the message."));
    EXPECT_TRUE(m_log.waitFor("make the detail log switch 'OPEN'.\n"));
    EXPECT_THAT(dmctl("log status --json").text, HasSubstr("\"switch\": \"on\""));
    heard = false;
    const Answer off = dmctl("log off");
    EXPECT_EQ(off.code, 0) << off.text;
    EXPECT_TRUE(m_log.waitFor("make the detail log switch 'OFF'.\n"));
    over = true;
    while (!ended) {
        sem_post(semaphore);
        std::this_thread::yield();
    }
    m_listener.join();
    sem_close(semaphore);
    shmdt(word);
}

TEST_F(SteeringVerbsTest, FilesAreReleasedAndReloaded) {
    FileDataSeparateManager* const manager = FileDataSeparateManager::instance();
    ASSERT_TRUE(manager->init(DS_SCOPE_DVBMAIN));
    m_listener = std::thread(
        [manager] { FileDataSeparateManager::listenSTDSignal(static_cast<IDataSeparateManager*>(manager)); });
    ASSERT_TRUE(m_log.waitFor("1.1 just waitting"));
    const Answer release = dmctl("std release");
    EXPECT_EQ(release.code, 0) << release.text;
    EXPECT_EQ(release.text, "1 process releases its files.\n");
    ASSERT_TRUE(m_log.waitFor("2.1 just waitting"));
    EXPECT_EQ(dmctl("std reload").text, "1 process reloads its files.\n");
    EXPECT_TRUE(m_log.waitFor("2.2 reload data Module for STD successfully.\n"));
}

} // namespace
} // namespace td::test
