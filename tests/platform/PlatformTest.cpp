#include <cstring>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <dataModule/platform/ConfigReader.h>
#include <dataModule/platform/DebugOutput.h>
#include <dataModule/platform/FlashFieldStore.h>
#include <dataModule/platform/OsalThreads.h>
#include <dataModule/platform/RootPrefix.h>

#include "LogCapture.h"
#include "TemporaryDirectory.h"

namespace td {
namespace {

using Level = DebugOutput::Level;
using test::LogCapture;
using test::TemporaryDirectory;

/// Leaves the process without a root prefix.
class RootPrefix : public testing::Test {
protected:
    void TearDown() override {
        holdRootPrefix(false);
        setRootPrefix("");
    }
};

/// Sends standard error to a file while it lives.
class StandardErrorTo {
public:
    explicit StandardErrorTo(const std::string& path) : m_before(dup(STDERR_FILENO)) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    ~StandardErrorTo() {
        dup2(m_before, STDERR_FILENO);
        close(m_before);
    }
    StandardErrorTo(const StandardErrorTo&) = delete;
    StandardErrorTo& operator=(const StandardErrorTo&) = delete;

private:
    const int m_before;
};

class ConfigReaderTest : public testing::Test {
protected:
    std::string text(const char* section, const char* key) const {
        char value[64] = "<none>";
        ConfigReader::readString(m_path.c_str(), section, key, value, sizeof value);
        return value;
    }
    int number(const char* key) const {
        int value = -999;
        ConfigReader::readInt(m_path.c_str(), "Numbers", key, value);
        return value;
    }

