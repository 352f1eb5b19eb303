// What every category's operator does with its table and its section, on a category with dimensions and on one without.
// The numbers of the invariants are those of AbstractFileOperator.h.

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileUserPictureGlobal.h>
#include <dataModule/fileOperator/FileUserPictureMode.h>
#include <dataModule/fileOperator/FileUserPictureWB20Point.h>

#include "FakeParent.h"
#include "fileOperator/text/TextLayout.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr const char* GLOBAL_FILE = "pic_global_usr.ini";
constexpr const char* MODE_FILE = "pic_mode_usr.ini";
const std::vector<int> DIMS{3, 10, 7};
constexpr const char* SECTION = "[3a7]\n";

/// Switches the detail log on while it lives.
struct DetailLog {
    DetailLog() { AbstractFileOperator::setDebugLog(1); }
    ~DetailLog() { AbstractFileOperator::setDebugLog(0); }
};

template <class Category>
class CategoryFixture : public testing::Test {
protected:
    CategoryFixture() {
        m_op = std::make_unique<Category>();
        m_op->setParent(&m_parent);
        EXPECT_TRUE(m_op->initFile(true));
        EXPECT_TRUE(m_op->loadFile());
        m_text = current();
        m_log.clear();
    }

    static const char* fileName() { return Category::layout().file; }
    std::string current() const { return m_root.read(Copy::Current, fileName()); }
    void expectCurrent(const std::string& text) const { EXPECT_TRUE(current() == withChecksum(text)); }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
    std::unique_ptr<Category> m_op;
    std::string m_text; ///< of the current copy at the start
};

using PictureModeTest = CategoryFixture<FileUserPictureMode>;
using PictureGlobalTest = CategoryFixture<FileUserPictureGlobal>;

// --- reading ---

TEST_F(PictureModeTest, AnswersNamedFieldsAndWholeRecords) {
    std::vector<_Argument_t> args{{"Gamma", -1}, {"Nothing", -2}, {nullptr, -3}, {"Contrast", -4}};
    EXPECT_TRUE(m_op->loadData(DIMS, args));
    EXPECT_EQ(args[0].value, 3);
    EXPECT_EQ(args[1].value, -2);
    EXPECT_EQ(args[2].value, -3);
    EXPECT_EQ(args[3].value, 50);
    EXPECT_EQ(m_log.count("The field [Nothing] is invalid.\n"), 1U);
    EXPECT_EQ(m_log.count("The field [] is invalid.\n"), 1U);

    const std::pair<const char*, int> record[] = {
        {"Contrast", 50},
        {"Brightness", 50},
        {"Color", 50},
        {"Hue", 0},
        {"Sharpness", 10},
        {"AutoBacklight", 1},
        {"BacklightLevel", 100},
        {"DynamicContrast", 2},
        {"ColorTemp", 0},
        {"MEMC", 5},
        {"Judder", 10},
        {"Blur", 10},
        {"NoiseReduction", 2},
        {"MPEG_NR", 3},
        {"ColorSpace", 1},
        {"ColorTuner", 0},
        {"SensorEnable", 0},
        {"MinBacklight", 20},
        {"Gamma", 3},
        {"SensorCCTEnable", 0},
        {"HDRDTM", 0},
        {"DOLBYDD", 0},
        {"DOLBYPD", 0},
        {"Gradient", 0},
    };
    std::vector<_Argument_t> whole;
    EXPECT_TRUE(m_op->loadData(DIMS, whole));
    ASSERT_EQ(whole.size(), std::size(record));
    for (std::size_t i = 0; i < whole.size(); ++i) {
        EXPECT_STREQ(whole[i].name, record[i].first);
        EXPECT_EQ(whole[i].value, record[i].second) << record[i].first;
    }
    EXPECT_EQ(m_op->getDataSize(), 147456);
    EXPECT_EQ(m_op->getDataCategory(), 2);
}

