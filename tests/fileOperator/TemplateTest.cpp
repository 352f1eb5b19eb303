// What every category's operator does with its table and its section, on a category with dimensions and on one without.
// The numbers of the invariants are those of AbstractFileOperator.h.

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileUserPictureGlobal.h>
#include <dataModule/fileOperator/FileUserPictureMode.h>
#include <dataModule/fileOperator/TextLayout.h>

#include "FakeParent.h"
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

TEST_F(PictureModeTest, RefusesDimensionsThatDoNotExist) {
    const std::vector<std::vector<int>> wrong{{},         {3, 10},    {3, 10, 7, 0}, {16, 0, 0}, {-1, 0, 0},
                                              {0, 12, 0}, {0, -1, 0}, {0, 0, 8},     {0, 0, -1}};
    for (const std::vector<int>& dims : wrong) {
        m_log.clear();
        std::vector<_Argument_t> args;
        EXPECT_FALSE(m_op->loadData(dims, args));
        EXPECT_TRUE(args.empty());
        EXPECT_FALSE(m_op->storeData(dims, {{"Hue", 9}}));
        EXPECT_FALSE(m_op->restoreSetting(dims));
        EXPECT_FALSE(m_op->restoreSettingFromCurrent(dims));
        EXPECT_FALSE(m_op->applySettingForAllSources(dims));
        const std::string message = dims.size() == 3 ? "The dimension value is invalid.\n"
                                                     : "The dimensions size [" + std::to_string(dims.size()) +
                                                           "] is invalid ,expected size is: 3.\n";
        EXPECT_EQ(m_log.count(message), 5U);
    }
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_EQ(current(), m_text);
    EXPECT_TRUE(storeValue(*m_op, {15, 11, 7}, "Hue", 9));
}

