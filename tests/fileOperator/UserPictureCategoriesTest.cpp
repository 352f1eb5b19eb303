// What tells the user's picture categories from each other, on real files.

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileUserPictureBacklightWB.h>
#include <dataModule/fileOperator/FileUserPictureCCTWB.h>
#include <dataModule/fileOperator/FileUserPictureColorTuner.h>
#include <dataModule/fileOperator/FileUserPictureContentDetect.h>
#include <dataModule/fileOperator/FileUserPictureDolbyIQMode.h>
#include <dataModule/fileOperator/FileUserPictureGammaCalibrationDarkDetail.h>
#include <dataModule/fileOperator/FileUserPictureLightSensorPLC.h>
#include <dataModule/fileOperator/FileUserPictureLightSensorWB20Gain.h>
#include <dataModule/fileOperator/FileUserPictureLowBlueLight.h>
#include <dataModule/fileOperator/FileUserPictureModeEx.h>
#include <dataModule/fileOperator/FileUserPictureModeSelf.h>
#include <dataModule/fileOperator/FileUserPictureSourceOnly.h>
#include <dataModule/fileOperator/FileUserPictureWB10Point.h>
#include <dataModule/fileOperator/FileUserPictureWB20Gain.h>
#include <dataModule/fileOperator/FileUserPictureWB20Point.h>
#include <dataModule/fileOperator/FileUserPictureWB2Point.h>
#include <dataModule/fileOperator/FileUserPictureXVYCC.h>

#include "FakeParent.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

using Dims = std::vector<int>;
using DimsSet = std::set<Dims>;

class UserPictureTest : public testing::Test {
protected:
    /// Makes current, backup and factory copy of a category, all zero.
    template <class Operator>
    void create(Operator& op) {
        op.setParent(&m_parent);
        ASSERT_TRUE(op.initFile(true));
    }
    template <class Operator>
    void createAndLoad(Operator& op) {
        create(op);
        ASSERT_TRUE(op.loadFile());
    }
    /// Stores without the file taking notice.
    void storeInMemory(IFileOperator& op, const Dims& dims, const char* field, int value) {
        ASSERT_TRUE(storeValue(op, dims, field, value));
        m_parent.takePosted();
    }
    /// Takes the posted events: the records they are for, each of which must have been posted once.
    DimsSet takePostedDims() {
        const auto events = m_parent.takePosted();
        DimsSet dims;
        for (const auto& event : events)
            dims.insert(event->dimensions());
        EXPECT_EQ(dims.size(), events.size());
        return dims;
    }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
};

// --- records taken back for all sources ---

TEST_F(UserPictureTest, RestoreForAllSourcesPostsWhatDiffersFromTheGivenRecord) {
    FileUserPictureWB2Point op;
    create(op);
    std::string factory = m_root.read(Copy::Factory, "pic_wb_2p_usr.ini");
    factory = withValue(factory, "[21]", "RGain", 5);
    factory = withValue(factory, "[91]", "RGain", 3);
    m_root.write(Copy::Factory, "pic_wb_2p_usr.ini", withChecksum(factory));
    ASSERT_TRUE(op.loadFile());
    storeInMemory(op, {4, 1}, "RGain", 5);

    ASSERT_TRUE(op.restoreSettingForAllSource({4, 1}));
    EXPECT_EQ(takePostedDims(), (DimsSet{{0, 1}, {1, 1}, {3, 1}, {9, 1}}));
    EXPECT_EQ(valueOf(op, {2, 1}, "RGain"), 5) << "equal to the given record: reloaded, though not posted";
    EXPECT_EQ(valueOf(op, {4, 1}, "RGain"), 0);
    EXPECT_EQ(valueOf(op, {9, 1}, "RGain"), 3);
}