TEST_F(PictureGlobalTest, AWholeRecordLeavesTwoFieldsOutAndOneNameless) {
    EXPECT_TRUE(storeValue(*m_op, {}, "ApplyWB10Point", 13));
    EXPECT_TRUE(storeValue(*m_op, {}, "LaserScreenSize", 27));
    EXPECT_TRUE(storeValue(*m_op, {}, "FpsSwitch", 28));
    std::vector<_Argument_t> whole;
    EXPECT_TRUE(m_op->loadData({}, whole));
    ASSERT_EQ(whole.size(), 26U);
    EXPECT_STREQ(whole[0].name, "RGBOnly");
    EXPECT_EQ(whole[12].name, nullptr);
    EXPECT_EQ(whole[12].value, 13);
    EXPECT_STREQ(whole[25].name, "EndUserCalbration");
    EXPECT_EQ(valueOf(*m_op, {}, "ApplyWB10Point"), 13);
    EXPECT_EQ(valueOf(*m_op, {}, "LaserScreenSize"), 27);
    EXPECT_EQ(valueOf(*m_op, {}, "FpsSwitch"), 28);
    EXPECT_EQ(m_parent.deliver(), 3);
    std::string text = withValue(m_text, "[Global]\n", "ApplyWB10Point", 13);
    text = withValue(text, "[Global]\n", "LaserScreenSize", 27);
    expectCurrent(withValue(text, "[Global]\n", "FpsSwitch", 28));
}

// --- storing ---

TEST_F(PictureModeTest, AStoreChangesItsSectionAndTheChecksumOnly) { // invariant 3
    EXPECT_TRUE(m_op->storeData(DIMS, {{"Nothing", 1}, {"Hue", -25}, {nullptr, 2}, {"Gradient", 9999}}));
    EXPECT_TRUE(m_log.contains("The field [Nothing] is invalid.\n"));
    ASSERT_EQ(m_parent.posted(), 1U);
    EXPECT_EQ(current(), m_text) << "the caller does not wait for the disk";
    EXPECT_EQ(valueOf(*m_op, DIMS, "Hue"), -25);
    EXPECT_EQ(m_parent.deliver(), 1);
    const std::string line = keyLine("Hue", "-025");
    std::string expected = m_text;
    expected.replace(expected.find("Hue ", expected.find(SECTION)), line.size(), line);
    expectCurrent(withValue(expected, SECTION, "Gradient", 9999));
    EXPECT_TRUE(m_op->getBackupReq());

    for (const std::vector<_Argument_t>& same :
         std::vector<std::vector<_Argument_t>>{{{"Hue", -25}}, {{"Nothing", 5}}, {{nullptr, 5}}, {}}) {
        m_log.clear();
        EXPECT_TRUE(m_op->storeData(DIMS, same));
        EXPECT_TRUE(m_log.contains("No field value is changed,so NEEDN'T store.\n"));
        EXPECT_EQ(m_parent.posted(), 0U);
    }
    // Restarted, the set finds it again.
    FileUserPictureMode restarted;
    restarted.setParent(&m_parent);
    EXPECT_TRUE(restarted.loadFile());
    EXPECT_EQ(valueOf(restarted, DIMS, "Hue"), -25);
    EXPECT_EQ(valueOf(restarted, {3, 10, 6}, "Hue"), 0);
}

TEST_F(PictureModeTest, QueuedSnapshotsOfASectionAreWrittenInOrder) {
    for (const int value : {1, 2, 3})
        EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", value));
    int written = 0;
    for (const auto& event : m_parent.takePosted()) {
        EXPECT_TRUE(event->handle());
        expectCurrent(withValue(m_text, SECTION, "Hue", ++written));
    }
    EXPECT_EQ(written, 3);
}

TEST_F(PictureModeTest, WideValuesAreKeptInMemoryAndNeverWritten) {
    for (const int value : {10000, -1000, 2147483647}) {
        EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", value));
        EXPECT_EQ(m_parent.deliver(), 0);
        EXPECT_EQ(valueOf(*m_op, DIMS, "Hue"), value);
        EXPECT_TRUE(current() == m_text);
    }
    EXPECT_TRUE(m_log.contains("write section [3a7] for file ["));
    // A new file gets the default in its place and keeps its layout.
    EXPECT_TRUE(m_op->initFile(false));
    EXPECT_TRUE(current() == m_text);
}

TEST_F(PictureModeTest, NothingIsStoredWhileFilesMayNotBeWritten) {
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 4)); // queued before
    m_parent.storeAllowed = false;
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 5));
    EXPECT_TRUE(m_log.contains("store flag is false (maybe in store mode), so discard this request.\n"));
    EXPECT_EQ(valueOf(*m_op, DIMS, "Hue"), 4);
    EXPECT_TRUE(m_op->applySettingForAllSources(DIMS));
    EXPECT_EQ(valueOf(*m_op, {0, 10, 7}, "Hue"), 0);
    EXPECT_EQ(m_parent.deliver(), 1) << "handled, by doing nothing";
    EXPECT_TRUE(current() == m_text);
}

