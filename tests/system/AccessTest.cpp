// Who may read and write what the library makes, and that nothing planted among its files, and no name that it is
// given, has it write outside its directories. As root and as anybody.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <dataModule/common/FileUtil.h>
#include <dataModule/fileOperator/FileUserPictureMode.h>

#include "FakeParent.h"
#include "fileOperator/file/RedoRecord.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* FILE_NAME = "pic_mode_usr.ini";
constexpr const char* REDO_NAME = "pic_mode_usr.ini.redo";
const std::vector<int> DIMS{4, 3, 1};

mode_t modeOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

class Access : public testing::Test {
protected:
    ~Access() override { umask(m_umask); }

    std::unique_ptr<FileUserPictureMode> makeOperator() {
        auto op = std::make_unique<FileUserPictureMode>();
        op->setParent(&m_parent);
        return op;
    }
    bool storeOne(FileUserPictureMode& op, int value) {
        return storeValue(op, DIMS, "Contrast", value) && m_parent.deliver() == 1;
    }
    /// A file of somebody else's, which no test may change.
    std::string elsewhere() const { return m_elsewhere.write("elsewhere", "not the library's\n"); }
    bool elsewhereIsUntouched() const {
        return m_elsewhere.read("elsewhere") == "not the library's\n" &&
               std::distance(fs::directory_iterator(m_elsewhere.path()), {}) == 1;
    }

    const mode_t m_umask = umask(022);
    SettingsRoot m_root;
    const TemporaryDirectory m_elsewhere;
    LogCapture m_log;
    FakeParent m_parent;
};

/// What is made where nothing was: directories for all, files for all to read and write, less what the umask takes. A
/// lock file is for all in any case, for the umask of a process changes with a suspend cycle.
class AccessModes : public Access, public testing::WithParamInterface<mode_t> {};

TEST_P(AccessModes, AreThoseOfTheUmask) {
    umask(GetParam());
    for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
        fs::remove(SettingsRoot::directory(copy));
    const auto op = makeOperator();
    ASSERT_TRUE(op->initFile(true));
    ASSERT_TRUE(op->loadFile());
    ASSERT_TRUE(storeOne(*op, 71));
    for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory}) {
        EXPECT_EQ(modeOf(SettingsRoot::directory(copy)), 0777U & ~GetParam());
        EXPECT_EQ(modeOf(SettingsRoot::path(copy, FILE_NAME)), 0666U & ~GetParam());
    }
    EXPECT_EQ(modeOf(SettingsRoot::path(Copy::Current, REDO_NAME)), 0666U & ~GetParam());
    EXPECT_EQ(modeOf(paths::currentDirectory() + "../lock"), 0777U & ~GetParam());
    EXPECT_EQ(modeOf(paths::lockFile(FILE_NAME)), 0666U);
}

INSTANTIATE_TEST_SUITE_P(Umasks, AccessModes, testing::Values(0, 022, 026, 077));

TEST_F(Access, ACopyThatIsReplacedKeepsItsMode) {
    const auto op = makeOperator();
    ASSERT_TRUE(op->initFile(true));
    const std::string current = SettingsRoot::path(Copy::Current, FILE_NAME);
    std::string damaged = m_root.read(Copy::Current, FILE_NAME);
    damaged.back() = '#';
    m_root.write(Copy::Current, FILE_NAME, damaged);
    ASSERT_EQ(chmod(current.c_str(), 0604), 0);
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(checksumIsRight(m_root.read(Copy::Current, FILE_NAME)));
    EXPECT_EQ(modeOf(current), 0604U);
}

/// A link under every name that the library is about to make, to a file that is there or to one that is not.
class AccessLinks : public Access, public testing::WithParamInterface<const char*> {
protected:
    void plant(const std::string& path) const {
        fs::remove(path);
        fs::create_directories(fs::path(path).parent_path());
        fs::create_symlink(m_elsewhere.file(GetParam()), path);
    }
};

TEST_P(AccessLinks, AreNotFollowed) {
    static_cast<void>(elsewhere());
    for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
        plant(SettingsRoot::path(copy, FILE_NAME) + FileUtil::TEMPORARY_SUFFIX);
    plant(SettingsRoot::path(Copy::Current, REDO_NAME));
    plant(paths::lockFile(FILE_NAME));
    const auto op = makeOperator();
    ASSERT_TRUE(op->initFile(true)) << "what stands in the way gives way";
    EXPECT_TRUE(elsewhereIsUntouched());
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(storeOne(*op, 71)) << "without a record, rather than through a link";
    EXPECT_TRUE(elsewhereIsUntouched());

    // Each way to replace a copy once more.
    plant(SettingsRoot::path(Copy::Backup, FILE_NAME) + FileUtil::TEMPORARY_SUFFIX);
    const auto backUp = [&]() TD_NO_THREAD_SAFETY_ANALYSIS { return op->backupFile(false); };
    EXPECT_TRUE(backUp());
    EXPECT_EQ(m_root.read(Copy::Backup, FILE_NAME), m_root.read(Copy::Current, FILE_NAME));
    m_root.write(Copy::Current, FILE_NAME, "damaged");
    plant(SettingsRoot::path(Copy::Current, FILE_NAME) + FileUtil::TEMPORARY_SUFFIX);
    const auto other = makeOperator();
    ASSERT_TRUE(other->loadFile());
    EXPECT_EQ(valueOf(*other, DIMS, "Contrast"), 71);
    EXPECT_TRUE(elsewhereIsUntouched());
    for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
        EXPECT_TRUE(FileUtil::isFile(SettingsRoot::path(copy, FILE_NAME).c_str()));
}

