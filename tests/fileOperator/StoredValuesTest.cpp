// What becomes of values that were stored and are not on the disk, and of work on files that others have, on real
// files: one operator, and its worker played by the test.

#include <filesystem>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/common/FileUtil.h>
#include <dataModule/fileOperator/FileFactoryPictureOverScan.h>
#include <dataModule/fileOperator/FileFactoryPictureWB.h>
#include <dataModule/fileOperator/FileUserPictureGlobal.h>
#include <dataModule/fileOperator/FileUserPictureSourceOnly.h>

#include "common/Deadline.h"
#include "common/FileLock.h"
#include "common/SystemPaths.h"
#include "FakeParent.h"
#include "fileOperator/file/LoadBudget.h"
#include "fileOperator/file/Loading.h"
#include "Limits.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr int THEIRS = 33;   ///< what another process wrote to the other field
constexpr int OURS = 9;      ///< what is stored here
constexpr int FACTORYS = 70; ///< in the factory copy, both fields
constexpr const char* STORED_FILE = "pic_overscan_factory.ini";
constexpr const char* FIRST_SECTION = "[0]\n";
constexpr const char* STORED = "InputHStart";
constexpr const char* OTHER = "InputVStart";

/// With the category that is loaded anew by every load.
class StoredValuesTest : public testing::Test {
protected:
    using Operator = FileFactoryPictureOverScan;

    StoredValuesTest() {
        auto op = make();
        EXPECT_TRUE(op->initFile(true));
        m_text = current();
        m_root.write(Copy::Factory, STORED_FILE, with(FACTORYS, FACTORYS));
    }
    std::unique_ptr<Operator> make() {
        auto op = std::make_unique<Operator>();
        op->setParent(&m_parent);
        return op;
    }
    std::unique_ptr<Operator> makeLoaded() {
        auto op = make();
        EXPECT_TRUE(op->loadFile());
        return op;
    }
    std::string with(int stored, int other) const {
        return withChecksum(withValue(withValue(m_text, FIRST_SECTION, STORED, stored), FIRST_SECTION, OTHER, other));
    }
    std::string current() const { return m_root.read(Copy::Current, STORED_FILE); }
    void setCurrent(const std::string& text) const { m_root.write(Copy::Current, STORED_FILE, text); }
    /// No file: what is written now fails.
    void hideCurrent() const { m_root.remove(Copy::Current, STORED_FILE); }

    static std::string values(IFileOperator& op) {
        return std::to_string(valueOf(op, {0}, STORED)) + "," + std::to_string(valueOf(op, {0}, OTHER));
    }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
    std::string m_text; ///< of a file with default values
};

TEST_F(StoredValuesTest, EachCallKeepsOrDropsThemAsItSays) {
    struct Case {
        const char* name;
        std::function<bool(Operator& op)> call;
        const char* inMemory;
        int stored, other; ///< in the file, after the worker has done what is left
    };
    const std::string factory = m_root.path(Copy::Factory, STORED_FILE);
    const Case cases[] = {
        {"load after a release", [](Operator& op) { return op.releaseFile() && op.loadFile(); }, "9,33", OURS, THEIRS},
        {"load after a reset", [](Operator& op) { return op.resetForLoadFile() && op.loadFile(); }, "9,33", OURS,
         THEIRS},
        {"load while loaded", [](Operator& op) { return op.loadFile(); }, "0,33", 0, THEIRS},
        {"refresh from the current copy", [](Operator& op) { return op.refreshDataFromCurrent(); }, "0,33", 0, THEIRS},
        {"refresh from the factory copy", [](Operator& op) { return op.refreshDataFromManufactory(); }, "70,70", 0,
         THEIRS},
        {"refresh and reset",
         [](Operator& op) { return op.refreshDataFromManufactory() && op.resetCurrentFileFromManufactoryFile(); },
         "70,70", FACTORYS, FACTORYS},
        {"restore", [](Operator& op) { return op.restoreSetting({0}); }, "70,70", FACTORYS, FACTORYS},
        {"load of another file", [&](Operator& op) { return op.loadFile(factory.c_str()); }, "70,70", 0, THEIRS},
        {"drop", [](Operator& op) { return dropStores(op.state()), true; }, "9,0", 0, THEIRS},
        {"drop, then a load after a release",
         [](Operator& op) { return dropStores(op.state()), op.releaseFile() && op.loadFile(); }, "0,33", 0, THEIRS},
    };
    for (const Case& one : cases) {
        for (const bool hasFailed : {false, true}) {
            SCOPED_TRACE(std::string(one.name) + (hasFailed ? ", a failed store" : ", a queued store"));
            setCurrent(with(0, 0));
            auto op = makeLoaded();
            EXPECT_TRUE(storeValue(*op, {0}, STORED, OURS));
            if (hasFailed) {
                hideCurrent();
                EXPECT_EQ(m_parent.deliver(), 0);
            }
            setCurrent(with(0, THEIRS));
            EXPECT_TRUE(one.call(*op));
            EXPECT_EQ(values(*op), one.inMemory);
            m_parent.deliver();
            tryAgain(op->state());
            EXPECT_EQ(current(), with(one.stored, one.other));
        }
    }
}

