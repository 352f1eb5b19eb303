// A set's life across restarts: the whole library on real files.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/common/Thread.h>
#include <dataModule/FileDataSeparateManager.h>

#include "fileOperator/file/RedoRecord.h"
#include "fileOperator/OperatorFactory.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr int STORE_MILLISECONDS = 60000;
constexpr const char* GLOBAL_FILE = "pic_global_usr.ini";
constexpr const char* MODE_FILE = "pic_mode_usr.ini";
const std::vector<int> STORED_DIMS{3, 10, 7};
constexpr const char* SECTION = "[3a7]\n";

/// A set with the two categories that these tests are about; one object is one life of the process.
class SmallSet final : public FileDataSeparateManager {
public:
    SmallSet() { setTvType("TVTYPE01"); }
    ~SmallSet() override { stop(); }

    /// Boots from the files that are there.
    static std::unique_ptr<SmallSet> boot() {
        auto set = std::make_unique<SmallSet>();
        EXPECT_TRUE(set->init(DS_SCOPE_ALL));
        EXPECT_FALSE(set->loadAllData()) << "not loaded before";
        return set;
    }
    bool waitWritten() { return waitStored(STORE_MILLISECONDS); }

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        return category == PICTURE_GLOBAL || category == PICTURE_MODE ? createOperator(category) : nullptr;
    }
};

int valueIn(IDataSeparateManager& set, _DataCategory_t category, const std::vector<int>& dims, const char* name) {
    std::vector<_Argument_t> args{{name, -12345}};
    return set.loadData(category, dims, args) ? args.front().value : -12345;
}

class SetsLifeTest : public testing::Test {
protected:
    /// The factory's files, and nothing else: a set that never ran.
    void leaveTheFactory() {
        SmallSet factory;
        ASSERT_TRUE(factory.init(DS_SCOPE_ALL));
        ASSERT_TRUE(factory.initAllData());
        for (const char* file : {GLOBAL_FILE, MODE_FILE}) {
            m_root.remove(Copy::Current, file);
            m_root.remove(Copy::Backup, file);
        }
    }
    /// The set after its first boot.
    std::unique_ptr<SmallSet> firstBoot() {
        leaveTheFactory();
        EXPECT_TRUE(SmallSet().initCurrentFromManufactory());
        return SmallSet::boot();
    }
    std::string current(const char* file) const { return m_root.read(Copy::Current, file); }
    std::string backup(const char* file) const { return m_root.read(Copy::Backup, file); }

    SettingsRoot m_root;
    LogCapture m_log;
};

TEST_F(SetsLifeTest, TheWholeSetBootsStoresAndRemembers) {
    // The factory makes the files of every category where the model's index file says.
    FileDataSeparateManager* set = FileDataSeparateManager::instance();
    ASSERT_TRUE(set->init(DS_SCOPE_ALL));
    ASSERT_TRUE(set->initAllData());
    FileDataSeparateManager::release();
    const std::string model = underRootPrefix("/ovdata/model/tv55/manufactory/");
    std::filesystem::create_directories(std::filesystem::path(model).parent_path().parent_path());
    std::filesystem::rename(SettingsRoot::directory(Copy::Factory), model);
    m_root.write(Copy::Factory, "../../config/ov_characteristic_index.ini", "[ModuleData]\nPath = tv55\n");
    for (const Copy copy : {Copy::Current, Copy::Backup})
        std::filesystem::remove_all(SettingsRoot::directory(copy));

    // First boot.
    set = FileDataSeparateManager::instance();
    EXPECT_TRUE(set->loadManufactoryPath());
    EXPECT_TRUE(set->initCurrentFromManufactory());
    ASSERT_TRUE(set->init(DS_SCOPE_ALL));
    EXPECT_FALSE(set->loadAllData());
    EXPECT_TRUE(set->loadAllData());
    EXPECT_EQ(valueIn(*set, PICTURE_MODE, STORED_DIMS, "Contrast"), 50);
    EXPECT_TRUE(set->storeData(PICTURE_MODE, STORED_DIMS, {{"Contrast", 77}, {"Hue", -5}}));
    EXPECT_TRUE(set->storeData(PICTURE_GLOBAL, {}, {{"FpsSwitch", 1}}));
    EXPECT_TRUE(set->waitStored(STORE_MILLISECONDS));
    _ThreadStaticInfo_t worker = {};
    set->getWorkerStatistics(worker);
    EXPECT_EQ(worker.succeeded, 2U);
    EXPECT_EQ(worker.failed, 0U);
    FileDataSeparateManager::release();

    // Restart.
    set = FileDataSeparateManager::instance();
    ASSERT_TRUE(set->init(DS_SCOPE_ALL));
    m_log.clear();
    EXPECT_FALSE(set->loadAllData());
    for (const CategoryLayout* layout : allLayouts())
        EXPECT_FALSE(m_log.contains(" load file [" + std::string(layout->file) + "] failed.\n"));
    EXPECT_EQ(valueIn(*set, PICTURE_MODE, STORED_DIMS, "Contrast"), 77);
    EXPECT_EQ(valueIn(*set, PICTURE_MODE, STORED_DIMS, "Hue"), -5);
    EXPECT_EQ(valueIn(*set, PICTURE_GLOBAL, {}, "FpsSwitch"), 1);
    FileDataSeparateManager::release();
    for (const CategoryLayout* layout : allLayouts())
        EXPECT_TRUE(checksumIsRight(current(layout->file))) << layout->file;
}

