// What sets the factory picture categories apart, on real files.

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/fileOperator/FileFactoryPictureAspect.h>
#include <dataModule/fileOperator/FileFactoryPictureBacklightCurve.h>
#include <dataModule/fileOperator/FileFactoryPictureColorTuner.h>
#include <dataModule/fileOperator/FileFactoryPictureCurve.h>
#include <dataModule/fileOperator/FileFactoryPictureOverScan.h>
#include <dataModule/fileOperator/FileFactoryPictureScaling.h>
#include <dataModule/fileOperator/FileFactoryPictureScalingPIP.h>
#include <dataModule/fileOperator/FileFactoryPictureScalingPIPPos.h>
#include <dataModule/fileOperator/FileFactoryPictureWB.h>
#include <dataModule/fileOperator/FileFactoryPictureWB20Point.h>
#include <dataModule/fileOperator/FileFactoryPictureWBShift.h>

#include "FakeParent.h"
#include "fileOperator/text/TextLayout.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

using Dims = std::vector<int>;

constexpr const char* WB_FILE = "pic_wb_factory.ini";
const std::string INVALID_VALUE = "[dataModule] The dimension value is invalid.\n";

class FactoryCategoriesTest : public testing::Test {
protected:
    /// An operator whose three copies hold the defaults, changed by nobody.
    template <class Operator>
    std::unique_ptr<Operator> made() {
        auto op = std::make_unique<Operator>();
        op->setParent(&m_parent);
        EXPECT_TRUE(op->initFile(true));
        return op;
    }
    template <class Operator>
    std::unique_ptr<Operator> loaded() {
        auto op = made<Operator>();
        EXPECT_TRUE(op->loadFile());
        return op;
    }
    static void writeSystemFile(const char* path, const std::string& text) {
        const std::filesystem::path target = underRootPrefix(path);
        std::filesystem::create_directories(target.parent_path());
        std::ofstream(target) << text;
    }
    static void setFactoryMode(const std::string& text) { writeSystemFile("/var/local/flash/factory_mode", text); }
    static void setBin(int bin) {
        writeSystemFile(paths::FACTORY_SERVICE_FILE, "[FactoryWB]\nBIN = " + std::to_string(bin) + "\n");
    }
    std::vector<Dims> takeDimensions() {
        std::vector<Dims> all;
        for (const auto& event : m_parent.takePosted())
            all.push_back(event->dimensions());
        return all;
    }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
};

// --- white balance: what a load reads ---

/// White balance files with calibration in the first and last section of each bin: 100 + bin and 200 + bin.
class WhiteBalanceTest : public FactoryCategoriesTest {
protected:
    static constexpr int BINS = 6;
    static Dims first(int bin) { return {bin, 0, 0, 0, 0}; }
    static Dims last(int bin) { return {bin, 15, 9, 1, 5}; }
    static std::string firstHeader(int bin) { return "[" + std::to_string(bin) + "0000]"; }
    static std::string lastHeader(int bin) { return "[" + std::to_string(bin) + "f915]"; }

    void SetUp() override {
        made<FileFactoryPictureWB>();
        std::string text = m_root.read(Copy::Current, WB_FILE);
        for (int bin = 0; bin < BINS; ++bin) {
            text = withValue(text, firstHeader(bin), "RGain", 100 + bin);
            text = withValue(text, firstHeader(bin), "BOffset", 300 + bin);
            text = withValue(text, lastHeader(bin), "RGain", 200 + bin);
        }
        m_calibrated = withChecksum(text);
        for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
            m_root.write(copy, WB_FILE, m_calibrated);
        m_log.clear();
    }
    /// Whether the current copy holds this text; on failure tells where it does not, as the texts are long.
    testing::AssertionResult currentIs(const std::string& expected) const {
        const std::string text = m_root.read(Copy::Current, WB_FILE);
        if (text == expected)
            return testing::AssertionSuccess();
        const auto differs = std::mismatch(text.begin(), text.end(), expected.begin(), expected.end());
        const std::size_t at = static_cast<std::size_t>(differs.first - text.begin());
        return testing::AssertionFailure() << text.size() << " bytes instead of " << expected.size() << ", from " << at
                                           << ": \"" << text.substr(at, 80) << "\" instead of \""
                                           << expected.substr(std::min(at, expected.size()), 80) << '"';
    }
    void load() {
        m_op.setParent(&m_parent);
        ASSERT_TRUE(m_op.loadFile());
    }
    /// The bins whose calibration is in memory.
    std::vector<int> binsInMemory() {
        std::vector<int> bins;
        for (int bin = 0; bin < BINS; ++bin) {
            const int start = valueOf(m_op, first(bin), "RGain");
            const int end = valueOf(m_op, last(bin), "RGain");
            EXPECT_EQ(start == 0, end == 0) << bin;
            if (start != 0) {
                EXPECT_EQ(start, 100 + bin);
                EXPECT_EQ(end, 200 + bin);
                bins.push_back(bin);
            }
        }
        return bins;
    }

