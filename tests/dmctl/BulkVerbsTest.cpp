// restore, apply, factory-reset and first-boot.
#include <filesystem>
#include <string>
#include <vector>

#include "dmctl/DmctlFixture.h"

namespace td::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

class BulkVerbsTest : public DmctlTest {
protected:
    /// A file of a category in all three copies.
    void makeFile(_DataCategory_t category, const std::vector<int>& table) const {
        for (const std::string& directory : {CURRENT, BACKUP, FACTORY})
            makeCopy(category, directory, table);
    }
    void makeCopy(_DataCategory_t category, const std::string& directory, const std::vector<int>& table) const {
        m_root.write(directory + layoutOf(category)->file, wholeFile(*layoutOf(category), "", table));
    }
    void makeAllFiles() const { ASSERT_EQ(run({"init"}).code, 0); }
    int numberOfFiles(const std::string& directory) const {
        const std::filesystem::directory_iterator listing(m_root.file(directory));
        return static_cast<int>(std::distance(begin(listing), end(listing)));
    }
};

TEST_F(BulkVerbsTest, RestoreTakesTheSelectedRecordsFromTheFactoryCopy) {
    makeFiles();
    ASSERT_EQ(run({"set", "PICTURE_MODE", "HDMI*", "MOVIE,GAME", "0", "Contrast=55", "Hue=3"}).code, 0);
    const Result one = run({"restore", "PICTURE_MODE", "HDMI1", "MOVIE", "0"});
    EXPECT_EQ(one.output, "Contrast  55 -> 50\nHue       3 -> 0\n"
                          "2 values changed, 22 unchanged: pic_mode_usr.ini holds all of it.\n");
    const Json many = runJson({"restore", "PICTURE_MODE", "HDMI*", "MOVIE", "all"});
    EXPECT_EQ(many["changedValues"], 6);
    EXPECT_EQ(many["unchangedValues"], 4 * 8 * 24 - 6);
    EXPECT_EQ(run({"get", "PICTURE_MODE", "HDMI1", "GAME", "0", "Contrast"}).output, "Contrast = 55\n");

    EXPECT_EQ(runJson({"restore", "PICTURE_MODE", "HDMI*", "GAME", "all"})["changedValues"], 8);
    ASSERT_EQ(run({"set", "PICTURE_MODE", "AMAZON", "all", "0", "Contrast=55"}).code, 0);
    EXPECT_EQ(runJson({"restore", "PICTURE_MODE", "--all"})["changedValues"], 12);
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), m_root.read(FACTORY + MODE_FILE));
}

TEST_F(BulkVerbsTest, RestoreForAllSourcesReachesEveryRecordThatDiffers) {
    // Factory values that differ from source to source, and a current copy that has the addressed record's everywhere.
    const CategoryLayout& layout = *layoutOf(PICTURE_WB_2_POINT);
    std::vector<int> factory = defaultTable(layout);
    for (std::size_t i = 0; i < factory.size(); ++i)
        factory[i] = static_cast<int>(i) % 90;
    makeFile(PICTURE_WB_2_POINT, factory);
    makeCopy(PICTURE_WB_2_POINT, CURRENT, std::vector<int>(factory.size(), 77));
    const Json restored = runJson({"restore", "PICTURE_WB_2_POINT", "VGA", "GAME", "--all-sources"});
    EXPECT_EQ(restored["changed"].size(), 16U);
    const Json all = runJson({"get", "PICTURE_WB_2_POINT", "all", "all"})["records"];
    for (std::size_t record = 0; record < all.size(); ++record) {
        const bool meant = all[record]["record"]["picturemode"]["name"] == "GAME";
        for (const Field& field : layout.fields) {
            const std::size_t at = record * layout.fields.size() + static_cast<std::size_t>(field.position);
            ASSERT_EQ(all[record]["fields"][field.argumentName()], meant ? factory[at] : 77) << record;
        }
    }
}

TEST_F(BulkVerbsTest, RestoreFromCurrentReadsAgainAndChangesNothing) {
    makeFiles();
    ASSERT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Contrast=55"}).code, 0);
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    EXPECT_EQ(runJson({"restore", "PICTURE_MODE", "0", "0", "all", "--from", "current"})["read"], 8);
    EXPECT_EQ(runJson({"restore", "PICTURE_MODE", "--all", "--from", "current"})["read"], 1536);
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), before);
}