TEST_F(UserPictureTest, RestoreForAllSourcesStopsAtTheFirstFailure) {
    FileUserPictureLightSensorWB20Gain op;
    createAndLoad(op);
    m_root.remove(Copy::Factory, "pic_light_sensor_WB_20_gain_usr.ini");
    storeInMemory(op, {1, 4}, "WBGainValue", 5);
    EXPECT_FALSE(op.restoreSettingForAllSource({1, 4}));
    EXPECT_EQ(m_log.count("Load data from file [pic_light_sensor_WB_20_gain_usr.ini] failed when restore setting\n"),
              1U);
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_EQ(valueOf(op, {1, 4}, "WBGainValue"), 5);
    // The next store finds its way back to the current copy.
    ASSERT_TRUE(storeValue(op, {1, 4}, "WBGainValue", 6));
    EXPECT_EQ(m_parent.deliver(), 1);
    const std::string current = m_root.read(Copy::Current, "pic_light_sensor_WB_20_gain_usr.ini");
    EXPECT_NE(current.find("[14]\n" + keyLine("WBGainValue", "0006")), std::string::npos);

    // The factory copy is left in use, which costs no backup.
    EXPECT_FALSE(op.restoreSettingForAllSource({1, 4}));
    const bool entered = op.tryEnterCriticalSection();
    ASSERT_TRUE(entered);
    if (entered) {
        EXPECT_TRUE(op.backupFile(false));
        op.leaveCriticalSection();
    }
    EXPECT_EQ(m_root.read(Copy::Backup, "pic_light_sensor_WB_20_gain_usr.ini"),
              m_root.read(Copy::Current, "pic_light_sensor_WB_20_gain_usr.ini"));
}

// --- section ids ---

template <class Operator, class... Index>
std::string idOf(Index... indices) {
    Operator op;
    char id[16] = {};
    const int length = op.buildSectionId(indices..., id, sizeof id);
    EXPECT_EQ(static_cast<std::size_t>(length), std::string(id).size());
    return id;
}

TEST(UserPictureSectionId, GoesOnBeyondHexadecimalDigits) {
    EXPECT_EQ(idOf<FileUserPictureWB20Point>(4, 5, 19), "[45j]\n");
    EXPECT_EQ(idOf<FileUserPictureWB20Point>(4, 5, 10), "[45a]\n");
    EXPECT_EQ(idOf<FileUserPictureColorTuner>(15, 11, 7, 6), "[fb76]\n");
    EXPECT_EQ(idOf<FileUserPictureBacklightWB>(10), "[a]\n");
    EXPECT_EQ(idOf<FileUserPictureGammaCalibrationDarkDetail>(4, 19), "[4j]\n");
    EXPECT_EQ(idOf<FileUserPictureDolbyIQMode>(15), "[f]\n");
    EXPECT_EQ(idOf<FileUserPictureLightSensorWB20Gain>(3, 12), "[3c]\n");
    EXPECT_EQ(idOf<FileUserPictureLightSensorPLC>(7), "[7]\n");
}

TEST(UserPictureSectionId, LeavesALevelThatIsNeitherDigitNorSmallLetter) {
    FileUserPictureWB20Gain op;
    int source = -1;
    int mode = -1;
    int level = 8;
    EXPECT_TRUE(op.parseSection("[45A]\n", source, mode, level));
    EXPECT_EQ((Dims{source, mode, level}), (Dims{4, 5, 8}));
    EXPECT_TRUE(op.parseSection("[45j]\n", source, mode, level));
    EXPECT_EQ(level, 19);
    EXPECT_TRUE(op.parseSection("[45z]\n", source, mode, level));
    EXPECT_FALSE(op.checkDimension(source, mode, level));

    // The ten points are hexadecimal digits and nothing else.
    FileUserPictureWB10Point ten;
    EXPECT_FALSE(ten.parseSection("[45j]\n", source, mode, level));
    EXPECT_TRUE(ten.parseSection("[45A]\n", source, mode, level));
    EXPECT_EQ(level, 10);
    EXPECT_FALSE(ten.checkDimension(source, mode, level));
}

// --- PICTURE_MODE_EX: the lopsided test for equality ---

