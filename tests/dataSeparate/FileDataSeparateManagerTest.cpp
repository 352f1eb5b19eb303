// The manager on operators without files, and on a root of its own for the factory directory.

#include <array>
#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/Event.h>
#include <dataModule/common/Thread.h>
#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/platform/RootPrefix.h>

#include "FakeOperator.h"
#include "Gate.h"
#include "LogCapture.h"
#include "TemporaryDirectory.h"

namespace td::test {
namespace {

constexpr int PATIENCE_MILLISECONDS = 60000;

/// A manager whose init() makes fake operators. They stay readable here until the manager deletes them.
class FakeManager final : public FileDataSeparateManager {
public:
    FakeManager() { setListening(false); }
    ~FakeManager() override { stop(); }

    using FileDataSeparateManager::registerOperator;

    FakeOperator& add(_DataCategory_t category) {
        auto* const op = new FakeOperator(category);
        op->countDestruction(destroyed);
        op->setBackupReq(false);
        made.push_back(category);
        fakes[category] = op;
        registerOperator(op);
        return *op;
    }
    FakeOperator& operator[](_DataCategory_t category) { return *fakes.at(category); }

    std::vector<int> made; ///< categories in the order of making
    std::map<int, FakeOperator*> fakes;
    std::set<int> without; ///< categories that have no operator
    std::atomic<int> destroyed{0};

protected:
    IFileOperator* makeOperator(_DataCategory_t category) override {
        if (without.count(category) != 0)
            return nullptr;
        auto* const op = new FakeOperator(category);
        op->countDestruction(destroyed);
        made.push_back(category);
        fakes[category] = op;
        return op;
    }
};

class ManagerTest : public testing::Test {
protected:
    FakeManager m_manager;
    LogCapture m_log;
};

// --- texts and accessors ---

TEST_F(ManagerTest, TypesFollowTheRangesOfValues) {
    const std::set<int> sound{16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 34};
    const std::set<int> neither{48, 49, 50, 51};
    for (int value = 0; value < CATEGORY_COUNT; ++value) {
        FakeOperator op(static_cast<_DataCategory_t>(value));
        EXPECT_EQ(m_manager.belongTo(&op, SOUND), sound.count(value) == 1) << value;
        EXPECT_EQ(m_manager.belongTo(&op, VIDEO), sound.count(value) + neither.count(value) == 0) << value;
        EXPECT_FALSE(m_manager.belongTo(&op, static_cast<_DS_Type_t>(0)));
    }
    EXPECT_FALSE(m_manager.belongTo(nullptr, VIDEO));
}

TEST_F(ManagerTest, ATelevisionsTypeIsOneLine) {
    const std::pair<const char*, const char*> types[] = {
        {"TV55", "TV55"}, {"TV\n55", "TV"}, {"\x1b[31m", ""}, {"sixteen letters!", "sixteen letters"}};
    for (const auto& [given, kept] : types) {
        EXPECT_TRUE(m_manager.setTvType(given));
        EXPECT_STREQ(m_manager.getTvType(), kept);
    }
    EXPECT_FALSE(m_manager.setTvType(nullptr));
    const char* const before = m_manager.getTvType();
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(m_manager.setTvType("OTHER\n1"));
        EXPECT_STREQ(m_manager.getTvType(), "OTHER");
        EXPECT_STREQ(before, "sixteen letters") << "whoever has the text may go on reading it";
        EXPECT_TRUE(m_manager.setTvType(before));
        EXPECT_EQ(m_manager.getTvType(), before) << "one of each is kept";
    }
}

// --- registration ---

TEST_F(ManagerTest, RegistersTheFullListForEveryOtherScope) {
    ASSERT_TRUE(m_manager.init(static_cast<_DS_Scope_t>(7)));
    EXPECT_EQ(m_manager.made, (std::vector<int>{2,  31, 3,  8,  0,  9,  5,  4,  48, 1,  6,  7,  10, 26, 19, 25, 17, 23,
                                                24, 18, 20, 21, 22, 16, 11, 12, 13, 14, 15, 27, 28, 29, 30, 32, 33, 34,
                                                35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 49, 50, 51}));
    for (int value = 0; value < CATEGORY_COUNT; ++value)
        EXPECT_NE(m_manager.getFileOperator(static_cast<_DataCategory_t>(value)), nullptr) << value;

    EXPECT_TRUE(m_manager.init(DS_SCOPE_ALL));
    EXPECT_TRUE(m_log.contains(" FileDataSeparateManager has already inited !\n"));
    EXPECT_EQ(m_manager.made.size(), 52U);
}

TEST_F(ManagerTest, RegistersTheBusinessList) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_BIZ));
    EXPECT_EQ(m_manager.made, (std::vector<int>{2,  31, 3,  8,  0,  9,  33, 5,  4,  1,  6,  7,  10, 27, 28,
                                                29, 30, 26, 19, 25, 17, 23, 24, 18, 20, 21, 22, 16, 34, 35,
                                                36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 49, 50}));
}

