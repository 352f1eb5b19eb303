// Words that stand for many records and fields.
#include <set>
#include <string>
#include <vector>

#include "dmctl/DmctlFixture.h"

namespace td::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class SelectionTest : public DmctlTest {
protected:
    SelectionTest() { makeFiles(); }
    /// The numbers of one dimension's values in the answer to a get with these words for sources, modes and ranges.
    std::set<int> selected(const char* dimension, const std::vector<std::string>& words) const {
        std::vector<std::string> line{"get", "PICTURE_MODE"};
        line.insert(line.end(), words.begin(), words.end());
        line.emplace_back("Hue");
        std::set<int> numbers;
        const Json answer = runJson(line);
        for (const Json& record : answer["records"])
            numbers.insert(record["record"][dimension]["number"].get<int>());
        return numbers;
    }
};

TEST_F(SelectionTest, AWordStandsForManyValues) {
    using Numbers = std::set<int>;
    EXPECT_EQ(selected("source", {"hdmi*", "0", "0"}), (Numbers{4, 5, 6, 7}));
    EXPECT_EQ(selected("source", {"?TV", "0", "0"}), (Numbers{0, 1}));
    EXPECT_EQ(selected("source", {"HDMI2..dmp", "0", "0"}), (Numbers{5, 6, 7, 8}));
    EXPECT_EQ(selected("source", {"0..2,VGA,13,vga", "0", "0"}), (Numbers{0, 1, 2, 9, 13}));
    EXPECT_EQ(selected("picturemode", {"0", "Energy_*,GAME..SPORT", "0"}), (Numbers{2, 4, 5}));
    EXPECT_EQ(selected("dr", {"0", "0", "ALL"}).size(), 8U);
    EXPECT_EQ(selected("dr", {"0", "0", "*dolby*"}), (Numbers{4, 5}));
    EXPECT_EQ(runJson({"get", "PICTURE_MODE", "all", "all", "*"})["records"].size(), 1536U);
}

TEST_F(SelectionTest, ManyRecordsAreATableWithOneLineEach) {
    EXPECT_EQ(run({"get", "PICTURE_MODE", "HDMI1,VGA", "GAME", "0", "Contr*", "hue", "CONTRAST"}).output,
              "source  picturemode  dr       Contrast  Hue\n"
              "HDMI1   GAME         SDR_FHD  50        0\n"
              "VGA     GAME         SDR_FHD  50        0\n");
    EXPECT_EQ(run({"get", "PICTURE_GLOBAL", "hdmi?_dr"}).output,
              "HDMI1_DR = 0\nHDMI2_DR = 0\nHDMI3_DR = 0\nHDMI4_DR = 0\n");
}

TEST_F(SelectionTest, SetStoresAllThatIsSelectedAndNothingElse) {
    ASSERT_EQ(run({"set", "PICTURE_MODE", "HDMI3", "MOVIE", "SDR_UHD", "Contrast=55"}).code, 0);
    const Json set = runJson({"set", "PICTURE_MODE", "HDMI*", "movie", "all", "contrast=55", "Hue=-7"});
    EXPECT_EQ(set["changedValues"], 63);
    EXPECT_EQ(set["unchangedValues"], 1);
    EXPECT_EQ(set["changed"].size(), 32U);
    int changed = 0;
    const Json all = runJson({"get", "PICTURE_MODE", "all", "all", "all", "Contrast", "Hue"});
    for (const Json& record : all["records"]) {
        const int source = record["record"]["source"]["number"];
        const bool meant = source >= 4 && source <= 7 && record["record"]["picturemode"]["name"] == "MOVIE";
        const Json expected = meant ? Json({{"Contrast", 55}, {"Hue", -7}}) : Json({{"Contrast", 50}, {"Hue", 0}});
        ASSERT_EQ(record["fields"], expected) << record;
        changed += meant ? 1 : 0;
    }
    EXPECT_EQ(changed, 32);
    EXPECT_EQ(verify().code, 0);
}

TEST_F(SelectionTest, AnApplyFlagAndManyRecordsEndAsTheFileTells) {
    ASSERT_EQ(run({"set", "PICTURE_GLOBAL", "ApplyModeToSource=1"}).code, 0);
    ASSERT_EQ(run({"set", "PICTURE_MODE", "DTV", "GAME", "0", "Sharpness=12"}).code, 0);
    const Result set = run({"set", "PICTURE_MODE", "HDMI1,HDMI2", "GAME", "SDR_FHD", "Contrast=61"});
    EXPECT_EQ(set.code, 0) << set.errors;
    EXPECT_THAT(set.output, HasSubstr("14 other records changed with it."));
    const Json all = runJson({"get", "PICTURE_MODE", "all", "GAME", "0", "Contrast", "Sharpness"});
    ASSERT_EQ(all["records"].size(), 16U);
    for (const Json& record : all["records"])
        EXPECT_EQ(record["fields"], Json({{"Contrast", 61}, {"Sharpness", 12}}));
}