TEST_F(UserPictureTest, ModeExComparesTheOthersReserve9WithTwoOfTheGivenRecord) {
    FileUserPictureModeEx op;
    createAndLoad(op);
    const Dims given{4, 3, 2};
    // The other's own Reserve10 is not compared, so a difference there stays.
    storeInMemory(op, {9, 3, 2}, "Reserve10", 4);
    ASSERT_TRUE(op.applySettingForAllSources(given));
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_EQ(valueOf(op, {9, 3, 2}, "Reserve10"), 4);

    // While Reserve9 and Reserve10 of the given record differ, nothing ever counts as equal to it.
    storeInMemory(op, given, "Reserve10", 1);
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(op.applySettingForAllSources(given));
        EXPECT_EQ(takePostedDims().size(), 15U);
    }
    EXPECT_EQ(valueOf(op, {9, 3, 2}, "Reserve10"), 1);
    EXPECT_EQ(valueOf(op, {9, 3, 3}, "Reserve10"), 0);

    storeInMemory(op, given, "Reserve9", 1);
    ASSERT_TRUE(op.applySettingForAllSources(given));
    EXPECT_EQ(takePostedDims().size(), 15U);
    ASSERT_TRUE(op.applySettingForAllSources(given));
    EXPECT_EQ(m_parent.posted(), 0U);
}

// --- PICTURE_SOURCE_ONLY: the factory copy of the user's country ---

constexpr const char* ORDINARY = "pic_sourceonly_usr.ini";
constexpr const char* UK_FILE = "pic_sourceonly_usr_uk.ini";
constexpr const char* NO_STANDARD_FILE = "pic_sourceonly_usr_nostd.ini";
constexpr const char* NO_STANDARD_1_FILE = "pic_sourceonly_usr_nostd1.ini";

struct CountryCase {
    int country;
    int value;           ///< of the factory file that has to be used
    const char* message; ///< empty: none
};

class SourceOnlyCountryTest : public UserPictureTest, public testing::WithParamInterface<CountryCase> {
protected:
    void SetUp() override {
        create(m_op);
        const std::string factory = m_root.read(Copy::Factory, ORDINARY);
        int value = 0;
        for (const char* file : {ORDINARY, UK_FILE, NO_STANDARD_FILE, NO_STANDARD_1_FILE})
            m_root.write(Copy::Factory, file, withChecksum(withValue(factory, "[41]", "Aspect_Ratio", ++value)));
        m_parent.reservedValue = GetParam().country;
        m_log.clear();
    }
    /// The choice is told once, as progress, with a second blank before it.
    void expectMessage() {
        const std::string text = GetParam().message;
        EXPECT_EQ(m_log.count("user country is"), text.empty() ? 0U : 1U);
        for (const LogCapture::Line& line : m_log.lines()) {
            if (line.text.find("user country is") != std::string::npos) {
                EXPECT_NE(line.text.find("[dataModule]  " + text), std::string::npos) << line.text;
                EXPECT_EQ(line.level, DebugOutput::Level::Info);
            }
        }
        m_log.clear();
    }

    FileUserPictureSourceOnly m_op;
};

TEST_P(SourceOnlyCountryTest, ServesEveryWayFromTheFactoryDirectory) {
    const int expected = GetParam().value;
    m_root.remove(Copy::Current, ORDINARY);
    m_root.remove(Copy::Backup, ORDINARY);
    ASSERT_TRUE(m_op.loadFile());
    expectMessage();
    EXPECT_EQ(valueOf(m_op, {4, 1}, "Aspect_Ratio"), expected);
    EXPECT_NE(m_root.read(Copy::Current, ORDINARY).find(keyLine("Aspect_Ratio", "000" + std::to_string(expected))),
              std::string::npos);

    storeInMemory(m_op, {4, 1}, "Aspect_Ratio", 8);
    m_log.clear();
    ASSERT_TRUE(m_op.restoreSetting({4, 1}));
    expectMessage();
    EXPECT_EQ(valueOf(m_op, {4, 1}, "Aspect_Ratio"), expected);

    storeInMemory(m_op, {4, 1}, "Aspect_Ratio", 8);
    ASSERT_TRUE(m_op.refreshDataFromManufactory());
    EXPECT_EQ(valueOf(m_op, {4, 1}, "Aspect_Ratio"), expected);

    m_root.write(Copy::Current, ORDINARY, "");
    m_log.clear();
    ASSERT_TRUE(m_op.resetCurrentFileFromManufactoryFile());
    expectMessage();
    EXPECT_NE(m_root.read(Copy::Current, ORDINARY).find(keyLine("Aspect_Ratio", "000" + std::to_string(expected))),
              std::string::npos);
    EXPECT_FALSE(m_root.exists(Copy::Current, UK_FILE));
}

