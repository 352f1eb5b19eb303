// Anything but a regular file in place of a copy: nobody waits for it or follows it, the next copy is taken, and a new
// one is made in its place.
#include <filesystem>
#include <string>
#include <tuple>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>

#include "fileOperator/file/SummaryReader.h"
#include "fileOperator/OperatorFactory.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* FIELD = "RGBOnly";

struct Kind {
    const char* name;
    void (*make)(const std::string& path);
};
const Kind KINDS[] = {
    {"Fifo", [](const std::string& path) { ASSERT_EQ(mknod(path.c_str(), S_IFIFO | 0666, 0), 0); }},
    {"Socket", [](const std::string& path) { ASSERT_EQ(mknod(path.c_str(), S_IFSOCK | 0666, 0), 0); }},
    {"Directory", [](const std::string& path) { fs::create_directories(path + "/inside"); }},
    {"LinkToADevice", [](const std::string& path) { fs::create_symlink("/dev/zero", path); }},
    {"LinkLoop", [](const std::string& path) { fs::create_symlink(path, path); }},
    {"LinkToNothing", [](const std::string& path) { fs::create_symlink(path + ".gone", path); }},
};

class StrayObjects : public testing::TestWithParam<std::tuple<Kind, Copy>> {
protected:
    StrayObjects() {
        start().initFile(true);
        FileDataSeparateManager::release();
        std::get<Kind>(GetParam()).make(m_elsewhere.file("same"));
    }
    ~StrayObjects() override { FileDataSeparateManager::release(); }

    /// The category's operator of a manager that was just started.
    IFileOperator& start() {
        m_manager = FileDataSeparateManager::instance();
        EXPECT_TRUE(m_manager->init(DS_SCOPE_ALL));
        return *m_manager->getFileOperator(PICTURE_GLOBAL);
    }
    bool store(int value) { return m_manager->storeData(PICTURE_GLOBAL, {}, {{FIELD, value}}); }
    void plant(Copy copy) const {
        m_root.remove(copy, m_file);
        std::get<Kind>(GetParam()).make(SettingsRoot::path(copy, m_file));
    }
    /// Whether what was planted is at `path`.
    bool isThere(const std::string& path) const {
        return fs::symlink_status(path).type() == fs::symlink_status(m_elsewhere.file("same")).type();
    }
    bool verifies(Copy copy) const { return fileVerifies(SettingsRoot::path(copy, m_file).c_str(), nullptr); }

    const SettingsRoot m_root;
    const TemporaryDirectory m_elsewhere;
    const LogCapture m_log;
    const char* const m_file = layoutOf(PICTURE_GLOBAL)->file;
    FileDataSeparateManager* m_manager = nullptr;
};

TEST_P(StrayObjects, AreNoCopiesAndGiveWay) {
    const Copy copy = std::get<Copy>(GetParam());
    const std::string path = SettingsRoot::path(copy, m_file);
    ASSERT_TRUE(start().loadFile());
    ASSERT_TRUE(store(5) && m_manager->waitStored(10000) && m_manager->backupData());

    // While the category is in use: a store and a backup come to an end, whichever.
    plant(copy);
    EXPECT_TRUE(store(6));
    m_manager->waitStored(1000);
    EXPECT_TRUE(m_manager->backupData());
    FileDataSeparateManager::release();
    const std::string aside = path + FileUtil::STRAY_SUFFIX + "1";
    fs::remove_all(aside);
    if (!isThere(path))
        plant(copy);

    IFileOperator& op = start();
    ASSERT_TRUE(op.loadFile());
    EXPECT_EQ(valueOf(op, {}, FIELD), copy == Copy::Current ? 5 : 6);
    EXPECT_TRUE(store(7) && m_manager->waitStored(10000) && m_manager->backupData());
    EXPECT_TRUE(verifies(Copy::Current));
    EXPECT_TRUE(verifies(Copy::Backup));
    EXPECT_TRUE(isThere(copy == Copy::Factory ? path : aside));
    EXPECT_EQ(m_log.contains("[" + aside + "]"), copy != Copy::Factory);
}

TEST_P(StrayObjects, DoNotStopAFactoryReset) {
    plant(std::get<Copy>(GetParam()));
    IFileOperator& op = start();
    EXPECT_TRUE(m_manager->initCurrentFromManufactory());
    EXPECT_TRUE(op.loadFile());
    EXPECT_TRUE(verifies(Copy::Current));
}

TEST_P(StrayObjects, AreTheEndUntilFilesAreMade) {
    for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
        plant(copy);
    IFileOperator& op = start();
    EXPECT_FALSE(op.loadFile());
    EXPECT_TRUE(isThere(SettingsRoot::path(std::get<Copy>(GetParam()), m_file)));
    EXPECT_TRUE(m_log.contains("is no file"));
    EXPECT_TRUE(op.initFile(true));
    EXPECT_TRUE(verifies(Copy::Current));
    EXPECT_TRUE(verifies(Copy::Backup));
    EXPECT_TRUE(isThere(SettingsRoot::path(Copy::Factory, m_file)));
}

std::string testName(const testing::TestParamInfo<std::tuple<Kind, Copy>>& tested) {
    static constexpr const char* COPIES[] = {"Current", "Backup", "Factory"};
    return std::get<Kind>(tested.param).name + std::string(COPIES[static_cast<int>(std::get<Copy>(tested.param))]);
}

INSTANTIATE_TEST_SUITE_P(Kinds, StrayObjects,
                         testing::Combine(testing::ValuesIn(KINDS),
                                          testing::Values(Copy::Current, Copy::Backup, Copy::Factory)),
                         testName);

} // namespace
} // namespace td::test