TEST_F(SetsLifeTest, AStopRightAfterAnUpdateLosesNothing) {
    auto set = firstBoot();
    EXPECT_TRUE(set->storeData(PICTURE_MODE, STORED_DIMS, {{"Hue", 5}}));
    EXPECT_TRUE(set->waitWritten());
    set.reset();
    const std::string good = current(MODE_FILE);
    m_root.write(Copy::Current, MODE_FILE, replaced(good, "v0.4", "v0.3"));
    SmallSet::boot().reset();
    EXPECT_TRUE(current(MODE_FILE) == good);
    EXPECT_TRUE(backup(MODE_FILE) == good);
}

TEST_F(SetsLifeTest, AFactoryResetIsCompleteAndLasting) {
    auto set = firstBoot();
    const std::string factory = m_root.read(Copy::Factory, MODE_FILE);
    for (int value = 1; value <= 5; ++value)
        EXPECT_TRUE(set->storeData(PICTURE_MODE, STORED_DIMS, {{"Hue", value}})); // some are still queued at the reset
    EXPECT_TRUE(set->refreshDataFromManufactory(PICTURE_MODE));
    EXPECT_EQ(valueIn(*set, PICTURE_MODE, STORED_DIMS, "Hue"), 0);
    EXPECT_TRUE(set->waitWritten());
    EXPECT_TRUE(current(MODE_FILE) == factory);
    EXPECT_TRUE(set->storeData(PICTURE_MODE, STORED_DIMS, {{"Hue", 7}}));
    EXPECT_TRUE(set->waitWritten());
    EXPECT_TRUE(set->backupData());
    EXPECT_TRUE(backup(MODE_FILE) == withChecksum(withValue(factory, SECTION, "Hue", 7)));
    set.reset();

    EXPECT_TRUE(SmallSet().initCurrentFromManufactory());
    set = SmallSet::boot();
    EXPECT_EQ(valueIn(*set, PICTURE_MODE, STORED_DIMS, "Hue"), 0);

    // A store that failed before does not come after it.
    m_root.remove(Copy::Current, MODE_FILE);
    EXPECT_TRUE(set->storeData(PICTURE_MODE, STORED_DIMS, {{"Hue", 9}}));
    EXPECT_FALSE(set->waitWritten());
    EXPECT_TRUE(set->initCurrentFromManufactory());
    set->retryFailedStores();
    EXPECT_TRUE(set->storeData(PICTURE_MODE, {0, 0, 0}, {{"Hue", 1}}));
    EXPECT_TRUE(set->waitWritten());
    EXPECT_TRUE(current(MODE_FILE) == withChecksum(withValue(factory, "[000]\n", "Hue", 1)));
}

/// Without a good factory copy to put in its place nothing of a category's goes, nor what a cut store has still to
/// write.
TEST_F(SetsLifeTest, AResetLeavesACategoryWithoutAFactoryCopyItsCutStore) {
    firstBoot().reset();
    const std::string before = current(MODE_FILE);
    const std::string after = withChecksum(withValue(before, SECTION, "Hue", 5));
    const std::size_t line = before.find("Hue", before.find(SECTION));
    RedoRecord record;
    record.contentPosition = static_cast<int>(contentAt(before));
    record.crcPosition = static_cast<int>(lineAt(before, "CRC "));
    record.crc = checksum(after.substr(contentAt(after)));
    record.writes = {{static_cast<int>(line), after.substr(line, 32)}};
    m_root.write(Copy::Current, std::string(MODE_FILE) + ".redo", redoText(record));
    m_root.write(Copy::Current, MODE_FILE, withValue(before, SECTION, "Hue", 5)); // the checksum is to follow
    m_root.write(Copy::Factory, MODE_FILE, "damaged");
    m_root.remove(Copy::Backup, MODE_FILE);
    EXPECT_TRUE(SmallSet().initCurrentFromManufactory());
    EXPECT_EQ(valueIn(*SmallSet::boot(), PICTURE_MODE, STORED_DIMS, "Hue"), 5);
    EXPECT_TRUE(current(MODE_FILE) == after);
}

} // namespace
} // namespace td::test