TEST_F(PictureModeTest, AStoreThatCannotBeQueuedOrWrittenStaysInMemory) {
    m_parent.refusePosts = true;
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 4));
    m_parent.refusePosts = false;
    m_op->releaseFile();
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Blur", 6));
    EXPECT_EQ(m_parent.deliver(), 0);
    EXPECT_TRUE(m_log.contains("searchSection[3a7] because of loading file not finished.\n"));
    EXPECT_TRUE(current() == m_text);

    FileUserPictureMode orphan;
    EXPECT_TRUE(orphan.storeData(DIMS, {{"Hue", 1}})) << "without a parent";
    IFileOperator& op = *m_op;
    op.enterCriticalSection();
    EXPECT_FALSE(op.syncSectionToFile(nullptr));
    op.leaveCriticalSection();
}

// --- one record for all sources ---

TEST_F(PictureModeTest, AStoreGoesToAllSourcesWhileTheFlagIsSet) {
    m_parent.applyFlags.insert("PICTURE_GLOBAL/ApplyModeToSource");
    EXPECT_TRUE(storeValue(*m_op, {5, 10, 7}, "Hue", 0)); // nothing changed, and all are equal
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_TRUE(current() == m_text);

    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 8));
    EXPECT_TRUE(m_log.contains("start to update Picture Mode for all source ... \n"));
    EXPECT_TRUE(m_log.contains("update Picture Mode for all source completely, elpased time = "));
    ASSERT_EQ(m_parent.posted(), 1U) << "only the addressed section is queued";
    std::string expected = m_text;
    for (const char source : std::string("012456789abcdef"))
        expected = withValue(expected, std::string("[") + source + "a7]\n", "Hue", 8);
    expectCurrent(expected);
    EXPECT_TRUE(m_op->getBackupReq());
    EXPECT_EQ(m_parent.deliver(), 1);
    expectCurrent(withValue(expected, SECTION, "Hue", 8));
    for (int source = 0; source < 16; ++source)
        EXPECT_EQ(valueOf(*m_op, {source, 10, 7}, "Hue"), 8);
    EXPECT_EQ(valueOf(*m_op, {0, 10, 6}, "Hue"), 0);
}

TEST_F(PictureModeTest, OlderSnapshotsDoNotUndoWhatWasCopied) { // invariant 4
    EXPECT_TRUE(storeValue(*m_op, {0, 10, 7}, "Hue", 5));
    EXPECT_TRUE(storeValue(*m_op, {0, 10, 6}, "Hue", 6));
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 8));
    EXPECT_TRUE(m_op->applySettingForAllSources(DIMS));
    EXPECT_TRUE(storeValue(*m_op, {1, 10, 7}, "Hue", 9)); // younger than the copy
    EXPECT_EQ(m_parent.deliver(), 4);
    std::string expected = withValue(m_text, "[0a6]\n", "Hue", 6);
    for (const char source : std::string("023456789abcdef"))
        expected = withValue(expected, std::string("[") + source + "a7]\n", "Hue", 8);
    expectCurrent(withValue(expected, "[1a7]\n", "Hue", 9));
}

TEST_F(PictureModeTest, CopyingNeedsALoadedFileAndGoesOnAfterAFailure) {
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 8));
    m_parent.takePosted();
    m_root.write(Copy::Current, MODE_FILE, withChecksum(m_text.substr(0, m_text.find("[fa7]\n"))));
    EXPECT_TRUE(m_op->applySettingForAllSources(DIMS));
    EXPECT_EQ(m_log.count("search dimension failed , maybe the file content is not completed !!!\n"), 1U);
    std::string expected = m_text.substr(0, m_text.find("[fa7]\n"));
    for (const char source : std::string("012456789abcde"))
        expected = withValue(expected, std::string("[") + source + "a7]\n", "Hue", 8);
    expectCurrent(expected);

    m_op->releaseFile();
    EXPECT_FALSE(m_op->applySettingForAllSources(DIMS));
}

// --- one record from another copy ---