TEST_F(ManagerTest, RegistersTheGeometryListAndRefusesTheRest) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));
    EXPECT_EQ(m_manager.made, (std::vector<int>{11, 12, 13, 14, 15}));
    std::vector<_Argument_t> args{{"Contrast", 5}};
    EXPECT_FALSE(m_manager.loadData(PICTURE_MODE, {}, args));
    EXPECT_EQ(args.front().value, 5);
    EXPECT_EQ(m_log.count("find file operator failed for [PICTURE_MODE]. \n"), 2U);
    EXPECT_EQ(m_log.count("getFileOperator(): [dataModule] find file operator failed"), 1U);
    EXPECT_EQ(m_log.count("loadData(): [dataModule] find file operator failed"), 1U);
}

TEST_F(ManagerTest, PassesOverCategoriesWithoutOperatorAndDeletesASecondOne) {
    m_manager.without = {PICTURE_FACTORY_ASPECT};
    FakeOperator& first = m_manager.add(PICTURE_FACTORY_SCALING);
    m_manager.add(PICTURE_FACTORY_SCALING);
    EXPECT_EQ(m_manager.destroyed, 1);
    m_manager.made.clear();
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));
    EXPECT_EQ(m_manager.made, (std::vector<int>{11, 14, 15}));
    EXPECT_EQ(m_manager.getFileOperator(PICTURE_FACTORY_SCALING), &first);
    EXPECT_EQ(m_manager.getFileOperator(PICTURE_FACTORY_ASPECT), nullptr);
}

TEST_F(ManagerTest, AFailedInitLeavesNoOperatorBehind) {
    m_manager.stop(); // a stopped worker does not start
    for (int round = 1; round <= 2; ++round) {
        EXPECT_FALSE(m_manager.init(DS_SCOPE_DVBMAIN));
        EXPECT_EQ(m_manager.destroyed, 5 * round);
        EXPECT_EQ(m_manager.getFileOperator(PICTURE_FACTORY_SCALING), nullptr);
    }
    EXPECT_EQ(m_log.count(" FileDataSeparateManager start work thread failed.\n"), 2U);
}

TEST_F(ManagerTest, InitMakesTheChecksumReady) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));
    unsigned int crc = 0;
    EXPECT_TRUE(CRC32Util::instance()->calc_file_crc("/dev/null", 0, crc));
}

// --- routing ---