TEST_F(SelectionTest, RecordsOfOtherBinsAreReadFromTheFile) {
    // A set in user state has only the bin of its panel in memory.
    const CategoryLayout& layout = *layoutOf(PICTURE_FACTORY_WB);
    std::vector<int> table = defaultTable(layout);
    const int dims[] = {2, 4, 0, 0, 0};
    int* const record = &table[static_cast<std::size_t>(layout.recordIndex(dims)) * layout.fields.size()];
    record[0] = 11;
    record[1] = 12;
    for (const std::string& directory : {CURRENT, FACTORY})
        m_root.write(directory + layout.file, wholeFile(layout, "", table));
    EXPECT_EQ(run({"get", "PICTURE_FACTORY_WB", "BIN3", "HDMI1", "0", "0", "0", "RGain"}).output, "RGain = 11\n");
    const Result set = run({"set", "PICTURE_FACTORY_WB", "BIN3", "HDMI1", "0", "0", "0", "RGain=13"});
    EXPECT_EQ(set.code, 0) << set.errors;
    EXPECT_EQ(run({"get", "PICTURE_FACTORY_WB", "BIN3", "HDMI1", "0", "0", "0", "?Gain"}).output,
              "RGain = 13\nGGain = 12\nBGain = 0\n");
    // This category's list of values has a name with '=' in it, and '=' begins the assignments.
    const CategoryLayout& aspects = *layoutOf(PICTURE_FACTORY_ASPECT);
    for (const std::string& directory : {CURRENT, FACTORY})
        m_root.write(directory + aspects.file, wholeFile(aspects, "", defaultTable(aspects)));
    EXPECT_EQ(run({"set", "PICTURE_FACTORY_ASPECT", "AR_4x3_4x3 = 0", "SDScaling=2"}).code, 0);
}

TEST_F(SelectionTest, WhatSelectsNothingIsAnsweredWithWhatWould) {
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    const std::vector<std::pair<std::vector<std::string>, const char*>> lines{
        {{"HDNI*", "0", "0"}, "did you mean HDMI1, HDMI2, HDMI3, HDMI4?"},
        {{"HDMI1,HDMI9", "0", "0"}, "unknown value of dimension source \"HDMI9\""},
        {{"HDMI1,,VGA", "0", "0"}, "has an empty place"},
        {{"HDMI1,", "0", "0"}, "has an empty place"},
        {{"HDMI4..HDMI1", "0", "0"}, "runs backwards, from 7 to 4"},
        {{"0..16", "0", "0"}, "16 is no value of dimension source; its values are 0 to 15"},
        {{"0..", "0", "0"}, "unknown value of dimension source \"\""},
        {{"0", "all"}, "3 dimensions, but 2 values are given"},
    };
    for (const auto& [words, error] : lines) {
        std::vector<std::string> line{"set", "PICTURE_MODE"};
        line.insert(line.end(), words.begin(), words.end());
        line.emplace_back("Contrast=1");
        const Result result = run(line);
        EXPECT_EQ(result.code, 2) << error;
        EXPECT_THAT(result.errors, HasSubstr(error));
        EXPECT_THAT(result.output, IsEmpty());
    }
    EXPECT_THAT(run({"get", "PICTURE_MODE", "0", "0", "0", "Contrst*"}).errors, HasSubstr("did you mean Contrast"));
    EXPECT_THAT(run({"verify", "PICTRE_M*"}).errors, HasSubstr("did you mean PICTURE_"));
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), before);
}

TEST_F(SelectionTest, WithJsonAnErrorIsTheLastLineAndSaysAllInJson) {
    const Result usage = run({"set", "PICTURE_MODE", "0", "0", "0", "Contrst=1", "--json"});
    EXPECT_EQ(usage.code, 2);
    const Json error = Json::parse(usage.errors);
    EXPECT_EQ(error["verb"], "set");
    EXPECT_EQ(error["exit"], 2);
    EXPECT_THAT(error["error"].get<std::string>(), HasSubstr("did you mean Contrast?"));
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"--json", "gte"}, {"get", "--json", "--jsn"}, {"--json"}, {"--json", "--root"}}) {
        const Result result = runBare(words);
        EXPECT_EQ(result.code, 2);
        EXPECT_EQ(Json::parse(result.errors)["exit"], 2);
    }
    const Result failed = run({"get", "PICTURE_WB_2_POINT", "0", "0", "--json"});
    EXPECT_EQ(failed.code, 1);
    EXPECT_EQ(Json::parse(failed.errors.substr(failed.errors.rfind('\n', failed.errors.size() - 2) + 1))["exit"], 1);
}

} // namespace
} // namespace td::test