TEST_F(BulkVerbsTest, ApplyCopiesARecord) {
    makeFiles();
    ASSERT_EQ(run({"set", "PICTURE_MODE", "HDMI1", "MOVIE,GAME", "0", "Contrast=55"}).code, 0);
    const Json applied = runJson({"apply", "PICTURE_MODE", "HDMI1", "MOVIE", "0", "--all-sources"});
    EXPECT_EQ(applied["changed"].size(), 15U);
    EXPECT_EQ(applied["unchangedValues"], 15 * 23);
    EXPECT_THAT(run({"get", "PICTURE_MODE", "AMAZON", "MOVIE,GAME", "0", "Contrast"}).output,
                AllOf(HasSubstr("MOVIE        SDR_FHD  55"), HasSubstr("GAME         SDR_FHD  50")));

    const CategoryLayout& layout = *layoutOf(PICTURE_WB_2_POINT);
    makeFile(PICTURE_WB_2_POINT, defaultTable(layout));
    ASSERT_EQ(run({"set", "PICTURE_WB_2_POINT", "VGA", "GAME", "RGain=9"}).code, 0);
    EXPECT_EQ(runJson({"apply", "PICTURE_WB_2_POINT", "VGA", "GAME", "--all-modes"})["changedValues"], 16 * 12 - 1);
}

TEST_F(BulkVerbsTest, ApplyGoesByTheCategorysOwnEquality) {
    // Of this category's last two fields a record is compared in a lopsided way: here none counts as equal.
    const CategoryLayout& layout = *layoutOf(PICTURE_MODE_EX);
    makeFile(PICTURE_MODE_EX, defaultTable(layout));
    std::vector<std::string> line{"set", "PICTURE_MODE_EX"};
    line.insert(line.end(), layout.dimensions.size(), "0");
    line.push_back(std::string(layout.fields.back().argumentName()) + "=9");
    ASSERT_EQ(run(line).code, 0);
    line[0] = "apply";
    line.back() = "--all-sources";
    const Result applied = run(line);
    EXPECT_EQ(applied.code, 0) << applied.errors;
    EXPECT_THAT(applied.output, HasSubstr("15 values changed"));
}

TEST_F(BulkVerbsTest, WhatACategoryDoesNotOfferIsAnError) {
    makeFiles();
    makeFile(PICTURE_FACTORY_ASPECT, defaultTable(*layoutOf(PICTURE_FACTORY_ASPECT)));
    const std::vector<std::pair<std::vector<std::string>, int>> lines{
        {{"restore", "PICTURE_MODE", "0", "0", "0", "--all-sources"}, 1},
        {{"restore", "PICTURE_FACTORY_ASPECT", "0", "--from", "current"}, 1},
        {{"apply", "PICTURE_MODE", "0", "0", "0", "--all-modes"}, 1},
        {{"apply", "PICTURE_GLOBAL", "--all-sources"}, 1},
        {{"apply", "PICTURE_MODE", "0", "0", "0"}, 2},
        {{"apply", "PICTURE_MODE", "0,1", "0", "0", "--all-sources"}, 2},
        {{"apply", "PICTURE_MODE", "0", "0", "0", "--all-sources", "--all-modes"}, 2},
        {{"restore", "PICTURE_MODE", "0", "0", "0", "--from", "backup"}, 2},
        {{"restore", "PICTURE_MODE", "0", "--all"}, 2},
        {{"restore", "PICTURE_MODE", "0", "0", "0", "0"}, 2},
        {{"restore", "PICTURE_GLOBAL", "0"}, 2},
        {{"restore", "PICTURE_WB_2_POINT", "0", "0", "--from", "current", "--all-sources"}, 2},
    };
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    for (const auto& [words, code] : lines) {
        const Result result = run(words);
        EXPECT_EQ(result.code, code) << result.errors;
        EXPECT_NE(result.errors, "") << words.back();
        EXPECT_EQ(result.output, "");
    }
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), before);
}