TEST_F(PictureGlobalTest, TakesNoDimensions) {
    std::vector<_Argument_t> args;
    EXPECT_FALSE(m_op->loadData({0}, args));
    EXPECT_TRUE(m_log.contains("The dimensions size [1] is invalid ,expected size is: 0.\n"));
    EXPECT_FALSE(m_op->storeData({0}, {{"RGBOnly", 1}}));
    EXPECT_FALSE(m_op->restoreSetting({0}));
    EXPECT_TRUE(m_op->checkDimension());
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

// --- what a category does not offer ---

TEST_F(PictureGlobalTest, AnswersForWhatItDoesNotOffer) {
    const std::vector<std::function<bool()>> unsupported{
        [&] { return m_op->restoreSettingForAllSource({}); },
        [&] { return m_op->applySettingForAllSources({}); },
        [&] { return m_op->applySettingForAllMode({}); },
    };
    for (std::size_t i = 0; i < unsupported.size(); ++i) {
        EXPECT_TRUE(unsupported[i]());
        EXPECT_EQ(m_log.count("[PICTURE_GLOBAL]: module hasn't completed yet.\n"), i + 1);
    }
}

TEST_F(PictureModeTest, GroupOperationsDoNothing) {
    GroupArray group = {};
    SelfDefinedGroupArray selfDefined = {};
    EXPECT_TRUE(m_op->restoreSettingForAllSource(DIMS));
    EXPECT_TRUE(m_op->loadDataForGroup(DIMS, {}, group));
    EXPECT_TRUE(m_op->storeDataForGroup(DIMS, {}, {}, group));
    EXPECT_TRUE(m_op->loadDataForSelfDefinedGroup(DIMS, DIMS, selfDefined));
    EXPECT_TRUE(m_op->storeDataForSelfDefinedGroup(DIMS, DIMS, selfDefined));
    EXPECT_TRUE(m_log.lines().empty()) << "silently";
    EXPECT_TRUE(m_op->applySettingForAllMode(DIMS));
    EXPECT_TRUE(m_log.contains("[PICTURE_MODE]: module hasn't completed yet.\n"));
    EXPECT_EQ(m_parent.posted(), 0U);
}

// --- detail log ---

TEST_F(PictureModeTest, DumpsARecordWhileTheDetailLogIsOn) {
    const std::string dump =
        "[3a7]: contrast = 50, brighness = 50, color = 50, hue = -1, sharpness = 10, ab = 1, bl = 100, dc = 2, "
        "ColorTemp = 0, MEMC = 5, Judder = 10, Blur = 10, NoiseReduction = 2, MPEG_NR = 3, ColorSpace = 1, "
        "ColorTuner = 0, SensorEnable = 0, MinBacklight = 20, Gamma = 3, sensorCCTEnable = 0, HDRDTM = 0, DolbyDD = 0, "
        "DolbyPD = 0, Gradient = 0. \n";
    std::vector<_Argument_t> args;
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", -1));
    EXPECT_TRUE(m_op->loadData(DIMS, args));
    EXPECT_FALSE(m_log.contains("contrast"));
    const DetailLog on;
    EXPECT_TRUE(m_op->loadData(DIMS, args));
    EXPECT_EQ(m_log.count(dump), 1U);
    EXPECT_TRUE(storeValue(*m_op, DIMS, "Hue", -1));
    EXPECT_EQ(m_log.count(dump), 2U);
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_TRUE(m_log.contains("section content:\nContrast                 = 0050\n"));
    EXPECT_EQ(m_log.count("Section ID is: [3a7]\n"), 1U) << "of the section that was written";
    EXPECT_TRUE(m_op->restoreSetting(DIMS));
    EXPECT_EQ(m_log.count("Section ID is: [3a7]\n"), 2U) << "and of the one that was read";
    for (const LogCapture::Line& line : m_log.lines()) {
        if (line.text.find("contrast = ") != std::string::npos) {
            EXPECT_EQ(line.level, DebugOutput::Level::Info);
        }
    }
}

// --- the typed members ---

TEST_F(PictureModeTest, TypedMembersTranslate) {
    int source = 3;
    int mode = 10;
    int range = 7;
    EXPECT_TRUE(m_op->checkDimension(source, mode, range));
    char text[text::SECTION_BUFFER];
    EXPECT_EQ(m_op->buildSectionId(source, mode, range, text, sizeof text), 6);
    EXPECT_STREQ(text, SECTION);
    EXPECT_TRUE(m_op->parseSection("[fb6]\n", source, mode, range));
    EXPECT_EQ((std::vector<int>{source, mode, range}), (std::vector<int>{15, 11, 6}));
    for (const std::vector<int>& wrong : {std::vector<int>{16, 0, 0}, {0, 12, 0}, {0, 0, 8}, {-1, 0, 0}}) {
        std::vector<int> dims = wrong;
        EXPECT_FALSE(m_op->checkDimension(dims[0], dims[1], dims[2]));
    }

    _UsrPicMode_t record = {};
    bool changed = false;
    m_op->putFieldsToData({{"Contrast", 0}, {"Nothing", 1}}, record, changed);
    EXPECT_FALSE(changed);
    m_op->putFieldsToData({{"Contrast", 12}, {"Gradient", -3}}, record, changed);
    EXPECT_TRUE(changed);
    m_op->putFieldsToData("Brightness", 13, record);
    m_op->putFieldsToData("Nothing", 14, record);
    m_op->putFieldsToData(nullptr, 15, record);
    EXPECT_FALSE(m_op->parseSection(nullptr, source, mode, range));
    EXPECT_EQ(record.contrast, 12);
    EXPECT_EQ(record.brightness, 13);
    EXPECT_EQ(record.gradient, -3);
    std::vector<_Argument_t> args{{"Gradient", 0}};
    m_op->getPartFieldsFromData(record, args);
    EXPECT_EQ(args[0].value, -3);
    m_op->getSectionFieldsFromData(record, args);
    EXPECT_EQ(args.size(), 25U);
    EXPECT_EQ(m_op->buildSectionContent(record, text, sizeof text), 768);
    EXPECT_EQ(std::string(text).substr(0, 64), keyLine("Contrast", "0012") + keyLine("Brightness", "0013"));
    EXPECT_EQ(std::string(text).substr(736), keyLine("Gradient", "-003"));

    // A section written and read back at its place in the file.
    m_op->enterCriticalSection();
    EXPECT_TRUE(m_op->searchSectionId(DIMS));
    EXPECT_TRUE(m_op->writeSection(3, 10, 7, record, false));
    EXPECT_TRUE(m_op->searchSectionId(DIMS));
    _UsrPicMode_t read = {};
    EXPECT_TRUE(m_op->readSection(read));
    EXPECT_EQ(std::memcmp(&read, &record, sizeof record), 0);
    char line[text::LINE_BUFFER] = {};
    bool endOfFile = false;
    _UsrPicMode_t byKey = {};
    EXPECT_TRUE(m_op->searchSectionId(DIMS));
    EXPECT_TRUE(m_op->readSection_OTA(line, byKey, endOfFile));
    EXPECT_EQ(std::memcmp(&byKey, &record, sizeof record), 0);
    EXPECT_STREQ(line, "[3b0]\n");
    EXPECT_FALSE(endOfFile);
    EXPECT_TRUE(m_op->searchSectionId({15, 11, 7}));
    EXPECT_TRUE(m_op->readSection_OTA(line, byKey, endOfFile));
    EXPECT_TRUE(endOfFile);
    record.hue = 10000;
    EXPECT_TRUE(m_op->searchSectionId(DIMS));
    EXPECT_FALSE(m_op->writeSection(3, 10, 7, record, true));
    m_op->leaveCriticalSection();
}

} // namespace
} // namespace td::test