TEST_F(StoredValuesTest, WhatWasStoredBeforeAnyLoadEndsWithIt) {
    for (const bool failsFirst : {false, true}) {
        setCurrent(with(1, THEIRS));
        auto op = make();
        EXPECT_TRUE(storeValue(*op, {0}, STORED, OURS));
        if (failsFirst) {
            m_root.write(Copy::Factory, STORED_FILE, "damaged");
            hideCurrent();
            m_root.remove(Copy::Backup, STORED_FILE);
            EXPECT_FALSE(op->loadFile());
            EXPECT_TRUE(storeValue(*op, {0}, STORED, OURS + 1));
            setCurrent(with(1, THEIRS));
        }
        EXPECT_TRUE(op->loadFile());
        m_parent.deliver();
        EXPECT_EQ(values(*op), "1,33");
        EXPECT_EQ(current(), with(1, THEIRS));
    }
}

TEST_F(StoredValuesTest, AFailedStoreGoesWithTheNextOrIsTriedAgain) {
    setCurrent(with(0, 0));
    auto op = makeLoaded();
    hideCurrent();
    EXPECT_TRUE(storeValue(*op, {0}, STORED, OURS));
    EXPECT_EQ(m_parent.deliver(), 0);
    tryAgain(op->state());
    tryAgain(op->state());
    EXPECT_EQ(m_log.count("tried again from time to time"), 1U) << "once for a cause";
    setCurrent(with(0, 0));
    EXPECT_TRUE(storeValue(*op, {1}, STORED, 5));
    EXPECT_EQ(m_parent.deliver(), 1) << "one event";
    const std::string both = withChecksum(withValue(with(OURS, 0), "[1]\n", STORED, 5));
    EXPECT_EQ(current(), both);

    hideCurrent();
    EXPECT_TRUE(storeValue(*op, {0}, STORED, 8));
    EXPECT_EQ(m_parent.deliver(), 0);
    setCurrent(both);
    {
        FileLock other;
        ASSERT_TRUE(other.lock(paths::lockFile(STORED_FILE), FileLock::Kind::Shared));
        tryAgain(op->state()); // does not wait
    }
    EXPECT_EQ(current(), both);
    tryAgain(op->state());
    EXPECT_EQ(current(), withChecksum(withValue(both, FIRST_SECTION, STORED, 8)));
    EXPECT_FALSE(hasFailed(op->state()));
    EXPECT_TRUE(op->getBackupReq());
}

TEST_F(StoredValuesTest, AValueThatDoesNotFitKeepsNoOtherFromTheFile) {
    setCurrent(with(0, 0));
    auto op = makeLoaded();
    EXPECT_TRUE(storeValue(*op, {0}, STORED, 123456));
    EXPECT_EQ(m_parent.deliver(), 0);
    tryAgain(op->state());
    EXPECT_TRUE(storeValue(*op, {1}, STORED, 5));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(current(), withChecksum(withValue(m_text, "[1]\n", STORED, 5)));
    EXPECT_EQ(valueOf(*op, {0}, STORED), 123456);
}

