// How many syncs an operation costs: the flash of a set wears with each.

#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FileCalls.h"
#include "OneCategorySet.h"

namespace td::test {
namespace {

class SyncCounter final : public FileWatcher {
public:
    Verdict asked(FileCall call, const std::string& path) override {
        const bool refused = call == FileCall::Open && !m_refused.empty() && path == m_refused;
        return {refused ? EACCES : 0, false};
    }
    void synced(int) override { ++m_count; }

    int count() const { return m_count; }
    /// Calls that open the file fail from now on. Nothing may be running.
    void refuse(const std::string& path) { m_refused = path; }

private:
    std::atomic<int> m_count{0};
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

    int syncsOf(const std::function<void()>& operation) {
        const int before = m_counter.count();
        operation();
        EXPECT_TRUE(m_set.settle());
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
    EXPECT_EQ(syncsOf([this] { EXPECT_TRUE(store({0, 0, 0}, "Contrast", 9)); }), 0) << "the file cannot be opened";
}

} // namespace
} // namespace td::test
