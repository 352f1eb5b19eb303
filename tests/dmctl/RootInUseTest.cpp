// What dmctl does beside a running process of the library.
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include <pthread.h>
#include <unistd.h>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/RootPrefix.h>

#include "common/FileLock.h"
#include "common/SystemPaths.h"
#include "dmctl/DmctlFixture.h"

namespace td::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

/// This process as a program of the television on the test's root.
class RootInUseTest : public DmctlTest {
protected:
    RootInUseTest() {
        makeFiles();
        pthread_setname_np(pthread_self(), "test_dmctl"); // an emulated process bears the emulator's name
        EXPECT_TRUE(setRootPrefix(m_root.string().c_str()));
        FileDataSeparateManager::setListening(false);
    }
    ~RootInUseTest() override {
        FileDataSeparateManager::release();
        setRootPrefix("");
    }
};

/// Whether a process waits for a lock on the file. The kernel lists it as "1: -> FLOCK  ADVISORY  READ PID PLACE ...".
bool isWaitedFor(const std::string& inode) {
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (line.find("->") != std::string::npos && line.find(":" + inode + " ") != std::string::npos)
            return true;
    }
    return false;
}

TEST_F(RootInUseTest, VerbsThatWriteRefuseWhileVerbsThatReadDoNot) {
    FileDataSeparateManager* const manager = FileDataSeparateManager::instance();
    ASSERT_TRUE(manager->init(DS_SCOPE_ALL));
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"set", "PICTURE_MODE", "0", "0", "0", "Hue=1"},
          {"restore", "PICTURE_MODE", "--all"},
          {"apply", "PICTURE_MODE", "0", "0", "0", "--all-sources"},
          {"factory-reset", "--yes"},
          {"first-boot"},
          {"init"}}) {
        const Result refused = run(words);
        EXPECT_EQ(refused.code, 3) << words.front();
        EXPECT_THAT(refused.errors,
                    AllOf(HasSubstr("test_dmctl (process " + std::to_string(getpid()) + ")"), HasSubstr("--force")));
    }
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), before);
    EXPECT_EQ(run({"get", "PICTURE_MODE", "0", "0", "0", "Hue"}).output, "Hue = 0\n");
    EXPECT_EQ(verify().code, 0);

    EXPECT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Hue=1", "--force"}).code, 0);
    manager->stop();
    EXPECT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Hue=2"}).code, 0);
    EXPECT_EQ(run({"get", "PICTURE_MODE", "0", "0", "0", "Hue"}).output, "Hue = 2\n");
}

TEST_F(RootInUseTest, ACopyIsNotReadWhileSomebodyWritesIt) {
    FileLock writing;
    const std::string path = paths::lockFile(MODE_FILE);
    ASSERT_TRUE(writing.lock(path, FileLock::Kind::Exclusive));
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    auto reading = std::async(std::launch::async, [this] { return run({"verify", "PICTURE_MODE"}); });
    const std::string good = m_root.read(CURRENT + MODE_FILE);
    m_root.write(CURRENT + MODE_FILE, good.substr(0, good.size() / 2));
    // Without the wait the answer comes, with a damaged copy.
    while (!isWaitedFor(std::to_string(status.st_ino)) &&
           reading.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        std::this_thread::yield();
    m_root.write(CURRENT + MODE_FILE, good);
    writing.unlock();
    EXPECT_EQ(reading.get().code, 0);
}

} // namespace
} // namespace td::test