INSTANTIATE_TEST_SUITE_P(
    Countries, SourceOnlyCountryTest,
    testing::Values(
        CountryCase{0, 1, ""}, CountryCase{139, 1, ""},
        CountryCase{9, 2, "user country is UK , and will used the source-only file:[pic_sourceonly_usr_uk.ini] \n"},
        CountryCase{40, 3,
                    "user country is CROTIA , and will used the source-only file:[pic_sourceonly_usr_nostd.ini] \n"},
        CountryCase{60, 4, "user country is:60, and will used the source-only file:[pic_sourceonly_usr_nostd1.ini] \n"},
        CountryCase{138, 4,
                    "user country is:138, and will used the source-only file:[pic_sourceonly_usr_nostd1.ini] \n"}),
    [](const auto& tested) { return std::to_string(tested.param.country); });

TEST_F(UserPictureTest, SourceOnlyWithoutTheCountrysFileTakesTheOrdinaryOne) {
    FileUserPictureSourceOnly op;
    create(op);
    m_parent.reservedValue = 40;
    m_root.remove(Copy::Current, ORDINARY);
    m_root.remove(Copy::Backup, ORDINARY);
    EXPECT_TRUE(op.loadFile());
    EXPECT_EQ(m_log.count("user country is"), 0U);
}

TEST_F(UserPictureTest, SourceOnlySwitchSucceedsWithoutAFileAndTheRestoreDoesNot) {
    FileUserPictureSourceOnly op;
    createAndLoad(op);
    m_root.remove(Copy::Factory, ORDINARY);
    storeInMemory(op, {4, 1}, "Aspect_Ratio", 8);
    op.enterCriticalSection();
    EXPECT_TRUE(op.switchToManufactory());
    op.leaveCriticalSection();
    EXPECT_FALSE(op.restoreSetting({4, 1}));
    EXPECT_FALSE(op.refreshDataFromManufactory());
    EXPECT_EQ(valueOf(op, {4, 1}, "Aspect_Ratio"), 8);
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_GE(m_log.count("bytes failed when searchSection[4,1].\n"), 1U);
}

// --- messages of some stores ---