TEST_F(ManagerTest, RoutesEveryRequestToItsOperation) {
    FakeOperator& op = m_manager.add(PICTURE_MODE);
    std::vector<_Argument_t> args;
    GroupArray group = {};
    static SelfDefinedGroupArray wide = {};
    const std::vector<std::pair<std::function<bool()>, std::string>> requests{
        {[&] { return m_manager.loadData(PICTURE_MODE, {}, args); }, "loadData"},
        {[&] { return m_manager.storeData(PICTURE_MODE, {}, args); }, "storeData"},
        {[&] { return m_manager.initData(PICTURE_MODE); }, "initFile(true)"},
        {[&] { return m_manager.loadData(PICTURE_MODE); }, "loadFile"},
        {[&] { return m_manager.loadData(PICTURE_MODE, "/x"); }, "loadFile(path)"},
        {[&] { return m_manager.removeDataFile(PICTURE_MODE); }, "removeFile"},
        {[&] { return m_manager.restoreSetting(PICTURE_MODE, {}); }, "restoreSetting"},
        {[&] { return m_manager.restoreSettingForAllSource(PICTURE_MODE, {}); }, "restoreSettingForAllSource"},
        {[&] { return m_manager.restoreSettingFromCurrent(PICTURE_MODE, {}); }, "restoreSettingFromCurrent"},
        {[&] { return m_manager.refreshDataFromManufactory(PICTURE_MODE); }, "resetCurrentFileFromManufactoryFile"},
        {[&] { return m_manager.refreshDataFromCurrent(PICTURE_MODE); }, "refreshDataFromCurrent"},
        {[&] { return m_manager.applySettingForAllSources(PICTURE_MODE, {}); }, "applySettingForAllSources"},
        {[&] { return m_manager.applySettingForAllMode(PICTURE_MODE, {}); }, "applySettingForAllMode"},
        {[&] { return m_manager.loadDataForGroup(PICTURE_MODE, {}, {}, group); }, "loadDataForGroup"},
        {[&] { return m_manager.storeDataForGroup(PICTURE_MODE, {}, {}, {}, group); }, "storeDataForGroup"},
        {[&] { return m_manager.loadDataForSelfDefinedGroup(PICTURE_MODE, {}, {}, wide); },
         "loadDataForSelfDefinedGroup"},
        {[&] { return m_manager.storeDataForSelfDefinedGroup(PICTURE_MODE, {}, {}, wide); },
         "storeDataForSelfDefinedGroup"},
    };
    for (const auto& [request, operation] : requests) {
        EXPECT_TRUE(request()) << operation;
        EXPECT_EQ(op.count(operation), 1) << operation;
    }
    EXPECT_EQ(m_manager.getFileHandler(PICTURE_MODE), stdout);

    for (const auto& [request, operation] : requests)
        op.fail(operation);
    for (const auto& [request, operation] : requests)
        EXPECT_FALSE(request()) << operation << ": a failure is passed on";

    for (const auto& [request, operation] : requests)
        op.on(operation, []() -> bool { throw std::runtime_error("broken"); });
    for (const auto& [request, operation] : requests)
        EXPECT_FALSE(request()) << operation << ": nothing is thrown at a client";
    EXPECT_TRUE(m_log.contains("restoreSetting(): [dataModule] unexpected exception: broken\n"));
}

TEST_F(ManagerTest, RefreshIgnoresTheFirstResult) {
    FakeOperator& op = m_manager.add(PICTURE_MODE);
    op.fail("refreshDataFromManufactory");
    EXPECT_TRUE(m_manager.refreshDataFromManufactory(PICTURE_MODE));
    EXPECT_EQ(op.calls(), (std::vector<std::string>{"setBackupReq(false)", "refreshDataFromManufactory",
                                                    "resetCurrentFileFromManufactoryFile"}));
}

TEST_F(ManagerTest, AReloadReleasesFirstAndNamesTheFileThatFails) {
    FakeOperator& op = m_manager.add(PICTURE_MODE);
    bool released = false;
    op.on("releaseFile", [&] { return released = true; });
    op.on("loadFile", [&] { return !released; });
    EXPECT_FALSE(m_manager.loadData(PICTURE_MODE));
    EXPECT_EQ(m_log.count("loadData(): [dataModule]  DataModule load data file [2.ini] failed.\n"), 1U);

    EXPECT_TRUE(m_manager.loadData(PICTURE_MODE, "/x/other.ini"));
    EXPECT_TRUE(m_log.contains(" @@@@@@ load data file [2.ini] successfully.\n"));
    op.fail("loadFile(path)");
    EXPECT_FALSE(m_manager.loadData(PICTURE_MODE, "/x/other.ini"));
    EXPECT_TRUE(m_log.contains(" ###### load data file [2.ini] failed.\n"));
}

TEST_F(ManagerTest, AnApplyFlagIsSetOnlyAtOne) {
    FakeOperator& op = m_manager.add(PICTURE_GLOBAL);
    op.setValue("ApplyModeToSource", 2);
    EXPECT_FALSE(m_manager.getApplySettingFlag(PICTURE_GLOBAL, "ApplyModeToSource"));
    EXPECT_TRUE(m_log.contains("Apply Setting Flag value is [2] \n"));
    EXPECT_FALSE(m_manager.restoreApplySettingFlag(PICTURE_GLOBAL, "ApplyModeToSource"));
    EXPECT_EQ(op.count("storeData"), 0);

    op.setValue("ApplyModeToSource", 1);
    EXPECT_TRUE(m_manager.getApplySettingFlag(PICTURE_GLOBAL, "ApplyModeToSource"));
    EXPECT_TRUE(m_manager.restoreApplySettingFlag(PICTURE_GLOBAL, "ApplyModeToSource"));
    EXPECT_EQ(op.value("ApplyModeToSource"), 0);
    EXPECT_TRUE(m_log.contains("Restore Apply Setting Flag value [ApplyModeToSource] successfully \n"));
}

