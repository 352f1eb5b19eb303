// A process that ends while the library's threads are at work: it does not crash, keeps what it was told to be stored,
// and leaves nothing that the next load does not put right.
#include <string>

#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>

#include "OwnValues.h"
#include "Process.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

class ExitTest : public testing::TestWithParam<const char*> {};

TEST_P(ExitTest, LosesNothingThatWasWaitedFor) {
    constexpr int EXITS = 10; // a thousand by --gtest_repeat=17
    const SettingsRoot root;
    FileDataSeparateManager& manager = *FileDataSeparateManager::instance();
    ASSERT_TRUE(manager.init(DS_SCOPE_BIZ));
    for (const _DataCategory_t category : LEAVING_CATEGORIES)
        manager.getFileOperator(category)->initFile(true);
    FileDataSeparateManager::release();

    const int first = layoutOf(LEAVING_CATEGORIES[0])->fields.front().defaultValue;
    for (int exit = 0; exit < EXITS; ++exit)
        EXPECT_EQ(Process::run({"leave", rootPrefix(), GetParam(), std::to_string(first + exit)}), 0)
            << "exit " << exit;
}

INSTANTIATE_TEST_SUITE_P(Ways, ExitTest,
                         testing::Values("return", "exit", "quick_exit", "handler", "threads", "globals"),
                         [](const auto& way) { return std::string(way.param); });

} // namespace
} // namespace td::test