    const TemporaryDirectory m_directory;
    const std::string m_path =
        m_directory.write("config.ini", "; comment\n"
                                        "Path=outside\n"
                                        "[ModuleData]\r\n"
                                        "Name = first\r\n"
                                        "  Path = /ovdata/model/x/ ; comment\n"
                                        "Empty =\n"
                                        "Long = " +
                                            std::string(300, 'x') +
                                            "\n"
                                            "Name = last\n"
                                            "no key and no value\n"
                                            "[Numbers]\n"
                                            "Decimal = 42\nNegative = -7\nZero = 010\nHex = 0x1F\nHexOnly = 0x\n"
                                            "Trailing = 5 apples\nText = five\nBig = 2147483648\n"
                                            "Huge = 99999999999999999999\nEmpty =\n"
                                            "[Other]\nName = other");
};

} // namespace

TEST_F(ConfigReaderTest, FindsTheLastValueOfTheKeyInItsSection) {
    EXPECT_EQ(text("ModuleData", "Name"), "last");
    EXPECT_EQ(text("ModuleData", "Path"), "/ovdata/model/x/"); // indented, not a second line of the value above
    EXPECT_EQ(text("Other", "Name"), "other");
    EXPECT_EQ(text("ModuleData", "Empty"), "");
    EXPECT_EQ(text("moduledata", "Name"), "<none>");
    EXPECT_EQ(text("ModuleData", "name"), "<none>");
    EXPECT_EQ(text("ModuleData", "Long"), "<none>"); // never a part of a value
    EXPECT_EQ(text("Missing", "Name"), "<none>");
    std::filesystem::remove(m_path);
    ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_EQ(text("Other", "Name"), "<none>") << "without waiting for somebody to write it";
}

/// The line below one with a zero byte was lost once, a section's header among them.
TEST_F(ConfigReaderTest, ALineWithAZeroByteIsPassedOverAlone) {
    using namespace std::string_literals;
    m_directory.write("config.ini", "[ModuleData]\nName = ab\0cd\n[Other]\nName = o\0\nName = other\nPath = y\0"s);
    EXPECT_EQ(text("ModuleData", "Name"), "<none>");
    EXPECT_EQ(text("Other", "Name"), "other");
    EXPECT_EQ(text("Other", "Path"), "<none>");
}

TEST_F(ConfigReaderTest, LeavesTheValueAloneOnFailure) {
    char value[5] = "old";
    EXPECT_FALSE(ConfigReader::readString(m_path.c_str(), "Other", "Name", value, sizeof value)); // needs 6
    EXPECT_FALSE(ConfigReader::readString(m_directory.file("missing").c_str(), "Other", "Name", value, sizeof value));
    EXPECT_FALSE(ConfigReader::readString(m_directory.string().c_str(), "Other", "Name", value, sizeof value));
    EXPECT_FALSE(ConfigReader::readString(nullptr, "Other", "Name", value, sizeof value));
    EXPECT_FALSE(ConfigReader::readString(m_path.c_str(), nullptr, "Name", value, sizeof value));
    EXPECT_FALSE(ConfigReader::readString(m_path.c_str(), "Other", nullptr, value, sizeof value));
    EXPECT_FALSE(ConfigReader::readString(m_path.c_str(), "ModuleData", "Name", value, 0));
    EXPECT_STREQ(value, "old");
    EXPECT_TRUE(ConfigReader::readString(m_path.c_str(), "ModuleData", "Name", value, sizeof value));
    EXPECT_STREQ(value, "last");
}

TEST_F(ConfigReaderTest, ReadsWholeNumbersOnly) {
    EXPECT_EQ(number("Decimal"), 42);
    EXPECT_EQ(number("Negative"), -7);
    EXPECT_EQ(number("Zero"), 10);
    EXPECT_EQ(number("Hex"), 31);
    for (const char* const key : {"HexOnly", "Trailing", "Text", "Big", "Huge", "Empty", "Missing"})
        EXPECT_EQ(number(key), -999) << key;
}

TEST_F(RootPrefix, GoesBeforeEveryPath) {
    EXPECT_STREQ(rootPrefix(), "");
    EXPECT_EQ(underRootPrefix("/var/x"), "/var/x");
    EXPECT_TRUE(setRootPrefix("/tmp/root//"));
    EXPECT_STREQ(rootPrefix(), "/tmp/root");
    EXPECT_EQ(underRootPrefix("/var/x"), "/tmp/root/var/x");
    EXPECT_TRUE(setRootPrefix("/"));
    EXPECT_STREQ(rootPrefix(), "");
}

TEST_F(RootPrefix, RefusesWhatWouldNotFitAndChangesWhileHeld) {
    ASSERT_TRUE(setRootPrefix("/before"));
    EXPECT_FALSE(setRootPrefix(nullptr));
    EXPECT_FALSE(setRootPrefix(std::string(161, 'x').c_str()));
    EXPECT_STREQ(rootPrefix(), "/before");
    EXPECT_TRUE(setRootPrefix((std::string(160, 'x') + "/").c_str()));
    EXPECT_EQ(std::strlen(rootPrefix()), 160U);
    holdRootPrefix(true);
    EXPECT_FALSE(setRootPrefix("/after"));
    EXPECT_EQ(std::strlen(rootPrefix()), 160U);
    holdRootPrefix(false);
    EXPECT_TRUE(setRootPrefix("/after"));
}

TEST_F(RootPrefix, FlashFieldsAreFilesUnderIt) {
    const TemporaryDirectory directory;
    directory.write("/var/local/flash/factory_mode", "on\r\n");
    directory.write("/var/local/flash/empty", "");
    directory.write("/var/local/outside", "secret");
    ASSERT_TRUE(setRootPrefix(directory.string().c_str()));
    char value[8] = "old";
    for (const char* const name : {"missing", "../outside", "..", ".", "", "/factory_mode", "a..b"})
        EXPECT_FALSE(FlashFieldStore::readField(name, value, sizeof value)) << name;
    EXPECT_FALSE(FlashFieldStore::readField(nullptr, value, sizeof value));
    EXPECT_FALSE(FlashFieldStore::readField("factory_mode", value, 0));
    EXPECT_STREQ(value, "old");
    EXPECT_TRUE(FlashFieldStore::readField("factory_mode", value, sizeof value));
    EXPECT_STREQ(value, "on");
    EXPECT_TRUE(FlashFieldStore::readField("factory_mode", value, 2));
    EXPECT_STREQ(value, "o");
    EXPECT_TRUE(FlashFieldStore::readField("empty", value, sizeof value));
    EXPECT_STREQ(value, "");
}

TEST(DebugOutput, StartsWithFailuresOnStandardError) {
    const TemporaryDirectory directory;
    {
        const StandardErrorTo file(directory.file("log"));
        DebugOutput::write(Level::Error, "ended\n");
        DebugOutput::write(Level::Warning, "not ended");
        DebugOutput::write(Level::Info, "unwanted\n");
        DebugOutput::write(Level::Error, nullptr);
    }
    EXPECT_EQ(directory.read("log"), "ended\nnot ended\n");
    EXPECT_TRUE(DebugOutput::isEnabled(Level::Warning));
    EXPECT_FALSE(DebugOutput::isEnabled(Level::Info));
}

TEST(DebugOutput, GivesWholeLinesToTheSinkOneThreadAtATime) {
    const LogCapture restoresTheLogAtTheEnd;
    bool inside = false; // unguarded on purpose: the calls themselves must not overlap
    int overlaps = 0;
    int lines = 0;
    DebugOutput::setSink([&](Level, const char*) {
        overlaps += inside ? 1 : 0;
        inside = true;
        ++lines;
        inside = false;
    });
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([] {
            for (int count = 0; count < 500; ++count)
                DebugOutput::write(Level::Debug, "line\n");
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(lines, 2000);
    EXPECT_EQ(overlaps, 0);
}

TEST(DebugOutput, OutlivesASinkThatThrows) {
    const LogCapture restoresTheLogAtTheEnd;
    DebugOutput::setSink([](Level, const char*) { throw std::runtime_error("no room"); });
    EXPECT_NO_THROW(DebugOutput::write(Level::Error, "line\n"));
    EXPECT_NO_THROW(DebugOutput::write(Level::Error, "line\n")); // the lock was given back
}

TEST(OsalThreads, RunsANamedThread) {
    struct Shared {
        std::promise<void> named;
        std::string name;
    } shared;
    const auto entry = [](void* argument) -> void* {
        auto& mine = *static_cast<Shared*>(argument);
        mine.named.get_future().wait();
        char name[32] = "";
        pthread_getname_np(pthread_self(), name, sizeof name);
        mine.name = name;
        return nullptr;
    };
    OsalThreads::Handle handle = OsalThreads::INVALID_HANDLE;
    ASSERT_TRUE(OsalThreads::create("FileManagerSyncFileThread", entry, &shared, handle));
    shared.named.set_value();
    EXPECT_TRUE(OsalThreads::join(handle));
    EXPECT_EQ(shared.name, "FileManagerSync");
}

TEST(OsalThreads, RefusesWhatIsNoThread) {
    OsalThreads::Handle handle = OsalThreads::INVALID_HANDLE;
    EXPECT_FALSE(OsalThreads::create("name", nullptr, nullptr, handle));
    EXPECT_EQ(handle, OsalThreads::INVALID_HANDLE);
    EXPECT_FALSE(OsalThreads::join(handle));
    EXPECT_FALSE(OsalThreads::detach(handle));
}

TEST(OsalThreads, CountsUptimeForward) {
    const double first = OsalThreads::uptime();
    EXPECT_GT(first, 0.0);
    EXPECT_GE(OsalThreads::uptime(), first);
}

} // namespace td