TEST_F(ManagerTest, ApplyFlagFailuresAreReported) {
    EXPECT_FALSE(m_manager.getApplySettingFlag(PICTURE_GLOBAL, "ApplyModeToSource"));
    EXPECT_EQ(m_log.count("Load apply setting for all Sources/Mode failed.\n"), 1U);

    FakeOperator& op = m_manager.add(PICTURE_GLOBAL);
    op.setValue("ApplyModeToSource", 1);
    op.fail("storeData");
    EXPECT_FALSE(m_manager.restoreApplySettingFlag(PICTURE_GLOBAL, "ApplyModeToSource"));
    EXPECT_TRUE(m_log.contains("Store Apply Setting flag For All Sources/Mode failed.\n"));
}

// --- all files ---

TEST_F(ManagerTest, LoadsEveryFileOnceAndAnswersTheFlagAsItWas) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_ALL));
    for (auto& [category, op] : m_manager.fakes)
        op->dataSize = 10;
    m_manager[SOUND_MODE].fail("loadFile");
    m_manager[SOUND_EQ].on("loadFile", []() -> bool { throw std::runtime_error("broken"); });

    EXPECT_FALSE(m_manager.loadAllData()) << "as it was before";
    EXPECT_TRUE(m_manager.loadAllData());
    for (auto& [category, op] : m_manager.fakes) {
        EXPECT_EQ(op->count("loadFile"), 1) << category;
        EXPECT_TRUE(op->getBackupReq()) << category;
        EXPECT_EQ(m_log.count(" load file [" + op->fileName() + "] and consume time "), 1U);
    }
    EXPECT_EQ(m_log.count("load file [17.ini] failed.\n"), 1U);
    EXPECT_EQ(m_log.count("load file [18.ini] failed.\n"), 1U);
    EXPECT_EQ(m_log.count("] failed.\n"), 2U);
    EXPECT_TRUE(m_log.contains("start to load data file successfully, cache data size = 520.@@@@@\n"));
    EXPECT_EQ(m_log.count(" FileDataSeparateManager has already load all data. !\n"), 1U);
}

TEST_F(ManagerTest, LoadsEightFilesAtATime) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_ALL));
    std::atomic<int> inside{0};
    Gate eight;
    for (auto& [category, op] : m_manager.fakes) {
        op->on("loadFile", [&] {
            if (++inside == 8)
                eight.open();
            eight.pass();
            return true;
        });
    }
    EXPECT_FALSE(m_manager.loadAllData());
    EXPECT_EQ(inside, CATEGORY_COUNT);
}

TEST_F(ManagerTest, ATypedLoadPassesOverTheCategoriesWithoutType) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_ALL));
    std::vector<int> loaded;
    for (auto& [category, op] : m_manager.fakes) {
        op->on("loadFile", [&loaded, value = category] {
            loaded.push_back(value);
            return true;
        });
    }
    EXPECT_TRUE(m_manager.loadAllData(SOUND));
    EXPECT_EQ(loaded, (std::vector<int>{16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 34}));
    EXPECT_TRUE(m_manager[SOUND_MODE].getBackupReq());
    EXPECT_FALSE(m_manager[PICTURE_MODE].getBackupReq());

    loaded.clear();
    EXPECT_TRUE(m_manager.loadAllData(VIDEO));
    EXPECT_EQ(loaded.size(), 36U);
    EXPECT_EQ(loaded.back(), 47);
    EXPECT_FALSE(m_manager.loadAllData(static_cast<_DS_Type_t>(0))) << "nothing belongs to it";
    EXPECT_TRUE(m_log.contains("start to load data file for [UNKNOWN type]... @@@@@ \n"));
}