// --- records that are not all in memory ---

TEST_F(StoredValuesTest, AWhiteBalanceRecordIsCompletedFromTheFile) {
    FileFactoryPictureWB op; // in user state, of the first bin
    op.setParent(&m_parent);
    ASSERT_TRUE(op.initFile(true));
    const std::vector<int> otherBin{3, 0, 0, 0, 0};
    ASSERT_TRUE(storeValue(op, otherBin, "RGain", 3)) << "as any category before its first load";
    ASSERT_TRUE(op.loadFile());
    m_parent.deliver();
    const std::string text = m_root.read(Copy::Current, "pic_wb_factory.ini");
    const std::string calibrated = withChecksum(withValue(text, "[30000]\n", "GGain", 44));
    m_root.write(Copy::Current, "pic_wb_factory.ini", calibrated);
    ASSERT_TRUE(op.releaseFile());
    EXPECT_TRUE(storeValue(op, otherBin, "RGain", 5)) << "between release and resume";
    EXPECT_EQ(m_parent.deliver(), 0);
    ASSERT_TRUE(op.loadFile());
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(m_root.read(Copy::Current, "pic_wb_factory.ini"),
              withChecksum(withValue(calibrated, "[30000]\n", "RGain", 5)));
    const auto readBin = [&]() TD_NO_THREAD_SAFETY_ANALYSIS { return op.loadDataFromCurrentFile(3); };
    EXPECT_TRUE(readBin()) << "though the handled store has closed the file";
    EXPECT_EQ(valueOf(op, otherBin, "GGain"), 44);
}

// --- steps from outside and from inside the critical section ---

TEST_F(StoredValuesTest, AStepFromOutsideGivesBackWhatItTook) {
    setCurrent(with(1, 2));
    auto op = makeLoaded();
    ASSERT_TRUE(storeValue(*op, {0}, STORED, OURS));
    const auto events = m_parent.takePosted();
    const std::function<void()> steps[] = {
        [&]() TD_NO_THREAD_SAFETY_ANALYSIS {
            bool fatal = false;
            EXPECT_TRUE(op->loadSummary(NORMAL_LOAD, fatal));
        },
        [&]() TD_NO_THREAD_SAFETY_ANALYSIS { EXPECT_TRUE(op->backupFile(false)); },
        [&]() TD_NO_THREAD_SAFETY_ANALYSIS { EXPECT_TRUE(op->syncSectionToFile(events.front().get())); },
        [&]() TD_NO_THREAD_SAFETY_ANALYSIS { EXPECT_TRUE(op->updateCrcCode()); },
        [&]() TD_NO_THREAD_SAFETY_ANALYSIS { EXPECT_TRUE(op->loadDataFromManufactoryFile({1})); },
        [&]() TD_NO_THREAD_SAFETY_ANALYSIS { Operator::createFileProc(op.get()); },
    };
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        SCOPED_TRACE(i);
        steps[i]();
        FileLock other;
        EXPECT_EQ(other.tryLock(paths::lockFile(STORED_FILE), FileLock::Kind::Exclusive), FileLock::Attempt::Locked);
    }
    EXPECT_TRUE(checksumIsRight(current()));
}

TEST_F(StoredValuesTest, AChecksumIsMadeWithinASectionAndWaitsForAnother) {
    setCurrent(with(1, 2));
    auto op = makeLoaded();
    const std::string path = m_root.path(Copy::Current, STORED_FILE);
    std::string damaged = current();
    damaged[lineAt(damaged, "CRC ") + 30] ^= 1;
    op->enterCriticalSection();
    bool fatal = false;
    EXPECT_TRUE(op->loadSummary(NORMAL_LOAD, fatal)) << "which shares the files";
    setCurrent(damaged);
    EXPECT_TRUE(Operator::generateCRC32(path.c_str()));
    EXPECT_EQ(current(), with(1, 2));
    setCurrent(damaged);
    auto waiting = std::async(std::launch::async, [&] { return Operator::generateCRC32(path.c_str()); });
    op->updateCrcCode(); // whatever it answers: the files are taken
    EXPECT_NE(waiting.wait_for(std::chrono::milliseconds(0)), std::future_status::ready);
    op->leaveCriticalSection();
    EXPECT_TRUE(waiting.get());
    EXPECT_EQ(current(), with(1, 2));
}