TEST_F(PictureModeTest, RestoresOneRecordFromTheFactoryCopy) {
    m_root.write(Copy::Factory, MODE_FILE, withChecksum(withValue(m_text, SECTION, "Hue", 70)));
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 8));
    EXPECT_TRUE(storeValue(*m_op, {0, 0, 0}, "Hue", 9));
    EXPECT_TRUE(m_op->restoreSetting(DIMS));
    EXPECT_TRUE(m_log.contains("Load data from file [" + SettingsRoot::path(Copy::Factory, MODE_FILE) +
                               "] when restore setting\n"));
    EXPECT_EQ(valueOf(*m_op, DIMS, "Hue"), 70);
    EXPECT_EQ(valueOf(*m_op, {0, 0, 0}, "Hue"), 9);
    EXPECT_EQ(m_parent.deliver(), 3);
    expectCurrent(withValue(withValue(m_text, SECTION, "Hue", 70), "[000]\n", "Hue", 9));

    const std::string before = current();
    m_root.write(Copy::Factory, MODE_FILE, withChecksum(m_text.substr(0, m_text.find(SECTION) + 100)));
    EXPECT_FALSE(m_op->restoreSetting(DIMS)) << "the section is cut";
    m_root.remove(Copy::Factory, MODE_FILE);
    EXPECT_FALSE(m_op->restoreSetting(DIMS));
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_EQ(valueOf(*m_op, DIMS, "Hue"), 70);
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 71));
    EXPECT_EQ(m_parent.deliver(), 1);
    expectCurrent(withValue(before, SECTION, "Hue", 71));
}

TEST_F(PictureModeTest, RereadingARecordDiscardsWhatIsQueued) { // invariant 4
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 8));
    EXPECT_TRUE(storeValue(*m_op, {0, 0, 0}, "Hue", 9));
    EXPECT_TRUE(m_op->restoreSettingFromCurrent(DIMS));
    EXPECT_EQ(valueOf(*m_op, DIMS, "Hue"), 0);
    EXPECT_TRUE(m_log.contains("] when restore setting from current.\n"));
    EXPECT_EQ(m_parent.deliver(), 2);
    expectCurrent(withValue(m_text, "[000]\n", "Hue", 9));
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", 10));
    EXPECT_EQ(m_parent.deliver(), 1);
    expectCurrent(withValue(withValue(m_text, "[000]\n", "Hue", 9), SECTION, "Hue", 10));

    m_root.remove(Copy::Current, MODE_FILE);
    EXPECT_FALSE(m_op->restoreSettingFromCurrent(DIMS));
    EXPECT_EQ(valueOf(*m_op, DIMS, "Hue"), 10);
}

TEST_F(PictureGlobalTest, RestoresOnlyFromASectionOfItsKeys) {
    EXPECT_TRUE(storeValue(*m_op, {}, "RGBOnly", 7));
    m_root.write(Copy::Factory, GLOBAL_FILE, withChecksum(replaced(m_text, "TpcSwitch ", "TpcSwytch ")));
    EXPECT_FALSE(m_op->restoreSetting({}));
    EXPECT_TRUE(
        m_log.contains("dimension info [Global] is not matched , maybe the file content is not completed !!!\n"));
    EXPECT_EQ(valueOf(*m_op, {}, "RGBOnly"), 7);
    m_root.write(Copy::Factory, GLOBAL_FILE, withChecksum(withValue(m_text, "[Global]\n", "RGBOnly", 3)));
    EXPECT_TRUE(m_op->restoreSetting({}));
    EXPECT_EQ(m_parent.deliver(), 2);
    expectCurrent(withValue(m_text, "[Global]\n", "RGBOnly", 3));
    EXPECT_TRUE(storeValue(*m_op, {}, "RGBOnly", 4));
    EXPECT_TRUE(m_op->restoreSettingFromCurrent({}));
    EXPECT_EQ(valueOf(*m_op, {}, "RGBOnly"), 3);
}

// --- headers that leave an index open ---

using TwentyPointTest = CategoryFixture<FileUserPictureWB20Point>;

TEST_F(TwentyPointTest, ALevelThatIsNoLevelIsTheOneBeforeWhicheverWayThatWasRead) {
    for (const char* before : {"[459]\n", "[ 459]\n"}) { // as it is written, and otherwise
        std::string text = replaced(m_text, "[45a]\n", "[45A]\n");
        text = withValue(text, "[45A]\n", "Red", 77);
        m_root.write(Copy::Current, fileName(), withChecksum(replaced(text, "[459]\n", before)));
        FileUserPictureWB20Point op;
        op.setParent(&m_parent);
        ASSERT_TRUE(op.loadFile());
        EXPECT_EQ(valueOf(op, {4, 5, 9}, "Red"), 77) << before;
        EXPECT_EQ(valueOf(op, {4, 5, 0}, "Red"), valueOf(*m_op, {4, 5, 0}, "Red")) << before;
    }
}

// --- what is none ---

