// What an operation asks of the disk: the flash of a set wears with each sync, and nobody who stores waits for one.

#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FileCalls.h"
#include "fileOperator/OperatorFactory.h"
#include "Gate.h"
#include "OneCategorySet.h"

namespace td::test {
namespace {

class SyncCounter final : public FileWatcher {
public:
    Verdict asked(FileCall call, const std::string& path) override {
        m_reads += call == FileCall::Read ? 1 : 0;
        const bool refused = call == FileCall::Open && !m_refused.empty() && path == m_refused;
        return {refused ? EACCES : 0, false};
    }
    void synced(int) override { ++m_count; }

    int count() const { return m_count; }
    int reads() const { return m_reads; }
    /// Calls that open the file fail from now on. Nothing may be running.
    void refuse(const std::string& path) { m_refused = path; }

private:
    std::atomic<int> m_count{0};
    std::atomic<int> m_reads{0};
    std::string m_refused;
};

/// A set with the picture modes, loaded and stored to once, so that the files of later stores are there.
class SyncCountTest : public testing::Test {
protected:
    SyncCountTest() {
        Tree tree = emptyDirectories();
        const auto file = std::make_shared<const Content>(fileOf(m_shape.layout(), contentsOf(m_shape.layout(), 1)));
        for (const std::string& path : {m_shape.current(), m_shape.backup(), m_shape.factory()})
            tree[path] = file;
        m_root.write(tree);
        EXPECT_TRUE(m_set.boot());
        m_watched = std::make_unique<WatchedFiles>(m_root.path(), m_counter);
        EXPECT_TRUE(m_set.storeRecord(0, 2));
        EXPECT_TRUE(m_set.settle());
    }

    int syncsOf(const std::function<void()>& operation, bool isWritten = true) {
        const int before = m_counter.count();
        operation();
        EXPECT_EQ(m_set.settle(), isWritten);
        return m_counter.count() - before;
    }
    bool store(const std::vector<int>& dims, const char* field, int value) {
        return m_set.storeData(m_shape.category, dims, {{field, value}});
    }

    const Shape m_shape{"picture mode", PICTURE_MODE};
    SyncCounter m_counter;
    MemoryRoot m_root;
    OneCategorySet m_set{m_shape};
    std::unique_ptr<WatchedFiles> m_watched;
};

TEST_F(SyncCountTest, AStoreSyncsItsRecordAndItsSectionWithTheChecksum) {
    EXPECT_EQ(syncsOf([this] { m_set.storeRecord(7, 3); }), 2);
}

TEST_F(SyncCountTest, ACopyToAllSourcesSyncsNoMoreThanOneStore) {
    m_set.storeRecord(7, 3);
    ASSERT_TRUE(m_set.settle());
    const auto copy = [this] { m_set.applySettingForAllSources(m_shape.category, indicesOf(m_shape.layout(), 7)); };
    EXPECT_EQ(syncsOf(copy), 2);
    EXPECT_EQ(syncsOf(copy), 0) << "all are the same by now";
}

TEST_F(SyncCountTest, AStoreThatChangesNothingSyncsNever) {
    EXPECT_EQ(syncsOf([this] { EXPECT_TRUE(m_set.storeRecord(0, 2)); }), 0);
    EXPECT_EQ(syncsOf([this] { EXPECT_TRUE(store({0, 0, 0}, "NoSuchField", 1)); }), 0);
}

TEST_F(SyncCountTest, AStoreThatFailsSyncsNever) {
    EXPECT_EQ(syncsOf([this] { EXPECT_FALSE(store({0, 0}, "Contrast", 9)); }), 0) << "refused";
    EXPECT_EQ(syncsOf([this] { EXPECT_FALSE(store({16, 0, 0}, "Contrast", 9)); }), 0) << "refused";
    m_set.setStoreFileFlag(false);
    EXPECT_EQ(syncsOf([this] { EXPECT_TRUE(store({0, 0, 0}, "Contrast", 9)); }), 0) << "switched off";
    m_set.setStoreFileFlag(true);
    m_counter.refuse(m_shape.current());
    EXPECT_EQ(syncsOf(
                  [this] {
                      EXPECT_TRUE(store({0, 0, 0}, "Contrast", 9));
                  },
                  false),
              0)
        << "the file cannot be opened";
}

// The file has seventy times as many blocks, which its checksum covers.
TEST_F(SyncCountTest, AStoreDoesNotReadTheWholeFile) {
    const int before = m_counter.reads();
    EXPECT_EQ(syncsOf([this] { m_set.storeRecord(9, 3); }), 2);
    EXPECT_LT(m_counter.reads() - before, 10);
}

/// Its first sync lasts until the test lets it go on.
class SlowDisk final : public FileWatcher {
public:
    Verdict asked(FileCall call, const std::string&) override {
        if (call == FileCall::Sync) {
            isSyncing.open();
            mayGoOn.pass();
        }
        return {};
    }
    Gate isSyncing;
    Gate mayGoOn;
};

class TwoCategorySet final : public FileDataSeparateManager {
public:
    ~TwoCategorySet() override { stop(); }

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        return category == SOUND_MODE || category == PICTURE_XVYCC ? createOperator(category) : nullptr;
    }
};

TEST(StoreTest, WaitsForNoSyncOfAnotherFileNorOfItsOwnQueue) {
    const MemoryRoot root;
    root.write(emptyDirectories());
    SlowDisk disk;
    TwoCategorySet set;
    ASSERT_TRUE(set.init(DS_SCOPE_ALL));
    ASSERT_TRUE(set.initAllData());
    set.loadAllData();
    const std::vector<int> first = indicesOf(*layoutOf(PICTURE_XVYCC), 0);
    const std::vector<int> second = indicesOf(*layoutOf(SOUND_MODE), 0);
    const char* const field = layoutOf(SOUND_MODE)->fields[0].argumentName();
    std::vector<_Argument_t> read{{field, 0}};
    ASSERT_TRUE(set.loadData(SOUND_MODE, second, read));
    const int stored = read[0].value + 1;
    {
        const WatchedFiles watched(root.path(), disk);
        ASSERT_TRUE(set.storeData(PICTURE_XVYCC, first, {{layoutOf(PICTURE_XVYCC)->fields[0].argumentName(), 1}}));
        disk.isSyncing.pass();
        // These would wait for ever.
        EXPECT_TRUE(set.storeData(SOUND_MODE, second, {{field, stored}}));
        EXPECT_TRUE(set.loadData(SOUND_MODE, second, read));
        EXPECT_EQ(read[0].value, stored);
        disk.mayGoOn.open();
        EXPECT_TRUE(set.waitStored(60000));
    }
}

} // namespace
} // namespace td::test
