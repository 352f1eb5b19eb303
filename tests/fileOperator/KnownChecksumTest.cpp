// The checksum that a store works out from the one before it is the one that the file has, whatever happened to the
// file meanwhile.
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileUserPictureMode.h>

#include "FakeParent.h"
#include "fileOperator/file/KnownChecksum.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr const char* MARKED_FILE = "pic_mode_usr.ini";

class KnownChecksumTest : public testing::Test {
protected:
    KnownChecksumTest() {
        m_op.setParent(&m_parent);
        EXPECT_TRUE(m_op.initFile(true));
        EXPECT_TRUE(m_op.loadFile());
        store({0, 0, 0}, 11);
    }
    /// To its end, as the worker does it.
    void store(const std::vector<int>& dims, int value) {
        ASSERT_TRUE(m_op.storeData(dims, {{"Contrast", value}}));
        ASSERT_EQ(m_parent.deliver(), 1);
    }
    std::string current() const { return m_root.read(Copy::Current, MARKED_FILE); }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
    FileUserPictureMode m_op;
};

TEST_F(KnownChecksumTest, IsRightAfterEachOfManyStores) {
    std::mt19937 random(5);
    const auto below = [&random](unsigned int end) { return static_cast<int>(random() % end); };
    for (int i = 0; i < 50; ++i) {
        store({below(16), below(12), below(8)}, 1000 + i);
        ASSERT_TRUE(checksumIsRight(current())) << i;
    }
}

/// A file that could not be synced may hold something else by the next store, and bear the same time.
TEST_F(KnownChecksumTest, IsNotKnownOnceItIsForgotten) {
    const std::string text = current();
    const auto content = static_cast<int>(contentAt(text));
    const int file = open(SettingsRoot::path(Copy::Current, MARKED_FILE).c_str(), O_RDWR);
    ASSERT_GE(file, 0);
    RedoRecord record;
    record.contentPosition = content;
    unsigned int crc = 0;
    KnownChecksum known;
    known.mark(file, content, checksum(text.substr(contentAt(text))));
    EXPECT_TRUE(known.after(file, record, crc));
    EXPECT_EQ(crc, checksum(text.substr(contentAt(text))));
    known.forget();
    EXPECT_FALSE(known.after(file, record, crc));
    close(file);
}

TEST_F(KnownChecksumTest, CoversWhatOthersWroteInTheFile) {
    const std::string changed = withValue(current(), "[111]\n", "Contrast", 42);
    m_root.write(Copy::Current, MARKED_FILE, changed);
    store({0, 0, 0}, 12);
    EXPECT_EQ(current(), withChecksum(withValue(changed, "[000]\n", "Contrast", 12)));
}

TEST_F(KnownChecksumTest, CoversAFileThatTookThePlaceOfTheOldOne) {
    const std::string path = SettingsRoot::path(Copy::Current, MARKED_FILE);
    const std::string changed = withValue(current(), "[111]\n", "Contrast", 42);
    m_root.write(Copy::Current, "other", changed);
    std::filesystem::last_write_time(SettingsRoot::path(Copy::Current, "other"),
                                     std::filesystem::last_write_time(path));
    std::filesystem::rename(SettingsRoot::path(Copy::Current, "other"), path);
    store({0, 0, 0}, 12);
    EXPECT_EQ(current(), withChecksum(withValue(changed, "[000]\n", "Contrast", 12)));
}

} // namespace
} // namespace td::test