INSTANTIATE_TEST_SUITE_P(To, AccessLinks, testing::Values("elsewhere", "nothing"));

/// The name of the record may also be another name of somebody's file, or a pipe that nobody reads.
TEST_F(Access, ARecordGoesToAFileOfItsOwnOnly) {
    const auto op = makeOperator();
    ASSERT_TRUE(op->initFile(true));
    ASSERT_TRUE(op->loadFile());
    const std::string record = SettingsRoot::path(Copy::Current, REDO_NAME);
    fs::create_hard_link(elsewhere(), record);
    EXPECT_TRUE(storeOne(*op, 71));
    EXPECT_TRUE(elsewhereIsUntouched());
    fs::remove(record);
    ASSERT_EQ(mkfifo(record.c_str(), 0600), 0);
    EXPECT_TRUE(storeOne(*op, 72));
    EXPECT_TRUE(checksumIsRight(m_root.read(Copy::Current, FILE_NAME)));
}

/// Whoever keeps a settings file elsewhere by a link finds the stores there. A copy that takes its place takes that of
/// the link; what was elsewhere stays as it was.
TEST_F(Access, ASettingsFileThatIsALinkIsWrittenToAndReplacedWithoutLoss) {
    const auto op = makeOperator();
    ASSERT_TRUE(op->initFile(true));
    const std::string current = SettingsRoot::path(Copy::Current, FILE_NAME);
    const std::string target = m_elsewhere.write("kept.ini", m_root.read(Copy::Current, FILE_NAME));
    m_root.remove(Copy::Current, FILE_NAME);
    fs::create_symlink(target, current);
    ASSERT_TRUE(op->loadFile());
    ASSERT_TRUE(storeOne(*op, 71));
    EXPECT_TRUE(fs::is_symlink(current));
    EXPECT_TRUE(checksumIsRight(m_elsewhere.read("kept.ini")));
    const auto other = makeOperator();
    ASSERT_TRUE(other->loadFile());
    EXPECT_EQ(valueOf(*other, DIMS, "Contrast"), 71);

    const std::string stored = m_elsewhere.read("kept.ini");
    ASSERT_TRUE(op->resetCurrentFileFromManufactoryFile());
    EXPECT_FALSE(fs::is_symlink(current));
    EXPECT_EQ(m_root.read(Copy::Current, FILE_NAME), m_root.read(Copy::Factory, FILE_NAME));
    EXPECT_EQ(m_elsewhere.read("kept.ini"), stored);
}

TEST_F(Access, AFileNameIsNoPath) {
    const auto op = makeOperator();
    const std::string outside = SettingsRoot::directory(Copy::Current) + "../outside.ini";
    for (const std::string& name : {std::string("../outside.ini"), "/" + outside, outside, std::string("sub/x.ini")}) {
        op->setFileName(name.c_str());
        EXPECT_TRUE(m_log.contains("file name [" + name + "] is refused"));
    }
    for (const std::string& name : {std::string(300, 'n'), std::string("."), std::string("..")}) {
        op->setFileName(name.c_str());
        EXPECT_FALSE(op->initFile(true)) << name;
        EXPECT_FALSE(op->removeCurrentFile()) << name;
    }
    op->setFileName("");
    op->setFileName(nullptr);
    EXPECT_TRUE(m_log.contains("file name [] is refused"));
    EXPECT_FALSE(op->initFile(true));
    EXPECT_EQ(m_root.files(), std::vector<std::string>{"var/local/dataModule/lock/.lock"});
}

/// The model index file names the factory directory.
TEST_F(Access, TheFactoryDirectoryStaysBelowTheRootWhateverTheIndexSays) {
    const std::string longest(300, 'm');
    const std::string models = underRootPrefix("/ovdata/model/");
    const std::string byDefault = paths::defaultFactoryDirectory();
    const std::vector<std::pair<std::string, std::string>> cases{
        {"model-1", models + "model-1/manufactory/"},
        {"a/b", models + "a/b/manufactory/"},
        {"/etc", models + "/etc/manufactory/"},
        {"a..b", models + "a..b/manufactory/"},
        {"%s%n", models + "%s%n/manufactory/"},
        {"..", byDefault},
        {"../../etc", byDefault},
        {"a/../../..", byDefault},
        {"a/..", byDefault},
        {"", byDefault},
        {longest, byDefault},
        {std::string(200, 'm'), byDefault},
    };
    const std::string index = underRootPrefix(paths::MODEL_INDEX_FILE);
    fs::create_directories(fs::path(index).parent_path());
    for (const auto& [path, directory] : cases) {
        std::ofstream(index) << "[ModuleData]\nPath = " << path << "\n";
        FileDataSeparateManager* const manager = FileDataSeparateManager::instance();
        EXPECT_EQ(manager->loadManufactoryPath(), directory != byDefault) << path;
        EXPECT_EQ(manager->getManufactoryPath(), directory) << path;
        FileDataSeparateManager::release();
    }
}

} // namespace
} // namespace td::test
