// Several processes on the same files: nobody's load fails, no file is torn, nothing stored is lost.
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dmctl/inspect/FileInspection.h>

#include <dataModule/FileDataSeparateManager.h>

#include "fileOperator/OperatorFactory.h"
#include "LogCapture.h"
#include "OwnValues.h"
#include "Process.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

const char* const LIFE_MILLISECONDS = "3000";

class SeveralProcessesTest : public testing::Test {
protected:
    ~SeveralProcessesTest() override { FileDataSeparateManager::release(); }

    FileDataSeparateManager& start() {
        FileDataSeparateManager& manager = *FileDataSeparateManager::instance();
        EXPECT_TRUE(manager.init(DS_SCOPE_ALL));
        return manager;
    }
    std::string root() const { return rootPrefix(); }

    SettingsRoot m_root;
    LogCapture m_log;
};

/// What a client printed: its values and what it stored last.
void expectValues(FileDataSeparateManager& manager, const std::string& printed) {
    std::istringstream lines(printed);
    int category = 0;
    int index = 0;
    int stored = 0;
    int count = 0;
    for (; lines >> category >> index >> stored; ++count) {
        const OwnValue value{static_cast<_DataCategory_t>(category), index};
        std::vector<_Argument_t> args{{value.field(), -1}};
        EXPECT_TRUE(manager.loadData(value.category, value.dims(), args)) << value.text();
        EXPECT_EQ(args.front().value, stored) << value.text();
    }
    EXPECT_GT(count, 10);
}

TEST_F(SeveralProcessesTest, StoreLoadBackUpAndRestartSideBySide) {
    m_root.write(Copy::Current, "../../flash/factory_mode", "Off");
    m_root.write(Copy::Factory, "../../../factory/config/factorySrv.ini", "[FactoryWB]\nBIN = 1\n");
    start().initAllData();
    FileDataSeparateManager::release();

    std::vector<std::unique_ptr<Process>> clients;
    for (const int scope : {DS_SCOPE_BIZ, DS_SCOPE_DVBMAIN, DS_SCOPE_ALL})
        clients.push_back(std::make_unique<Process>(std::vector<std::string>{
            "client", root(), std::to_string(scope), std::to_string(clients.size()), LIFE_MILLISECONDS}));
    for (const auto& client : clients)
        EXPECT_EQ(client->wait(), 0) << client->errors();

    for (const CategoryLayout* layout : allLayouts()) {
        for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
            EXPECT_TRUE(inspectFile(*layout, m_root.read(copy, layout->file)).isGood()) << layout->file;
    }
    m_log.clear();
    FileDataSeparateManager& manager = start();
    manager.loadAllData();
    for (const auto& client : clients)
        expectValues(manager, client->output());
    EXPECT_FALSE(m_log.contains("RECOVER"));
}

} // namespace
} // namespace td::test
