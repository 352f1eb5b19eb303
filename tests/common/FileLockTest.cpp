#include <atomic>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "common/Deadline.h"
#include "common/FileLock.h"
#include "Gate.h"
#include "TemporaryDirectory.h"

namespace td::test {
namespace {

using Kind = FileLock::Kind;
using Attempt = FileLock::Attempt;

class FileLockTest : public testing::Test {
protected:
    TemporaryDirectory m_directory;
    std::string m_path = m_directory.file("lock/a.ini.lock");
    FileLock m_one;
    FileLock m_other;
};

TEST_F(FileLockTest, SharedOnesGoTogetherAnExclusiveOneGoesAlone) {
    ASSERT_TRUE(m_one.lock(m_path, Kind::Shared)) << "makes the directory too";
    EXPECT_EQ(m_other.tryLock(m_path, Kind::Shared), Attempt::Locked);
    EXPECT_EQ(m_other.tryLock(m_path, Kind::Exclusive), Attempt::Busy);
    EXPECT_FALSE(m_other.isHeld());
    m_one.unlock();
    EXPECT_EQ(m_other.tryLock(m_path, Kind::Exclusive), Attempt::Locked);
    EXPECT_EQ(m_one.tryLock(m_path, Kind::Shared), Attempt::Busy);
    EXPECT_EQ(m_one.tryLock(m_directory.file("lock/b.ini.lock"), Kind::Exclusive), Attempt::Locked) << "another file";
}

TEST_F(FileLockTest, WaitsForTheOther) {
    const timespec past{};
    ASSERT_TRUE(m_one.lock(m_path, Kind::Exclusive));
    EXPECT_EQ(m_other.lock(m_path, Kind::Exclusive, {past, nullptr}), Attempt::Busy) << "no longer than it may";
    m_one.unlock();
    // Two that want it all the time: a wait that ends too early, or never, shows.
    Gate start;
    std::atomic<int> inside{0};
    const auto contend = [&](FileLock& lock, const FileLock::Patience& patience) {
        start.pass();
        for (int i = 0; i < 500; ++i) {
            ASSERT_EQ(lock.lock(m_path, Kind::Exclusive, patience), Attempt::Locked);
            ASSERT_EQ(++inside, 1);
            std::this_thread::yield();
            --inside;
            lock.unlock();
        }
    };
    std::thread patient([&] { contend(m_one, {}); });
    std::thread limited([&] { contend(m_other, {deadlineIn(60000), nullptr}); });
    start.open();
    patient.join();
    limited.join();
}

TEST_F(FileLockTest, AProcessThatDiesGivesItsLockBack) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        FileLock lock;
        const bool locked = lock.lock(m_path, Kind::Exclusive);
        static_cast<void>(!write(ready[1], locked ? "+" : "-", 1));
        for (;;)
            pause();
    }
    char answer = 0;
    ASSERT_EQ(read(ready[0], &answer, 1), 1);
    EXPECT_EQ(answer, '+');
    EXPECT_EQ(m_one.tryLock(m_path, Kind::Shared), Attempt::Busy);
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(m_one.tryLock(m_path, Kind::Shared), Attempt::Locked);
    close(ready[0]);
    close(ready[1]);
}

TEST_F(FileLockTest, LocksTheFileThatIsThereNowAndFollowsNoLink) {
    ASSERT_TRUE(m_one.lock(m_path, Kind::Exclusive));
    std::filesystem::remove(m_path);
    EXPECT_EQ(m_other.tryLock(m_path, Kind::Exclusive), Attempt::Locked) << "another file by the same name";
    std::filesystem::create_symlink(m_directory.file("elsewhere"), m_directory.file("lock/link.lock"));
    EXPECT_EQ(m_one.tryLock(m_directory.file("lock/link.lock"), Kind::Shared), Attempt::NotAvailable);
    EXPECT_FALSE(std::filesystem::exists(m_directory.file("elsewhere")));
}

TEST_F(FileLockTest, SaysWhenThereIsNothingToLock) {
    EXPECT_FALSE(m_one.lock(m_directory.file("no/such/a.lock"), Kind::Shared));
    EXPECT_EQ(m_one.tryLock(m_directory.file("no/such/a.lock"), Kind::Shared), Attempt::NotAvailable);
    EXPECT_FALSE(m_one.isHeld());
}

} // namespace
} // namespace td::test