TEST_F(BulkVerbsTest, ADamagedFactoryCopyIsNotRestoredFrom) {
    makeFiles();
    ASSERT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Contrast=55"}).code, 0);
    changeByte(FACTORY + MODE_FILE, m_root.read(FACTORY + MODE_FILE).size() - 3);
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    for (const char* word : {"--all", "0"}) {
        std::vector<std::string> line{"restore", "PICTURE_MODE", word};
        if (line.back() == "0")
            line.insert(line.end(), {"0", "0"});
        const Result restore = run(line);
        EXPECT_EQ(restore.code, 1);
        EXPECT_THAT(restore.errors, HasSubstr("the factory copy"));
    }
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), before);
}

TEST_F(BulkVerbsTest, FactoryResetIsWholeOrNotAtAll) {
    makeAllFiles();
    ASSERT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Contrast=55"}).code, 0);
    const std::string changed = m_root.read(CURRENT + MODE_FILE);
    const std::string factory = m_root.read(FACTORY + MODE_FILE);

    const Result notAsked = run({"factory-reset"});
    EXPECT_EQ(notAsked.code, 2);
    EXPECT_THAT(notAsked.errors, HasSubstr("--yes"));
    m_root.write(FACTORY + MODE_FILE, factory.substr(0, factory.size() - 1));
    const Result damaged = run({"factory-reset", "--yes"});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_THAT(damaged.errors, AllOf(HasSubstr("nothing was changed"), EndsWith(" of PICTURE_MODE\n")));
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), changed);

    m_root.write(FACTORY + MODE_FILE, factory);
    EXPECT_EQ(runJson({"factory-reset", "--yes"})["changed"], Json::array({"PICTURE_MODE"}));
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), factory);
    EXPECT_EQ(m_root.read(BACKUP + MODE_FILE), factory);
    EXPECT_EQ(run({"verify"}).code, 0);
}

TEST_F(BulkVerbsTest, FirstBootLoadsWhatIsThereAndSaysFromWhere) {
    makeAllFiles();
    std::filesystem::remove_all(m_root.file("/var"));
    const Json first = runJson({"first-boot"});
    EXPECT_EQ(first["copiedFromFactory"], true);
    EXPECT_EQ(first["categories"][PICTURE_MODE]["loadedFrom"], "current");
    EXPECT_EQ(run({"verify"}).code, 0);
    EXPECT_EQ(numberOfFiles(CURRENT), numberOfFiles(FACTORY));

    // From now on it is a start like any other, which repairs and updates.
    ASSERT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Contrast=55"}).code, 0);
    const std::string backup = m_root.read(BACKUP + MODE_FILE);
    changeByte(CURRENT + MODE_FILE, backup.size() - 3);
    std::filesystem::remove(m_root.file(CURRENT + "pic_global_usr.ini"));
    std::filesystem::remove(m_root.file(BACKUP + "pic_global_usr.ini"));
    const std::string selfFile = layoutOf(PICTURE_MODE_SELF)->file;
    std::string old = m_root.read(CURRENT + selfFile);
    old.replace(old.find("v0.3"), 4, "v0.2");
    m_root.write(CURRENT + selfFile, old);
    const Json second = runJson({"first-boot"});
    EXPECT_EQ(second["copiedFromFactory"], false);
    EXPECT_EQ(second["categories"][PICTURE_MODE]["loadedFrom"], "backup");
    EXPECT_EQ(second["categories"][PICTURE_GLOBAL]["loadedFrom"], "factory");
    EXPECT_EQ(second["categories"][PICTURE_MODE_SELF]["loadedFrom"], "current, updated from v0.2");
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), backup);

    for (const std::string& directory : {CURRENT, BACKUP, FACTORY})
        std::filesystem::remove(m_root.file(directory + MODE_FILE));
    const Result third = run({"first-boot"});
    EXPECT_EQ(third.code, 1);
    EXPECT_THAT(third.output, HasSubstr("NOT LOADED"));
    EXPECT_THAT(third.errors, HasSubstr("1 file could not be loaded"));
}

TEST_F(BulkVerbsTest, FirstBootWithoutFactoryFilesFails) {
    const Result result = run({"first-boot"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.errors, HasSubstr("could not be copied"));
}

} // namespace
} // namespace td::test