TEST_F(ManagerTest, OneFailedFileFailsATypedLoadAndTheOthersAreLoaded) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));
    m_manager[PICTURE_FACTORY_OVERSCAN].fail("loadFile");
    EXPECT_FALSE(m_manager.loadAllData(VIDEO));
    EXPECT_EQ(m_manager[PICTURE_FACTORY_SCALING_PIP_POS].count("loadFile"), 1);
    EXPECT_FALSE(m_manager.loadAllData(SOUND)) << "none is registered";
    EXPECT_FALSE(m_manager.loadAllData()) << "a typed load does not count as loading all";
}

TEST_F(ManagerTest, AResetMakesTheTypeLoadableAgain) {
    EXPECT_FALSE(m_manager.loadAllData()) << "before init() nothing is loaded, and nothing counts as loaded";
    ASSERT_TRUE(m_manager.init(DS_SCOPE_ALL));
    EXPECT_FALSE(m_manager.loadAllData());
    EXPECT_TRUE(m_manager.loadAllData(SOUND)) << "everything is loaded";
    EXPECT_EQ(m_manager[SOUND_MODE].count("loadFile"), 1);

    EXPECT_TRUE(m_manager.resetForLoadAllData(SOUND));
    EXPECT_EQ(m_manager[SOUND_MODE].count("resetForLoadFile"), 1);
    EXPECT_EQ(m_manager[PICTURE_MODE].count("resetForLoadFile"), 0);
    EXPECT_TRUE(m_manager.loadAllData(SOUND));
    EXPECT_EQ(m_manager[SOUND_MODE].count("loadFile"), 2);
}

TEST_F(ManagerTest, AResetAmidALoadOfAllComesAfterIt) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_ALL));
    std::thread client;
    m_manager[PICTURE_MODE].on("loadFile", [&] {
        client = std::thread([&] { m_manager.resetForLoadAllData(SOUND); });
        for (int i = 0; i < 1000; ++i)
            std::this_thread::yield(); // gives a reset that does not wait every chance to be first
        return true;
    });
    m_manager.loadAllData();
    client.join();
    m_manager[PICTURE_MODE].on("loadFile", [] { return true; });
    EXPECT_FALSE(m_manager.loadAllData()) << "what was reset has to be loaded";
    EXPECT_EQ(m_manager[SOUND_MODE].count("loadFile"), 2);
}

TEST_F(ManagerTest, WalksOverAllFilesReturnTheLastResult) {
    struct Walk {
        bool (FileDataSeparateManager::*run)();
        const char* operation;
        const char* failure;
    };
    const std::array<Walk, 3> walks{{
        {&FileDataSeparateManager::initAllData, "initFile(true)", " init file [11.ini] failed.\n"},
        {&FileDataSeparateManager::releaseFileSources, "releaseFile", " release file [11.ini] failed.\n"},
        {&FileDataSeparateManager::resumeFileSources, "reloadFile", " reload file [11.ini] failed.\n"},
    }};
    for (const Walk& walk : walks)
        EXPECT_FALSE((m_manager.*walk.run)()) << walk.operation << ": none is registered";
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));
    for (const Walk& walk : walks) {
        m_manager[PICTURE_FACTORY_OVERSCAN].fail(walk.operation);
        EXPECT_TRUE((m_manager.*walk.run)()) << walk.operation << ": the last one succeeded";
        EXPECT_EQ(m_log.count(walk.failure), 1U);
        m_manager[PICTURE_FACTORY_SCALING_PIP_POS].fail(walk.operation);
        EXPECT_FALSE((m_manager.*walk.run)()) << walk.operation;
    }
}

// --- worker ---

TEST_F(ManagerTest, ABackupLeavesABusyOperatorItsRequest) {
    FakeOperator& asked = m_manager.add(PICTURE_MODE);
    FakeOperator& busy = m_manager.add(PICTURE_GLOBAL);
    FakeOperator& content = m_manager.add(SOUND_MODE);
    asked.setBackupReq(true);
    asked.fail("backupFile(false)");
    busy.setBackupReq(true);
    Gate entered;
    Gate leave;
    std::thread user([&] {
        busy.enterCriticalSection();
        entered.open();
        leave.pass();
        busy.leaveCriticalSection();
    });
    entered.pass();

    EXPECT_TRUE(m_manager.backupData());
    EXPECT_EQ(asked.count("backupFile(false)"), 1);
    EXPECT_FALSE(asked.getBackupReq()) << "whatever the copy did";
    EXPECT_TRUE(busy.getBackupReq());
    EXPECT_EQ(busy.count("backupFile(false)"), 0);
    EXPECT_EQ(content.count("backupFile(false)"), 0);
    EXPECT_TRUE(m_log.contains("[PICTURE_MODE]:Handle one backup request for file [2.ini] ... \n"));
    EXPECT_EQ(asked.calls(),
              (std::vector<std::string>{"setBackupReq(false)", "setBackupReq(true)", "tryEnterCriticalSection",
                                        "backupFile(false)", "setBackupReq(false)", "leaveCriticalSection"}));

    leave.open();
    user.join();
    EXPECT_TRUE(m_manager.backupData());
    EXPECT_FALSE(busy.getBackupReq());
}

