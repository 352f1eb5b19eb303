// Client threads that are cancelled in the middle of calls: the calls end, then the threads do, and the files are
// whole.
#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>

#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>

#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr int CLIENTS_PATIENCE = 60000;
constexpr const char* SCALING_FILE = "pic_scaling_factory.ini";
const std::vector<int> SCALING{1};

/// A call of a client's, over and over.
struct Calling {
    const char* name;
    std::function<void(FileDataSeparateManager&, int)> call;
};

const Calling CALLS[] = {
    {"storeData",
     [](FileDataSeparateManager& manager, int i) {
         manager.storeData(PICTURE_FACTORY_SCALING, SCALING, {{"InputHStart", i % 9000}});
     }},
    {"loadData",
     [](FileDataSeparateManager& manager, int) {
         std::vector<_Argument_t> args{{"InputHStart", 0}, {"Nothing", 0}}; // the second logs
         manager.loadData(PICTURE_FACTORY_SCALING, SCALING, args);
     }},
    {"waitStored",
     [](FileDataSeparateManager& manager, int i) {
         manager.storeData(PICTURE_FACTORY_SCALING, SCALING, {{"InputHStart", i % 9000}});
         manager.waitStored(CLIENTS_PATIENCE);
     }},
    {"loadAllData",
     [](FileDataSeparateManager& manager, int) {
         manager.resetForLoadAllData(VIDEO);
         manager.loadAllData();
     }},
    {"restoreSetting",
     [](FileDataSeparateManager& manager, int) { manager.restoreSetting(PICTURE_FACTORY_SCALING, SCALING); }},
    {"releaseFileSources",
     [](FileDataSeparateManager& manager, int) {
         manager.releaseFileSources();
         manager.resumeFileSources();
     }},
    {"loadData of a path",
     [](FileDataSeparateManager& manager, int) {
         manager.loadData(PICTURE_FACTORY_SCALING, SettingsRoot::path(Copy::Backup, SCALING_FILE).c_str());
     }},
};

class CancelTest : public testing::TestWithParam<std::size_t> {
protected:
    struct Caller {
        const Calling* calling;
        FileDataSeparateManager* manager;
        std::atomic<int> calls{0};
    };

    CancelTest() {
        // A cancellation could strike in any line of the log.
        DebugOutput::setSink([](DebugOutput::Level, const char*) { pthread_testcancel(); });
        DebugOutput::setLevel(DebugOutput::Level::Debug);
        m_manager = FileDataSeparateManager::instance();
        EXPECT_TRUE(m_manager->init(DS_SCOPE_DVBMAIN));
        EXPECT_TRUE(m_manager->initAllData());
        m_manager->loadAllData();
    }
    ~CancelTest() override {
        FileDataSeparateManager::release();
        DebugOutput::setLevel(DebugOutput::Level::Warning);
        DebugOutput::setSink({});
    }

    static void* callForEver(void* argument) {
        auto* const caller = static_cast<Caller*>(argument);
        for (;;) {
            const int number = caller->calls++;
            caller->calling->call(*caller->manager, number);
            pthread_testcancel();
        }
    }

    SettingsRoot m_root;
    FileDataSeparateManager* m_manager = nullptr;
};

TEST_P(CancelTest, TheCallEndsBeforeTheThread) {
    constexpr int ROUNDS = 20;
    for (int round = 0; round < ROUNDS; ++round) {
        Caller caller{&CALLS[GetParam()], m_manager};
        pthread_t thread;
        ASSERT_EQ(pthread_create(&thread, nullptr, callForEver, &caller), 0);
        // At another place of the call in every round.
        while (caller.calls <= round % 5)
            std::this_thread::yield();
        for (int i = 0; i < round * 50; ++i)
            std::this_thread::yield();
        ASSERT_EQ(pthread_cancel(thread), 0);
        void* result = nullptr;
        ASSERT_EQ(pthread_join(thread, &result), 0);
        ASSERT_EQ(result, PTHREAD_CANCELED);
    }
    m_manager->resumeFileSources();
    ASSERT_TRUE(m_manager->loadData(PICTURE_FACTORY_SCALING));
    ASSERT_TRUE(m_manager->storeData(PICTURE_FACTORY_SCALING, SCALING, {{"InputHStart", 9876}}));
    ASSERT_TRUE(m_manager->waitStored(CLIENTS_PATIENCE)) << "nobody kept a lock";
    const std::string text = m_root.read(Copy::Current, SCALING_FILE);
    EXPECT_TRUE(checksumIsRight(text));
    EXPECT_NE(text.find("= 9876\n"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(In, CancelTest, testing::Range(std::size_t{0}, std::size(CALLS)),
                         [](const testing::TestParamInfo<std::size_t>& param) {
                             std::string name = CALLS[param.param].name;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });

} // namespace
} // namespace td::test