    std::string m_calibrated;
    FileFactoryPictureWB m_op;
    GroupArray m_group = {};
    SelfDefinedGroupArray m_range = {};
};

TEST_F(WhiteBalanceTest, OnlyTheExactFactoryStateLoadsAllBins) {
    setBin(4);
    setFactoryMode("On\n");
    load();
    EXPECT_EQ(binsInMemory(), (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(m_log.contains("load field -- 'factory_mode' from flash success, value = On\n"));
    EXPECT_TRUE(m_log.contains("load factory-wb data in normal mode in factory state\n"));

    // State and bin are read afresh by every load, and this category loads again whenever it is asked to.
    for (const char* state : {"on", "ON", "Only", "Onward", ""}) {
        setFactoryMode(state);
        load();
        EXPECT_EQ(binsInMemory(), std::vector<int>{4}) << state;
    }
    setBin(1);
    load();
    EXPECT_EQ(binsInMemory(), std::vector<int>{1});
}

TEST_F(WhiteBalanceTest, WithoutABinTheFirstIsLoaded) {
    load();
    EXPECT_EQ(binsInMemory(), std::vector<int>{0});
    EXPECT_TRUE(m_log.contains("load field -- 'factory_mode' from flash failed.\n"));
    EXPECT_TRUE(m_log.contains("load field -- 'BIN' failed from file ["));
    EXPECT_TRUE(m_log.contains("load factory-wb data in simple mode in user state for bin -- [0].\n"));
    EXPECT_TRUE(m_log.contains("   BIN is [0] when when system starting and loading WB data from file ["));
}

TEST_F(WhiteBalanceTest, ABinThatThereIsNotLoadsNothingButSucceeds) {
    for (const int bin : {6, -1}) {
        setBin(bin);
        load();
        EXPECT_TRUE(binsInMemory().empty()) << bin;
        EXPECT_TRUE(m_log.contains("  BIN [" + std::to_string(bin) + "] is invalid when system starting and loading"));
    }
}

TEST_F(WhiteBalanceTest, TheBinIsReadFromWhicheverCopyIsLoaded) {
    setBin(5);
    m_root.write(Copy::Current, WB_FILE, replaced(m_calibrated, "= 0105", "= 0999"));
    m_root.remove(Copy::Backup, WB_FILE);
    load();
    EXPECT_EQ(binsInMemory(), std::vector<int>{5});
}

TEST_F(WhiteBalanceTest, AFileThatEndsWithinTheBinKeepsWhatWasRead) {
    setBin(5);
    const std::string cut = m_calibrated.substr(0, lineAt(m_calibrated, lastHeader(5)));
    m_root.write(Copy::Current, WB_FILE, withChecksum(cut));
    load();
    EXPECT_EQ(valueOf(m_op, first(5), "RGain"), 105);
    EXPECT_EQ(valueOf(m_op, last(5), "RGain"), 0);
    EXPECT_TRUE(m_log.contains("  read section [5f915] from file ["));

    m_parent.takePosted();
    EXPECT_FALSE(storeValue(m_op, last(5), "RGain", 1));
    EXPECT_EQ(m_parent.posted(), 0U);
}

// --- white balance: nothing that is only on disk is lost ---

TEST_F(WhiteBalanceTest, AStoreToAnotherBinKeepsTheOtherFieldsOfItsSection) {
    setBin(1);
    load();
    ASSERT_TRUE(storeValue(m_op, first(3), "GGain", 77));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_TRUE(currentIs(withChecksum(withValue(m_calibrated, firstHeader(3), "GGain", 77))));
}

TEST_F(WhiteBalanceTest, AStoreAfterARestoreKeepsWhatWasRestored) {
    setBin(1);
    m_root.write(Copy::Factory, WB_FILE, withChecksum(withValue(m_calibrated, firstHeader(3), "RGain", 42)));
    load();
    ASSERT_TRUE(m_op.restoreSetting(first(3)));
    // The restored record has not reached the disk yet.
    ASSERT_TRUE(storeValue(m_op, first(3), "GGain", 77));
    EXPECT_EQ(m_parent.deliver(), 2);
    EXPECT_TRUE(currentIs(
        withChecksum(withValue(withValue(m_calibrated, firstHeader(3), "RGain", 42), firstHeader(3), "GGain", 77))));
}

TEST_F(WhiteBalanceTest, AMergeKeepsAllBinsAndForgetsTheOthersAfterwards) {
    setBin(2);
    std::string older = replaced(m_calibrated, "v0.3", "v0.2");
    older = withChecksum(withValue(withValue(older, firstHeader(2), "RGain", 12), firstHeader(4), "RGain", 14));
    m_root.write(Copy::Current, WB_FILE, older);
    load();
    m_op.waitForMerge();

    EXPECT_TRUE(currentIs(replaced(older, "v0.2", "v0.3")));
    EXPECT_EQ(valueOf(m_op, first(2), "RGain"), 12);
    EXPECT_EQ(valueOf(m_op, last(2), "RGain"), 202);
    for (const int bin : {0, 1, 3, 4, 5})
        EXPECT_EQ(valueOf(m_op, first(bin), "RGain"), 0) << bin;
    ASSERT_TRUE(storeValue(m_op, first(4), "GGain", 77));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_TRUE(currentIs(withChecksum(withValue(replaced(older, "v0.2", "v0.3"), firstHeader(4), "GGain", 77))));
}

TEST_F(WhiteBalanceTest, ANewFileOfTheTableKeepsTheBinsThatAreNotInMemory) {
    setBin(1);
    load();
    ASSERT_TRUE(storeValue(m_op, first(1), "RGain", 5));
    ASSERT_TRUE(storeValue(m_op, first(3), "GGain", 6)) << "of another bin, and not written yet";
    ASSERT_TRUE(m_op.initFile(false));
    EXPECT_TRUE(currentIs(
        withChecksum(withValue(withValue(m_calibrated, firstHeader(1), "RGain", 5), firstHeader(3), "GGain", 6))));
    EXPECT_EQ(valueOf(m_op, first(2), "RGain"), 0);
}

TEST_F(WhiteBalanceTest, ANewFileWithoutACurrentCopyTakesTheOtherBinsFromTheBackup) {
    setBin(1);
    load();
    m_root.remove(Copy::Current, WB_FILE);
    ASSERT_TRUE(m_op.initFile(false));
    EXPECT_TRUE(currentIs(m_calibrated));
}

TEST_F(WhiteBalanceTest, AStoreBetweenRefreshAndResetIsWrittenWholeEvenIfTheTableIsReadAgain) {
    load();
    ASSERT_TRUE(m_op.refreshDataFromManufactory());
    ASSERT_TRUE(storeValue(m_op, first(3), "RGain", 103)) << "the calibrated value: nothing is to change";
    ASSERT_TRUE(storeValue(m_op, first(3), "GGain", 7));
    ASSERT_TRUE(m_op.releaseFile() && m_op.loadFile());
    EXPECT_EQ(valueOf(m_op, first(4), "RGain"), 0) << "bin 0 is in memory again, and what was stored, and only that";
    ASSERT_TRUE(m_op.resetCurrentFileFromManufactoryFile());
    m_parent.deliver();
    EXPECT_EQ(valueOf(m_op, first(3), "RGain"), 103);
    const std::string stored = withChecksum(withValue(m_calibrated, "[30000]\n", "GGain", 7));
    EXPECT_TRUE(currentIs(stored));

    // Written already, and out of memory again, it is completed from the file.
    ASSERT_TRUE(m_op.refreshDataFromManufactory());
    ASSERT_TRUE(storeValue(m_op, first(3), "GGain", 8));
    EXPECT_EQ(m_parent.deliver(), 1);
    ASSERT_TRUE(m_op.releaseFile() && m_op.loadFile());
    ASSERT_TRUE(m_op.resetCurrentFileFromManufactoryFile());
    m_parent.deliver();
    EXPECT_TRUE(currentIs(m_calibrated)) << "and all its fields are the factory's";
}

TEST_F(WhiteBalanceTest, ANewFileOfTheTableIsRefusedWhenTheOtherBinsCannotBeTrusted) {
    setBin(1);
    load();
    for (const std::string& text :
         {replaced(m_calibrated, "= 0104", "= 0999"), replaced(m_calibrated, "v0.3", "v0.2")}) {
        m_root.write(Copy::Current, WB_FILE, text);
        EXPECT_FALSE(m_op.initFile(false));
        EXPECT_TRUE(currentIs(text));
    }
}

TEST_F(WhiteBalanceTest, WithoutAnyCopyANewFileHoldsWhatIsInMemory) {
    setBin(1);
    load();
    for (const Copy copy : {Copy::Current, Copy::Backup, Copy::Factory})
        m_root.remove(copy, WB_FILE);
    ASSERT_TRUE(m_op.initFile(false));
    std::string expected = m_calibrated;
    for (const int bin : {0, 2, 3, 4, 5}) {
        expected = withValue(withValue(expected, firstHeader(bin), "RGain", 0), firstHeader(bin), "BOffset", 0);
        expected = withValue(expected, lastHeader(bin), "RGain", 0);
    }
    EXPECT_TRUE(currentIs(withChecksum(expected)));
}

TEST_F(WhiteBalanceTest, ARestoreThatFailsDoesNotPassForTheRecord) {
    setBin(1);
    load();
    m_root.remove(Copy::Factory, WB_FILE);
    EXPECT_FALSE(m_op.restoreSetting(first(3)));
    EXPECT_EQ(m_parent.posted(), 0U);
    ASSERT_TRUE(storeValue(m_op, first(3), "GGain", 77));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_TRUE(currentIs(withChecksum(withValue(m_calibrated, firstHeader(3), "GGain", 77))));
}

TEST_F(WhiteBalanceTest, InFactoryStateAllBinsAreCheckedAndStayInMemory) {
    setFactoryMode("On");
    m_root.write(Copy::Current, WB_FILE, withChecksum(replaced(m_calibrated, "[50000]\n", "[5g000]\n")));
    load();
    EXPECT_TRUE(currentIs(m_calibrated)) << "the backup's";
    ASSERT_TRUE(m_op.initFile(false));
    EXPECT_TRUE(currentIs(m_calibrated));
    EXPECT_EQ(binsInMemory(), (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

// --- white balance: groups ---

TEST_F(WhiteBalanceTest, AGroupStoreSendsEachRowToEveryDynamicRange) {
    setBin(1);
    load();
    for (int source = 0; source < 16; ++source) {
        for (int i = 0; i < 2; ++i) {
            for (int field = 0; field < 6; ++field)
                m_group[source][i][field] = source * 100 + i * 10 + field;
        }
    }
    ASSERT_TRUE(m_op.storeDataForGroup({3, 9, 9, 1, 0}, {4, 2}, {0, 9, 5}, m_group));
    EXPECT_TRUE(m_log.contains("[dataModule] start to update factory wb data ... \n"));
    EXPECT_TRUE(m_log.contains("[dataModule] update factory wb data completely, elpased time = "));
    ASSERT_EQ(m_parent.posted(), 16U * 2 * 3);
    EXPECT_EQ(m_parent.deliver(), 16 * 2 * 3);
    EXPECT_EQ(valueOf(m_op, {3, 7, 9, 1, 2}, "BOffset"), 715);
    EXPECT_EQ(valueOf(m_op, {3, 7, 8, 1, 2}, "BOffset"), 0);
    EXPECT_EQ(valueOf(m_op, {3, 7, 9, 0, 2}, "BOffset"), 0);

    FileFactoryPictureWB other;
    other.setParent(&m_parent);
    setBin(3);
    ASSERT_TRUE(other.loadFile());
    GroupArray read = {};
    ASSERT_TRUE(other.loadDataForGroup({3, 0, 5, 1, 5}, {2, 4}, read));
    for (int source = 0; source < 16; ++source) {
        EXPECT_EQ(read[source][0][3], source * 100 + 13);
        EXPECT_EQ(read[source][1][0], source * 100);
        EXPECT_EQ(read[source][2][0], 0);
    }
    EXPECT_TRUE(m_log.contains("[dataModule] load factory wb data begin in DATA MODULE start!!!\n"));
    EXPECT_TRUE(m_log.contains("[dataModule] store factory wb data begin in DATA MODULE end!!!\n"));
    EXPECT_EQ(valueOf(other, first(3), "RGain"), 103);
}

TEST_F(WhiteBalanceTest, GroupListsAreCheckedBeforeAnythingIsTouched) {
    load();
    const Dims dims{0, 0, 0, 0, 0};
    const Dims longest{0, 1, 2, 3, 4, 5};
    const Dims allRanges{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    const std::vector<std::pair<Dims, Dims>> refused{{{0, 1, 2, 3, 4, 5, 0}, {0}},
                                                     {{6}, {0}},
                                                     {{0, -1}, {0}},
                                                     {{0}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0}},
                                                     {{0}, {10}},
                                                     {{0}, {-1}}};
    m_group[0][0][0] = 55;
    for (const auto& [list, list2] : refused) {
        m_log.clear();
        EXPECT_FALSE(m_op.storeDataForGroup(dims, list, list2, m_group));
        EXPECT_EQ(m_log.count(INVALID_VALUE), 1U);
    }
    EXPECT_FALSE(m_op.loadDataForGroup(dims, {0, 6}, m_group));
    EXPECT_FALSE(m_op.loadDataForGroup(dims, {0, 1, 2, 3, 4, 5, 0}, m_group));
    EXPECT_FALSE(m_op.loadDataForGroup({0, 16, 0, 0, 0}, {0}, m_group));
    EXPECT_FALSE(m_op.loadDataForGroup({0, 0, 0, 0}, {0}, m_group));
    EXPECT_TRUE(m_log.contains("The dimensions size [4] is invalid ,expected size is: 5.\n"));
    EXPECT_EQ(m_group[0][0][0], 55);
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_EQ(valueOf(m_op, first(0), "RGain"), 100);

    EXPECT_TRUE(m_op.loadDataForGroup(dims, longest, m_group));
    EXPECT_TRUE(m_op.storeDataForGroup(dims, longest, allRanges, m_group));
    EXPECT_EQ(m_parent.posted(), 16U * 6 * 10);
    EXPECT_TRUE(m_op.storeDataForGroup(dims, {}, allRanges, m_group));
    EXPECT_EQ(m_parent.posted(), 16U * 6 * 10);
}

TEST_F(WhiteBalanceTest, ASelfDefinedGroupIsTheRectangleBetweenItsCorners) {
    setFactoryMode("On");
    load();
    for (auto& source : m_range) {
        for (auto& range : source) {
            for (auto& colour : range)
                colour[1] = 7;
        }
    }
    m_range[14][9][5][1] = 8;
    ASSERT_TRUE(m_op.storeDataForSelfDefinedGroup({2, 14, 8, 1, 4}, {5, 15, 9, 0, 5}, m_range));
    const std::vector<Dims> posted = takeDimensions();
    ASSERT_EQ(posted.size(), 2U * 2 * 2);
    EXPECT_EQ(posted.front(), (Dims{2, 14, 8, 1, 4}));
    EXPECT_EQ(posted.back(), (Dims{2, 15, 9, 1, 5}));
    EXPECT_EQ(valueOf(m_op, {2, 14, 9, 1, 5}, "GGain"), 8);
    EXPECT_EQ(valueOf(m_op, {2, 13, 9, 1, 5}, "GGain"), 0);

    SelfDefinedGroupArray read = {};
    read[13][9][5][1] = 99;
    ASSERT_TRUE(m_op.loadDataForSelfDefinedGroup({2, 14, 9, 1, 5}, {2, 15, 9, 1, 5}, read));
    EXPECT_EQ(read[13][9][5][1], 99);
    EXPECT_EQ(read[14][9][5][1], 8);
    EXPECT_EQ(read[15][9][5][1], 7);
    EXPECT_EQ(read[15][9][4][1], 0);
    EXPECT_TRUE(m_log.contains("bin_s[2] source_s[14] dr_s[8] sig_s[1] color_tmp_s[4].\n"));
    EXPECT_TRUE(m_log.contains("bin_e[5] source_e[15] dr_e[9] sig_e[0] color_tmp_e[5].\n"));
    EXPECT_TRUE(m_log.contains("[dataModule] load factory wb data begin in DATA MODULE end!!!\n"));
    EXPECT_TRUE(m_log.contains("[dataModule]  load data completely, elpased time = "));
}

TEST_F(WhiteBalanceTest, SelfDefinedCornersAreChecked) {
    load();
    EXPECT_FALSE(m_op.loadDataForSelfDefinedGroup({0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}, m_range));
    EXPECT_TRUE(
        m_log.contains("The dimensions nStartDim size [4] or nEndDim size [6] is invalid ,expected size is: 5.\n"));
    EXPECT_FALSE(m_op.storeDataForSelfDefinedGroup({6, 0, 0, 0, 0}, {0, 16, 0, 0, 0}, m_range));
    EXPECT_EQ(m_log.count("The group start dimension value is invalid.\n"), 1U);
    EXPECT_FALSE(m_op.storeDataForSelfDefinedGroup({0, 0, 0, 0, 0}, {0, 0, 10, 0, 0}, m_range));
    EXPECT_EQ(m_log.count("The group end dimension value is invalid.\n"), 1U);
    // A start beyond its end is an empty walk.
    EXPECT_TRUE(m_op.storeDataForSelfDefinedGroup({0, 5, 0, 0, 0}, {0, 4, 9, 1, 5}, m_range));
    EXPECT_TRUE(m_op.loadDataForSelfDefinedGroup({0, 0, 0, 0, 1}, {0, 15, 9, 1, 0}, m_range));
    EXPECT_EQ(m_parent.posted(), 0U);
}

TEST_F(WhiteBalanceTest, GroupStoresAreDroppedWhileStoringIsForbidden) {
    load();
    m_parent.storeAllowed = false;
    EXPECT_TRUE(m_op.storeDataForGroup(first(0), {0}, {0}, m_group));
    EXPECT_TRUE(m_op.storeDataForSelfDefinedGroup(first(0), first(0), m_range));
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_EQ(valueOf(m_op, first(0), "RGain"), 100);
}

TEST_F(FactoryCategoriesTest, AustraliaIsCountryOneWithOrWithoutItsVariantBit) {
    const FileFactoryPictureWBShift op;
    EXPECT_FALSE(op.isAUCountry());
    EXPECT_TRUE(m_log.contains("load field -- 'Country' failed from file ["));
    for (const int country : {1, 17}) {
        writeSystemFile(paths::CRITICAL_FILE, "[Critical]\nCountry = " + std::to_string(country) + "\n");
        EXPECT_TRUE(op.isAUCountry()) << country;
    }
    EXPECT_TRUE(m_log.contains("load manufactory country [17] is AU country when load WB data, so will load AU WB"));
    for (const int country : {16, 0, 2, 33, -1}) {
        writeSystemFile(paths::CRITICAL_FILE, "[Critical]\nCountry = " + std::to_string(country) + "\n");
        EXPECT_FALSE(op.isAUCountry()) << country;
    }
}

// --- 20-point tables ---

// --- geometry ---

// --- curves and colour tuner ---

} // namespace
} // namespace td::test