TEST_F(UserPictureTest, SomeStoresTellTheirIndices) {
    FileUserPictureSourceOnly sourceOnly;
    createAndLoad(sourceOnly);
    m_log.clear();
    ASSERT_TRUE(storeValue(sourceOnly, {15, 1}, "OverScanEnable", 1));
    EXPECT_EQ(m_log.count("The dimension value info: source = 15, signalType = 1.\n"), 1U);
    EXPECT_EQ(m_log.count("store data completely, elpased time = "), 1U);
    m_log.clear();
    EXPECT_FALSE(storeValue(sourceOnly, {16, 1}, "OverScanEnable", 1));
    EXPECT_EQ(m_log.count("The dimension value is invalid, source = 16, signalType = 1.\n"), 1U);
    EXPECT_EQ(m_log.count("The dimension value is invalid.\n"), 1U);
    EXPECT_FALSE(storeValue(sourceOnly, {16}, "OverScanEnable", 1));
    EXPECT_EQ(m_log.count("The dimension value is invalid, "), 1U);
    EXPECT_EQ(m_log.count("store data completely"), 0U);

    FileUserPictureContentDetect contentDetect;
    createAndLoad(contentDetect);
    m_log.clear();
    ASSERT_TRUE(storeValue(contentDetect, {15}, "ALLM", 1));
    EXPECT_EQ(m_log.count("The dimension info, source = 15.\n"), 1U);
    EXPECT_EQ(m_log.count("The dimension value info: source = 15.\n"), 1U);
    EXPECT_EQ(m_log.count("store data completely"), 0U);
    EXPECT_FALSE(storeValue(contentDetect, {-1}, "ALLM", 1));
    EXPECT_EQ(m_log.count("The dimension value is invalid, source = -1.\n"), 1U);

    FileUserPictureModeSelf modeSelf;
    createAndLoad(modeSelf);
    m_log.clear();
    ASSERT_TRUE(storeValue(modeSelf, {15, 3}, "PictureMode", 1));
    EXPECT_FALSE(storeValue(modeSelf, {15, 4}, "PictureMode", 1));
    EXPECT_EQ(m_log.count("dimension value info"), 0U);
    EXPECT_EQ(m_log.count("source = "), 0U);
}

// --- PICTURE_XVYCC: hexadecimal values ---

TEST_F(UserPictureTest, XvyccValuesAreHexadecimal) {
    const char* file = "pic_xvycc_factory.ini";
    FileUserPictureXVYCC op;
    createAndLoad(op);
    ASSERT_TRUE(op.storeData({5}, {{"XVYCC_0", 255}, {"XVYCC_8", 0xFFFFF}}));
    EXPECT_EQ(m_parent.deliver(), 1);
    const std::string text = m_root.read(Copy::Current, file);
    const std::string section = text.substr(text.rfind("[5]\n"));
    EXPECT_EQ(section.size(), 4U + 9U * 35U);
    EXPECT_EQ(section.substr(4, 70), "XVYCC_0                  = 0x   ff\n"
                                     "XVYCC_1                  = 0x    0\n");
    EXPECT_EQ(section.substr(section.size() - 8), "0xfffff\n");
    EXPECT_TRUE(checksumIsRight(text));

    FileUserPictureXVYCC again;
    again.setParent(&m_parent);
    ASSERT_TRUE(again.loadFile());
    EXPECT_EQ(valueOf(again, {5}, "XVYCC_0"), 255);
    EXPECT_EQ(valueOf(again, {5}, "XVYCC_8"), 0xFFFFF);

    // More than five digits stay in memory; so does a negative value.
    for (const int wide : {0x100000, -1}) {
        ASSERT_TRUE(storeValue(op, {5}, "XVYCC_0", wide));
        EXPECT_EQ(m_parent.deliver(), 0);
        EXPECT_EQ(m_root.read(Copy::Current, file), text);
    }
}

// --- PICTURE_LOW_BLUE_LIGHT: two sets of names ---

TEST_F(UserPictureTest, LowBlueLightIsAskedByOtherNamesThanItsKeys) {
    FileUserPictureLowBlueLight op;
    createAndLoad(op);
    ASSERT_TRUE(storeValue(op, {3, 4}, "Lowbluelightrgain", 12));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_NE(m_root.read(Copy::Current, "pic_low_blue_light_usr.ini").find("[34]\n" + keyLine("RGain", "0012")),
              std::string::npos);
    ASSERT_TRUE(storeValue(op, {3, 4}, "RGain", 13));
    EXPECT_EQ(m_log.count("The field [RGain] is invalid.\n"), 1U);
    std::vector<_Argument_t> all;
    ASSERT_TRUE(op.loadData({3, 4}, all));
    ASSERT_EQ(all.size(), 3U);
    EXPECT_STREQ(all[0].name, "Lowbluelightrgain");
    EXPECT_EQ(all[0].value, 12);
    EXPECT_STREQ(all[2].name, "Lowbluelightbgain");
}

} // namespace
} // namespace td::test