TEST_F(ManagerTest, ABackupThatThrowsKeepsItsRequestAndFreesTheOperator) {
    FakeOperator& op = m_manager.add(PICTURE_MODE);
    op.setBackupReq(true);
    op.on("backupFile(false)", []() -> bool { throw std::runtime_error("broken"); });
    EXPECT_TRUE(m_manager.backupData());
    EXPECT_TRUE(op.getBackupReq());
    EXPECT_TRUE(op.isFree());
}

TEST_F(ManagerTest, EventsAreHandledAndCounted) {
    FakeOperator& op = m_manager.add(PICTURE_FACTORY_ASPECT);
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));
    ASSERT_EQ(m_manager.postEvent(new Event(&op, {})), 1);
    ASSERT_TRUE(m_manager.waitStored(PATIENCE_MILLISECONDS));
    EXPECT_EQ(op.count("syncSectionToFile"), 1);
    _ThreadStaticInfo_t info{};
    m_manager.getWorkerStatistics(info);
    EXPECT_EQ(info.succeeded, 1U);
    EXPECT_TRUE(m_log.contains("Create pthread [FileManagerSyncFileThread] success ,id = "));
}

TEST_F(ManagerTest, AReloadWaitsForTheStoresBeforeIt) {
    FakeOperator& op = m_manager.add(PICTURE_FACTORY_ASPECT);
    std::atomic<bool> written{false};
    std::atomic<bool> overtaken{false};
    op.on("syncSectionToFile", [&] {
        for (int i = 0; i < 1000; ++i)
            std::this_thread::yield(); // gives a reload that does not wait every chance to be first
        return written = true;
    });
    const auto notice = [&] {
        overtaken = overtaken || !written;
        return true;
    };
    op.on("releaseFile", notice);
    op.on("resetForLoadFile", notice);
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));

    const std::array<std::function<void()>, 3> reloads{
        [&] { m_manager.loadData(PICTURE_FACTORY_ASPECT); },
        [&] { m_manager.releaseFileSources(); },
        [&] { m_manager.resetForLoadAllData(VIDEO); },
    };
    for (std::size_t i = 0; i < reloads.size(); ++i) {
        written = false;
        ASSERT_EQ(m_manager.postEvent(new Event(&op, {})), 1);
        reloads[i]();
        EXPECT_FALSE(overtaken) << i;
    }
}

TEST_F(ManagerTest, AfterStopNothingIsWalkedOrRouted) {
    ASSERT_TRUE(m_manager.init(DS_SCOPE_DVBMAIN));
    EXPECT_TRUE(m_manager.stop());
    EXPECT_EQ(m_manager.destroyed, 5);
    EXPECT_TRUE(m_manager.stop());

    EXPECT_FALSE(m_manager.backupData());
    EXPECT_FALSE(m_manager.loadAllData(VIDEO));
    EXPECT_FALSE(m_manager.loadAllData());
    EXPECT_FALSE(m_manager.loadData(PICTURE_FACTORY_ASPECT));
    const std::unique_ptr<Event> event = std::make_unique<Event>(nullptr, std::vector<int>{});
    EXPECT_EQ(m_manager.postEvent(event.get()), 0);
    EXPECT_EQ(m_manager.destroyed, 5);
}

// --- the factory directory ---

/// A television's files under a directory of the test's own.
class FactoryTest : public testing::Test {
protected:
    FactoryTest() {
        EXPECT_TRUE(setRootPrefix(m_root.string().c_str()));
        std::filesystem::create_directories(m_root.file("/var/local/dataModule"));
        m_manager = std::make_unique<FakeManager>();
    }
    ~FactoryTest() override {
        m_manager.reset();
        FileDataSeparateManager::release();
        setRootPrefix("");
    }
    void writeIndex(const std::string& line) {
        m_root.write("/ovdata/model/config/ov_characteristic_index.ini", "[ModuleData]\n" + line + "\n");
    }

