// What waitStored() answers, on real files with the real worker: true is said of what is on the disk, and of that only.

#include <chrono>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>

#include "common/FileLock.h"
#include "common/SystemPaths.h"
#include "fileOperator/CategoryLayout.h"
#include "fileOperator/OperatorFactory.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr int LONG = 60000; ///< milliseconds
constexpr const char* TUNER_FILE = "pic_color_tuner_usr.ini";
const std::vector<int> TUNER_DIMS{1, 2, 3, 4};

/// A life of a process with a few categories, or all.
class Life final : public FileDataSeparateManager {
public:
    explicit Life(std::set<_DataCategory_t> categories) : m_categories(std::move(categories)) { start(); }
    Life() { start(); }
    ~Life() override { stop(); }

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        return m_categories.empty() || m_categories.count(category) != 0 ? createOperator(category) : nullptr;
    }

private:
    void start() {
        setTvType("TVTYPE01");
        EXPECT_TRUE(init(DS_SCOPE_ALL));
    }
    const std::set<_DataCategory_t> m_categories;
};

class WaitStoredTest : public testing::Test {
protected:
    WaitStoredTest() { EXPECT_TRUE(Life({PICTURE_COLOR_TUNER, PICTURE_GLOBAL}).initAllData()); }

    static std::unique_ptr<Life> loaded() {
        auto life = std::make_unique<Life>(std::set<_DataCategory_t>{PICTURE_COLOR_TUNER, PICTURE_GLOBAL});
        life->loadAllData();
        return life;
    }
    static bool store(Life& life, int value) {
        return life.storeData(PICTURE_COLOR_TUNER, TUNER_DIMS, {{"Hue", value}});
    }
    std::string tuner() const { return m_root.read(Copy::Current, TUNER_FILE); }

    SettingsRoot m_root;
};

TEST_F(WaitStoredTest, DuringAMergeItWaitsForTheMergedFile) {
    const std::string good = tuner();
    for (int round = 1; round <= 5; ++round) {
        m_root.write(Copy::Current, TUNER_FILE, replaced(good, "v0.2", "v0.1"));
        const auto life = loaded();
        ASSERT_TRUE(store(*life, round));
        ASSERT_TRUE(life->waitStored(LONG));
        ASSERT_EQ(tuner(), withChecksum(withValue(good, "[1234]\n", "Hue", round)));
    }
}

TEST_F(WaitStoredTest, OfAFailedStoreItIsFalseAtOnceUntilThatIsWrittenOrDropped) {
    const std::string good = tuner();
    const auto life = loaded();
    m_root.remove(Copy::Current, TUNER_FILE);
    ASSERT_TRUE(store(*life, 5));
    EXPECT_FALSE(life->waitStored(LONG));
    m_root.write(Copy::Current, TUNER_FILE, good);
    life->retryFailedStores();
    EXPECT_TRUE(life->waitStored(0));
    EXPECT_EQ(tuner(), withChecksum(withValue(good, "[1234]\n", "Hue", 5)));

    m_root.remove(Copy::Current, TUNER_FILE);
    ASSERT_TRUE(store(*life, 6));
    EXPECT_FALSE(life->waitStored(LONG));
    EXPECT_TRUE(life->setStoreFileFlag(false));
    EXPECT_TRUE(life->waitStored(0)) << "dropped by a call that says so";
}

TEST_F(WaitStoredTest, StopDropsWhatWaitsForAStoppedProcess) {
    const auto life = loaded();
    FileLock stopped; // as another process's
    ASSERT_TRUE(stopped.lock(paths::lockFile(TUNER_FILE), FileLock::Kind::Exclusive));
    ASSERT_TRUE(store(*life, 5));
    ASSERT_TRUE(life->storeData(PICTURE_GLOBAL, {}, {{"RGBOnly", 6}})) << "queued behind it";
    EXPECT_FALSE(life->waitStored(0));
    auto waiter = std::async(std::launch::async, [&] { return life->waitStored(LONG); });
    EXPECT_TRUE(life->stop()) << "without the lock";
    EXPECT_EQ(waiter.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    EXPECT_TRUE(life->waitStored(0)) << "nothing is outstanding any more";
}

TEST(StoresBeforeTheLoad, LeaveEveryOtherValueAsTheFileHasIt) {
    const SettingsRoot root;
    const auto eachField = [](const auto& what) {
        for (const CategoryLayout* layout : allLayouts()) {
            const std::vector<int> first(layout->dimensions.size());
            for (const Field& field : layout->fields)
                what(*layout, first, field);
        }
    };
    {
        Life first;
        EXPECT_TRUE(first.initAllData());
        first.loadAllData();
        eachField([&](const CategoryLayout& layout, const std::vector<int>& dims, const Field& field) {
            first.storeData(layout.category, dims, {{field.argumentName(), 7}});
        });
        ASSERT_TRUE(first.waitStored(LONG));
    }
    Life second;
    for (const CategoryLayout* layout : allLayouts())
        EXPECT_TRUE(second.storeData(layout->category, std::vector<int>(layout->dimensions.size()),
                                     {{layout->fields.front().argumentName(), 5}}))
            << layout->file;
    second.loadAllData();
    const auto expectFirst = [&] {
        eachField([&](const CategoryLayout& layout, const std::vector<int>& dims, const Field& field) {
            IFileOperator* const op = second.getFileOperator(layout.category);
            EXPECT_EQ(valueOf(*op, dims, field.argumentName()), 7) << layout.file << " " << field.key;
        });
    };
    expectFirst();
    EXPECT_TRUE(second.waitStored(LONG));
    second.resetForLoadAllData(VIDEO);
    second.resetForLoadAllData(SOUND);
    second.loadAllData();
    expectFirst();
}

} // namespace
} // namespace td::test
