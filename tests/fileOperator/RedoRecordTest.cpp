// The redo record: what is one, and when it is replayed (invariant 7 of AbstractFileOperator.h).
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileUserPictureMode.h>

#include "FakeParent.h"
#include "fileOperator/file/RedoRecord.h"
#include "Limits.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr const char* SETTINGS_FILE = "pic_mode_usr.ini";
constexpr const char* REDO_NAME = "pic_mode_usr.ini.redo";
const std::vector<int> STORED_DIMS{4, 3, 1};

RedoRecord example() {
    RedoRecord record;
    record.contentPosition = 200;
    record.crcPosition = 160;
    record.crc = 0x0badcafeU;
    record.writes = {{300, "Hue                      = 0007\n"}, {200, "write 1 1\n"}};
    return record;
}

TEST(RedoRecordText, IsReadAsItWasWrittenWhateverFollows) {
    RedoRecord read;
    ASSERT_TRUE(parseRedo(redoText(example()) + "rest of a longer record", read));
    EXPECT_EQ(redoText(read), redoText(example()));
    EXPECT_EQ(read.writes.at(1).bytes, "write 1 1\n");
}

TEST(RedoRecordText, TornOrChangedItIsNone) {
    const std::string text = redoText(example());
    RedoRecord read;
    for (std::size_t i = 0; i < text.size(); ++i) {
        EXPECT_FALSE(parseRedo(text.substr(0, i), read)) << "cut at " << i;
        std::string changed = text;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        EXPECT_FALSE(parseRedo(changed, read)) << "changed at " << i;
    }
}

TEST(RedoRecordText, WritesNowhereButInSectionsAndTheChecksumLine) {
    RedoRecord read;
    RedoRecord record = example();
    record.writes.front().offset = record.contentPosition - 1;
    EXPECT_FALSE(parseRedo(redoText(record), read));
    record = example();
    record.crcPosition = record.contentPosition - 1;
    EXPECT_FALSE(parseRedo(redoText(record), read));
}

class RedoRecordTest : public testing::Test {
protected:
    RedoRecordTest() {
        auto op = makeOperator();
        EXPECT_TRUE(op->initFile(true));
        EXPECT_TRUE(op->loadFile());
        m_before = current();
        op->storeData(STORED_DIMS, {{"Contrast", 77}, {"Hue", -5}});
        EXPECT_TRUE(m_parent.takePosted().front()->handle());
        m_after = current();
        m_redo = recordFor(m_before, m_after);
    }
    std::unique_ptr<FileUserPictureMode> makeOperator() {
        auto op = std::make_unique<FileUserPictureMode>();
        op->setParent(&m_parent);
        return op;
    }
    std::string current() const { return m_root.read(Copy::Current, SETTINGS_FILE); }

    /// The record of the one section that differs, made by hand.
    static std::string recordFor(const std::string& before, const std::string& after) {
        RedoRecord record;
        record.contentPosition = static_cast<int>(contentAt(after));
        record.crcPosition = static_cast<int>(lineAt(after, "CRC "));
        record.crc = checksum(after.substr(contentAt(after)));
        std::size_t first = contentAt(after);
        while (before[first] == after[first])
            ++first;
        std::size_t last = after.size();
        while (before[last - 1] == after[last - 1])
            --last;
        record.writes = {{static_cast<int>(first), after.substr(first, last - first)}};
        return redoText(record);
    }
    /// The file with the first `count` bytes of the write done.
    std::string partly(std::size_t count) const {
        RedoRecord record;
        EXPECT_TRUE(parseRedo(m_redo, record));
        std::string text = m_before;
        const RedoRecord::Write& write = record.writes.front();
        return text.replace(static_cast<std::size_t>(write.offset), count, write.bytes, 0, count);
    }
    /// What a start finds after a cut that left this file and the record.
    std::string fileAfterStart(const std::string& text, const std::string& redo) {
        m_root.write(Copy::Current, SETTINGS_FILE, text);
        m_root.write(Copy::Current, REDO_NAME, redo);
        auto op = makeOperator();
        EXPECT_TRUE(op->loadFile());
        return current();
    }

    /// The record stays where it is, marked as done.
    bool nothingIsPending() const {
        RedoRecord record;
        const std::string text = m_root.read(Copy::Current, REDO_NAME);
        return text.compare(0, 7, "done 1\n") == 0 && !parseRedo(text, record);
    }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
    std::string m_before;
    std::string m_after;
    std::string m_redo; ///< the record's text
};

TEST_F(RedoRecordTest, LeavesAFileAloneThatVerifies) {
    EXPECT_EQ(fileAfterStart(m_before, m_redo), m_before) << "a store of which nothing reached the disk";
    EXPECT_TRUE(nothingIsPending());
    EXPECT_EQ(fileAfterStart(m_after, m_redo), m_after);
}

TEST_F(RedoRecordTest, AFileThatItWouldNotMakeWholeStaysAsItIs) {
    std::string damaged = partly(1);
    damaged.back() = damaged.back() == '\n' ? ' ' : '\n';
    m_root.write(Copy::Current, SETTINGS_FILE, damaged);
    m_root.write(Copy::Current, REDO_NAME, m_redo);
    unsigned int crc = 1;
    EXPECT_FALSE(replayRedo(SettingsRoot::path(Copy::Current, SETTINGS_FILE), crc));
    EXPECT_EQ(current(), damaged);
    EXPECT_EQ(crc, 1U);
}

TEST_F(RedoRecordTest, WithoutALockFileAStoreIsNotMistakenForOneThatWasCut) {
    std::filesystem::remove_all(m_root.directory(Copy::Current) + "../lock");
    m_root.write(Copy::Current, "../lock", "where the directory should be");
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    ASSERT_TRUE(op->storeData({0, 0, 0}, {{"Contrast", 33}}));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_FALSE(m_log.contains("was cut short"));
    EXPECT_TRUE(nothingIsPending());
    EXPECT_EQ(current(), withChecksum(withValue(m_after, "[000]\n", "Contrast", 33)));
}

TEST_F(RedoRecordTest, ARepairedChecksumDoesNotHideAStoreThatWasCut) {
    m_root.write(Copy::Current, SETTINGS_FILE, partly(3));
    m_root.write(Copy::Current, REDO_NAME, m_redo);
    const std::string path = SettingsRoot::path(Copy::Current, SETTINGS_FILE);
    {
        const FullDisk disk(0);
        EXPECT_FALSE(AbstractFileOperator::generateCRC32(path.c_str()));
    }
    EXPECT_TRUE(m_log.contains("a store in file [" + path + "] was cut short and could not be ended.\n"));
    EXPECT_EQ(current(), partly(3));
    EXPECT_TRUE(AbstractFileOperator::generateCRC32(path.c_str()));
    EXPECT_EQ(current(), m_after);
}

TEST_F(RedoRecordTest, GoesWithItsFile) {
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(op->removeCurrentFile());
    EXPECT_FALSE(m_root.exists(Copy::Current, REDO_NAME));
}

} // namespace
} // namespace td::test
