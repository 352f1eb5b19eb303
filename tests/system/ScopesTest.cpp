// The whole library on real files: what each scope serves, from the making of its files to a restart.

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>

#include "CategoryOracle.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr int PATIENCE_MILLISECONDS = 60000;

/// Whether a scope serves a category.
bool serves(int scope, const OracleRow& row) {
    if (scope == DS_SCOPE_BIZ)
        return row.inBiz;
    return scope != DS_SCOPE_DVBMAIN || row.inDvbmain;
}

std::size_t servedCount(int scope) {
    if (scope == DS_SCOPE_BIZ)
        return 44;
    return scope == DS_SCOPE_DVBMAIN ? 5 : 52;
}

class Scopes : public testing::TestWithParam<int> {
protected:
    ~Scopes() override { FileDataSeparateManager::release(); }

    FileDataSeparateManager& start(int scope) {
        FileDataSeparateManager& manager = *FileDataSeparateManager::instance();
        manager.setTvType("TVTYPE01");
        EXPECT_TRUE(manager.init(static_cast<_DS_Scope_t>(scope)));
        return manager;
    }
    /// The last record; of the factory white balance the last one of the bin that is in memory in user state.
    static std::vector<int> lastRecord(const OracleRow& row) {
        std::vector<int> dims;
        for (const OracleDimension& dimension : row.dimensions)
            dims.push_back(dimension.count - 1);
        if (row.value == PICTURE_FACTORY_WB || row.value == PICTURE_FACTORY_WB_SHIFT)
            dims[0] = 0;
        return dims;
    }
    static _DataCategory_t category(const OracleRow& row) { return static_cast<_DataCategory_t>(row.value); }
    static int storedValue(const OracleRow& row) { return 100 + row.value; }

    /// Stores the last field of the last record.
    static bool store(FileDataSeparateManager& manager, const OracleRow& row) {
        const std::string name = argumentName(row, row.keys.back());
        return manager.storeData(category(row), lastRecord(row), {{name.c_str(), storedValue(row)}});
    }
    static bool loads(FileDataSeparateManager& manager, const OracleRow& row) {
        std::vector<_Argument_t> whole;
        return manager.loadData(category(row), lastRecord(row), whole);
    }
    /// Whether it has the value that was stored.
    static bool holdsStored(FileDataSeparateManager& manager, const OracleRow& row) {
        const std::string name = argumentName(row, row.keys.back());
        std::vector<_Argument_t> args{{name.c_str(), -1}};
        return manager.loadData(category(row), lastRecord(row), args) && args.front().value == storedValue(row);
    }

    LogCapture m_log;
    SettingsRoot m_root;
};

INSTANTIATE_TEST_SUITE_P(Scope, Scopes, testing::Values(DS_SCOPE_ALL, DS_SCOPE_BIZ, DS_SCOPE_DVBMAIN, 7));

TEST_P(Scopes, ServeTheirCategoriesFromFilesAndAcrossARestart) {
    FileDataSeparateManager* manager = &start(GetParam());
    EXPECT_TRUE(manager->initAllData());
    EXPECT_EQ(m_root.files().size(), 3 * servedCount(GetParam()));
    EXPECT_FALSE(manager->loadAllData());
    EXPECT_FALSE(m_log.contains("] failed."));

    std::size_t served = 0;
    for (const OracleRow& row : categoryOracle()) {
        SCOPED_TRACE(row.name);
        const bool expected = serves(GetParam(), row);
        served += expected ? 1 : 0;
        EXPECT_EQ(manager->getFileOperator(category(row)) != nullptr, expected);
        EXPECT_EQ(loads(*manager, row), expected);
        EXPECT_FALSE(holdsStored(*manager, row));
        EXPECT_EQ(store(*manager, row), expected);
        EXPECT_EQ(holdsStored(*manager, row), expected);
    }
    EXPECT_EQ(served, servedCount(GetParam()));
    ASSERT_TRUE(manager->waitStored(PATIENCE_MILLISECONDS));
    FileDataSeparateManager::release();

    manager = &start(GetParam());
    EXPECT_FALSE(manager->loadAllData());
    for (const OracleRow& row : categoryOracle())
        EXPECT_EQ(holdsStored(*manager, row), serves(GetParam(), row)) << row.name;
}

TEST_P(Scopes, TypedLoadsPassOverTheCategoriesWithoutType) {
    FileDataSeparateManager& manager = start(GetParam());
    EXPECT_TRUE(manager.initAllData());
    EXPECT_TRUE(manager.loadAllData(VIDEO));
    for (const OracleRow& row : categoryOracle())
        EXPECT_EQ(loads(manager, row), serves(GetParam(), row) && row.type == std::string("VIDEO")) << row.name;
    EXPECT_EQ(manager.loadAllData(SOUND), GetParam() != DS_SCOPE_DVBMAIN);
    for (const OracleRow& row : categoryOracle())
        EXPECT_EQ(loads(manager, row), serves(GetParam(), row) && row.type != std::string("none")) << row.name;
}

} // namespace
} // namespace td::test