TEST_F(PictureModeTest, NullIsNoNameAndNoLine) {
    _UsrPicMode_t record = {};
    m_op->putFieldsToData(nullptr, 15, record);
    int source = 3;
    int mode = 10;
    int range = 7;
    EXPECT_FALSE(m_op->parseSection(nullptr, source, mode, range));
    std::vector<_Argument_t> args{{nullptr, -3}};
    EXPECT_TRUE(m_op->loadData(DIMS, args));
    EXPECT_TRUE(m_log.contains("The field [] is invalid.\n"));
}

// --- what the log says ---

TEST_F(PictureModeTest, TheDetailLogShowsWithThePortsLevelWhatIsReadAndStored) {
    DebugOutput::setLevel(DebugOutput::Level::Warning);
    const auto readAndStore = [this](int hue) {
        EXPECT_EQ(valueOf(*m_op, DIMS, "Contrast"), 50);
        EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", hue));
        EXPECT_EQ(m_parent.deliver(), 1);
    };
    readAndStore(1);
    EXPECT_TRUE(m_log.lines().empty());
    const DetailLog on;
    readAndStore(2);
    EXPECT_EQ(m_log.count("[3a7]: contrast = 50, brighness = 50, color = 50, hue = 1, sharpness = 10, "), 1U);
    EXPECT_EQ(m_log.count("[3a7]: contrast = 50, brighness = 50, color = 50, hue = 2, sharpness = 10, "), 1U);
    EXPECT_EQ(m_log.count("Section ID is: [3a7]\n"), 1U) << "of the section that was written";
    EXPECT_TRUE(m_log.contains("section content:\nContrast                 = 0050\n"));
    EXPECT_TRUE(m_op->restoreSetting(DIMS));
    EXPECT_EQ(m_log.count("Section ID is: [3a7]\n"), 2U) << "and of the one that was read";
}

TEST_F(PictureModeTest, EveryFailureIsLoggedWithCategoryAndPath) {
    const auto makeFileOf = [](Copy copy) {
        std::filesystem::remove_all(SettingsRoot::directory(copy));
        std::ofstream(SettingsRoot::directory(copy).erase(SettingsRoot::directory(copy).size() - 1)) << "no directory";
    };
    const auto load = [this] {
        FileUserPictureMode op;
        op.setParent(&m_parent);
        return op.loadFile();
    };
    const auto store = [this](int value) { return storeValue(*m_op, DIMS, "Hue", value) && m_parent.deliver() == 1; };
    const auto backUp = [this] {
        m_op->enterCriticalSection();
        m_op->backupFile(false);
        m_op->leaveCriticalSection();
        return false;
    };
    const struct {
        const char* what;
        Copy where;
        std::function<bool()> fails;
    } cases[] = {
        {"a section that cannot be written", Copy::Current, [&] { return store(10000); }},
        {"a section that is not there", Copy::Current,
         [&] {
             m_root.write(Copy::Current, MODE_FILE, withChecksum(m_text.substr(0, m_text.find(SECTION))));
             return store(2);
         }},
        {"a current copy that cannot be opened", Copy::Current,
         [&] {
             m_root.remove(Copy::Current, MODE_FILE);
             return store(3);
         }},
        {"a record that cannot be read", Copy::Current, [&] { return m_op->restoreSettingFromCurrent(DIMS); }},
        {"a merge without factory values", Copy::Factory,
         [&] {
             m_root.write(Copy::Current, MODE_FILE, withChecksum(replaced(m_text, "v0.4", "v0.3")));
             m_root.remove(Copy::Factory, MODE_FILE);
             return load();
         }},
        {"a record of the factory's", Copy::Factory, [&] { return m_op->restoreSetting(DIMS); }},
        {"a backup", Copy::Current,
         [&] {
             m_root.write(Copy::Current, MODE_FILE, m_text);
             store(4);
             makeFileOf(Copy::Backup);
             return backUp();
         }},
        {"a removal", Copy::Backup, [&] { return m_op->removeFile() && m_op->removeFile(); }},
        {"a recovery", Copy::Factory,
         [&] {
             m_root.write(Copy::Factory, MODE_FILE, m_text);
             makeFileOf(Copy::Current);
             return load();
         }},
    };
    for (const auto& failure : cases) {
        m_log.clear();
        EXPECT_FALSE(failure.fails()) << failure.what;
        const std::string path = m_root.path(failure.where, MODE_FILE);
        EXPECT_TRUE(m_log.contains("[PICTURE_MODE]: in file [" + path + "].\n")) << failure.what;
    }
}

} // namespace
} // namespace td::test