    const std::string m_default = "/ovdata/model/dataModule/manufactory/";
    TemporaryDirectory m_root;
    std::unique_ptr<FakeManager> m_manager;
    LogCapture m_log;
};

TEST_F(FactoryTest, TheIndexFileNamesTheFactoryDirectory) {
    EXPECT_EQ(m_manager->getManufactoryPath(), m_root.string() + m_default);
    writeIndex("Path = brand/tv55");
    EXPECT_TRUE(m_manager->loadManufactoryPath());
    const std::string expected = m_root.string() + "/ovdata/model/brand/tv55/manufactory/";
    EXPECT_EQ(m_manager->getManufactoryPath(), expected);
    EXPECT_TRUE(m_log.contains(" load configuration manufactory path [brand/tv55] from entry index file successfully "
                               ",and the full path is:[" +
                               expected + "].\n"));
}

TEST_F(FactoryTest, AFirstBootFillsBothDirectoriesFromTheFactory) {
    m_root.write(m_default + "one.ini", "factory one");
    m_root.write(m_default + "two.ini", "factory two");
    m_root.write("/var/local/dataModule/current/one.ini", "used one");
    m_root.write("/var/local/dataModule/current/stale.ini", "stale");
    EXPECT_TRUE(m_manager->initCurrentFromManufactory());
    for (const std::string directory : {"/var/local/dataModule/current/", "/var/local/dataModule/backup/"}) {
        EXPECT_EQ(m_root.read(directory + "one.ini"), "factory one");
        EXPECT_EQ(m_root.read(directory + "two.ini"), "factory two");
    }
    EXPECT_FALSE(m_root.exists("/var/local/dataModule/current/stale.ini"));
    EXPECT_TRUE(m_log.contains(" init 'current' dataModule files from manufactory path ["));
}

TEST_F(FactoryTest, AResetComesAfterTheStoresBeforeIt) {
    m_root.write(m_default + "one.ini", "factory one");
    const std::string current = "/var/local/dataModule/current/one.ini";
    m_root.write(current, "used one");
    FakeOperator& op = m_manager->add(PICTURE_FACTORY_ASPECT);
    ASSERT_TRUE(m_manager->init(DS_SCOPE_DVBMAIN));
    std::string found;
    op.on("syncSectionToFile", [&] {
        for (int i = 0; i < 20000 && m_root.exists(current) && m_root.read(current) == "used one"; ++i)
            std::this_thread::yield(); // gives a reset that does not wait every chance to be first
        found = m_root.exists(current) ? m_root.read(current) : "";
        return true;
    });
    ASSERT_EQ(m_manager->postEvent(new Event(&op, {})), 1);
    EXPECT_TRUE(m_manager->initCurrentFromManufactory());
    m_manager->stop();
    EXPECT_EQ(found, "used one");
}

TEST_F(FactoryTest, NothingIsRemovedWithoutAFactoryDirectory) {
    m_root.write("/var/local/dataModule/current/one.ini", "used one");
    EXPECT_FALSE(m_manager->initCurrentFromManufactory());
    EXPECT_EQ(m_root.read("/var/local/dataModule/current/one.ini"), "used one");
    EXPECT_TRUE(m_log.contains(" init current dataModule files from manufactory path [" + m_root.string() + m_default +
                               "] failed.\n"));
}

TEST_F(FactoryTest, TheSingletonHoldsTheRootPrefixUntilItsRelease) {
    FileDataSeparateManager* const first = FileDataSeparateManager::instance();
    EXPECT_EQ(FileDataSeparateManager::instance(), first);
    EXPECT_EQ(first->getManufactoryPath(), m_root.string() + m_default);
    EXPECT_FALSE(setRootPrefix("/elsewhere"));
    FileDataSeparateManager::release();
    FileDataSeparateManager::release();

    EXPECT_TRUE(setRootPrefix("/elsewhere"));
    EXPECT_EQ(std::string(FileDataSeparateManager::instance()->getManufactoryPath()), "/elsewhere" + m_default);
}

} // namespace
} // namespace td::test