// --- a process that keeps the lock of the files ---

TEST_F(StoredValuesTest, ALoadGoesOnWithoutALockThatIsNotToBeHad) {
    struct Case {
        const char* name;
        std::function<std::string()> text;
        const char* inMemory;
    };
    m_root.write(Copy::Backup, STORED_FILE, with(5, 6));
    const Case cases[] = {
        {"a good copy", [&] { return with(1, 2); }, "1,2"},
        {"a damaged copy", [&] { return replaced(with(1, 2), "= 0001", "= 0099"); }, "5,6"},
        {"another version", [&] { return replaced(with(1, 2), "v0.1", "v0.0"); }, "5,6"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const std::string found = one.text();
        setCurrent(found);
        auto op = make();
        FileLock stopped;
        ASSERT_TRUE(stopped.lock(paths::lockFile(STORED_FILE), FileLock::Kind::Exclusive));
        {
            const LoadBudget budget(deadlineIn(20));
            ASSERT_TRUE(op->loadFile());
        }
        EXPECT_EQ(values(*op), one.inMemory);
        EXPECT_TRUE(m_log.contains("keeps the lock of file [" + std::string(STORED_FILE) + "]"));
        op->setBackupReq(true);
        EXPECT_FALSE(op->tryEnterCriticalSection()) << "nor is it backed up";
        EXPECT_TRUE(storeValue(*op, {1}, STORED, OURS));
        EXPECT_EQ(m_parent.deliver(), 0) << "nor does a worker wait";
        tryAgain(op->state());
        EXPECT_EQ(current(), found) << "nothing is written";
        EXPECT_EQ(m_root.read(Copy::Backup, STORED_FILE), with(5, 6));

        stopped.unlock();
        tryAgain(op->state());
        op->waitForMerge();
        m_parent.deliver();
        EXPECT_EQ(valueOf(*op, {1}, STORED), OURS);
        EXPECT_TRUE(checksumIsRight(current()));
        EXPECT_EQ(current(),
                  withChecksum(withValue(one.inMemory == std::string("5,6") && found.find("v0.0") == std::string::npos
                                             ? with(5, 6)
                                             : with(1, 2),
                                         "[1]\n", STORED, OURS)));
        m_root.write(Copy::Backup, STORED_FILE, with(5, 6));
    }
}

TEST_F(StoredValuesTest, WhatCannotBeMovedAwayLeavesTheCategoryInMemory) {
    m_root.write(Copy::Backup, STORED_FILE, with(5, 6));
    hideCurrent();
    const std::filesystem::path directory = SettingsRoot::directory(Copy::Current);
    std::filesystem::create_directory(directory / STORED_FILE);
    auto op = make();
    {
        const ModesHold modes;
        std::filesystem::permissions(directory, std::filesystem::perms(0555));
        EXPECT_TRUE(op->loadFile());
        EXPECT_EQ(values(*op), "5,6");
        EXPECT_TRUE(m_log.contains("served from memory"));
        EXPECT_TRUE(storeValue(*op, {0}, STORED, OURS));
        EXPECT_EQ(m_parent.deliver(), 0);
        m_log.clear();
        tryAgain(op->state());
        tryAgain(op->state());
        EXPECT_EQ(m_log.count("tried again from time to time"), 1U);
        std::filesystem::permissions(directory, std::filesystem::perms(0755));
    }
    tryAgain(op->state());
    m_parent.deliver();
    EXPECT_EQ(current(), with(OURS, 6));
}

TEST_F(StoredValuesTest, ContentsThatMakeNoSenseAreReadOnce) {
    std::string text = with(1, 2);
    text = withChecksum(replaced(text, FIRST_SECTION, "[x]\n"));
    setCurrent(text);
    m_log.clear();
    EXPECT_TRUE(make()->loadFile());
    EXPECT_EQ(m_log.count("load contents from file [" + m_root.path(Copy::Current, STORED_FILE) + "] failed."), 1U);
}

} // namespace
} // namespace td::test
