#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "dmctl/DmctlFixture.h"
#include "fileOperator/file/RedoRecord.h"

namespace td::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST_F(DmctlTest, InitMakesACompleteRootAndLeavesAloneWhatIsThere) {
    const Result first = run({"init"});
    ASSERT_EQ(first.code, 0);
    EXPECT_THAT(first.errors, IsEmpty());
    EXPECT_THAT(first.output, HasSubstr("created current, backup, factory"));
    const int files = 3 * static_cast<int>(allLayouts().size());
    EXPECT_EQ(runJson({"verify"})["good"], files);
    const std::string defaults = m_root.read(FACTORY + MODE_FILE);
    EXPECT_EQ(defaults, wholeFile(*layoutOf(PICTURE_MODE), "", defaultTable(*layoutOf(PICTURE_MODE))));

    // What is missing comes from the nearest copy, and the factory copy from the default values.
    ASSERT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Hue=3"}).code, 0);
    const std::string current = m_root.read(CURRENT + MODE_FILE);
    ASSERT_NE(current, defaults);
    std::filesystem::remove(m_root.file(BACKUP + MODE_FILE));
    std::filesystem::remove(m_root.file(FACTORY + MODE_FILE));
    const Json second = runJson({"init"});
    EXPECT_EQ(second["categories"][PICTURE_MODE]["created"], Json::array({"backup", "factory"}));
    EXPECT_EQ(second["categories"][PICTURE_GLOBAL]["created"], Json::array());
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), current);
    EXPECT_EQ(m_root.read(BACKUP + MODE_FILE), current);
    EXPECT_EQ(m_root.read(FACTORY + MODE_FILE), defaults);
    std::filesystem::remove(m_root.file(CURRENT + MODE_FILE));
    EXPECT_EQ(run({"init"}).code, 0);
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), current);

    const Result third = run({"init"});
    EXPECT_EQ(third.code, 0);
    EXPECT_THAT(third.output, EndsWith("Nothing to do: the root is complete.\n"));
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), current);
}

TEST_F(DmctlTest, SetSurvivesAndTouchesOneSection) {
    makeFiles();
    EXPECT_EQ(run({"get", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast"}).output, "Contrast = 50\n");
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    const Result set = run({"set", "picture_mode", "hdmi1", "3", "sdr_uhd", "contrast=55", "Hue=-7", "Color=50"});
    EXPECT_EQ(set.code, 0) << set.errors;
    EXPECT_EQ(set.output, "Contrast  50 -> 55\nHue       0 -> -7\n"
                          "2 values changed, 1 unchanged: pic_mode_usr.ini holds all of it.\n");
    EXPECT_THAT(set.errors, IsEmpty());

    EXPECT_EQ(run({"get", "PICTURE_MODE", "4", "MOVIE", "1", "Contrast", "Hue"}).output,
              "Contrast = 55\nHue      = -7\n");
    const std::string after = m_root.read(CURRENT + MODE_FILE);
    ASSERT_EQ(after.size(), before.size());
    const std::size_t section = before.find("[431]\n");
    const std::size_t checksum = before.find("\nCRC ") + 1;
    for (std::size_t i = 0; i < after.size(); ++i) {
        const bool mayDiffer = (i >= section && i < section + 774) || (i >= checksum && i < checksum + 38);
        ASSERT_TRUE(after[i] == before[i] || mayDiffer) << i;
    }
    EXPECT_EQ(verify().code, 0);
}

TEST_F(DmctlTest, SetSaysHowManySourcesChangedWithIt) {
    makeFiles();
    ASSERT_EQ(run({"set", "PICTURE_GLOBAL", "ApplyModeToSource=1"}).code, 0);
    ASSERT_EQ(run({"get", "PICTURE_GLOBAL", "ApplyModeToSource"}).output, "ApplyModeToSource = 1\n");
    const Result set = run({"set", "PICTURE_MODE", "HDMI1", "ENERGY_SAVING", "SDR_UHD", "Contrast=61"});
    EXPECT_THAT(set.output, HasSubstr("16 values changed, 0 unchanged"));
    EXPECT_THAT(set.output, HasSubstr("ApplyModeToSource is set: 15 other records changed with it."));
    EXPECT_EQ(run({"get", "PICTURE_MODE", "AMAZON", "ENERGY SAVING", "SDR_UHD", "Contrast"}).output, "Contrast = 61\n");
    EXPECT_EQ(run({"get", "PICTURE_MODE", "AMAZON", "MOVIE", "SDR_UHD", "Contrast"}).output, "Contrast = 50\n");
    EXPECT_EQ(run({"verify", "PICTURE_MODE"}).code, 0);
}

TEST_F(DmctlTest, WholeRecordHasEveryFieldByName) {
    makeFiles();
    const Json record = runJson({"get", "PICTURE_GLOBAL"});
    EXPECT_EQ(record["records"][0]["fields"].size(), layoutOf(PICTURE_GLOBAL)->fields.size());
    for (const char* field : {"RGBOnly", "ApplyWB10Point", "LaserScreenSize", "FpsSwitch"})
        EXPECT_TRUE(record["records"][0]["fields"].contains(field)) << field;
}

TEST_F(DmctlTest, AnswersAsJson) {
    makeFiles();
    const Json categories = runJson({"categories", "picture_mode"});
    EXPECT_EQ(categories[0]["dimensions"][0]["values"][4]["name"], "HDMI1");
    EXPECT_EQ(categories[0]["fields"][0], Json({{"name", "Contrast"}, {"key", "Contrast"}, {"default", 50}}));
    const Json set = runJson({"set", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast=55"});
    EXPECT_EQ(set["changed"][0]["fields"], Json({{"Contrast", {{"before", 50}, {"after", 55}}}}));
    EXPECT_EQ(set["changed"][0]["record"]["dr"], Json({{"number", 1}, {"name", "SDR_UHD"}}));
    const Json get = runJson({"get", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast"});
    EXPECT_EQ(get["records"][0]["fields"], Json({{"Contrast", 55}}));
    EXPECT_EQ(get["records"][0]["record"]["source"], Json({{"number", 4}, {"name", "HDMI1"}}));
    const Json verify = runJson({"verify", "PICTURE_MODE"});
    EXPECT_EQ(verify["good"], 3);
    EXPECT_EQ(verify["categories"][0]["copies"][0]["sections"], 1536);
}

TEST_F(DmctlTest, VerifyFindsAFlippedByteAndChangesNothing) {
    makeFiles();
    const std::string good = m_root.read(CURRENT + MODE_FILE);
    const std::size_t at = good.find("Gamma", good.find("[3a7]\n")) + 2;
    changeByte(CURRENT + MODE_FILE, at);
    const std::string damaged = m_root.read(CURRENT + MODE_FILE);

    const Result result = run({"verify", "picture_mode"});
    EXPECT_EQ(result.code, 1);
    const auto line = 1 + std::count(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    const std::string place = "line " + std::to_string(line) + ", byte " + std::to_string(at) + ": ";
    EXPECT_THAT(result.output, AllOf(HasSubstr("current  DAMAGED"), HasSubstr("the CRC line states"),
                                     HasSubstr(place + "\"Galma"), HasSubstr("section [3a7]")));
    EXPECT_THAT(result.output, HasSubstr("2 copies good, 1 damaged, 0 missing"));
    EXPECT_EQ(run({"verify", "PICTURE_GLOBAL"}).code, 0);
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), damaged);

    // A load takes the backup copy and says so.
    const Result get = run({"get", "PICTURE_MODE", "0", "0", "0", "Gamma"});
    EXPECT_EQ(get.output, "Gamma = 3\n");
    EXPECT_THAT(get.errors, AllOf(StartsWith("library: The CRC ["), Not(HasSubstr(".cpp:"))));
    EXPECT_EQ(verify().code, 0);
}

TEST_F(DmctlTest, VerifyTellsOfAStoreThatWasCut) {
    makeFiles();
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    ASSERT_EQ(run({"set", "PICTURE_MODE", "0", "0", "0", "Hue=3"}).code, 0);
    const std::string after = m_root.read(CURRENT + MODE_FILE);
    const FileInspection inspection = inspectFile(*layoutOf(PICTURE_MODE), after);
    const auto start = static_cast<std::size_t>(inspection.contentOffset);
    const std::string section = after.substr(start, after.find('[', start + 1) - start);
    const RedoRecord record{inspection.contentOffset,
                            inspection.checksumOffset,
                            inspection.statedChecksum,
                            {{inspection.contentOffset, section}}};
    m_root.write(CURRENT + MODE_FILE, before.substr(0, start) + after.substr(start));
    EXPECT_THAT(run({"verify", "PICTURE_MODE"}).output, Not(HasSubstr("a store was cut off")));
    m_root.write(redoPath(CURRENT + MODE_FILE), redoText(record));
    const Result cut = run({"verify", "PICTURE_MODE"});
    EXPECT_EQ(cut.code, 1);
    EXPECT_THAT(cut.output, AllOf(HasSubstr("current  DAMAGED"), HasSubstr("a store was cut off")));
    EXPECT_EQ(run({"get", "PICTURE_MODE", "0", "0", "0", "Hue"}).output, "Hue = 3\n");
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), after);
    EXPECT_EQ(verify().code, 0);
}

TEST_F(DmctlTest, OnlyTheBackupMayBeMissing) {
    makeFiles();
    std::filesystem::remove(m_root.file(BACKUP + MODE_FILE));
    const Result backup = verify();
    EXPECT_EQ(backup.code, 0);
    EXPECT_THAT(backup.output, HasSubstr("backup   not made yet"));
    std::filesystem::remove(m_root.file(FACTORY + MODE_FILE));
    const Result factory = verify();
    EXPECT_EQ(factory.code, 1);
    EXPECT_THAT(factory.output, HasSubstr("factory  MISSING"));
    EXPECT_THAT(factory.errors, HasSubstr("init"));
}

TEST_F(DmctlTest, SetRefusesAFileThatLoadsButLacksSections) {
    makeFiles();
    const std::string good = m_root.read(CURRENT + MODE_FILE);
    // What ends after the summary's header loads, with nothing in it.
    const std::string cut = good.substr(0, good.find("[Summary]\n") + 10);
    m_root.write(CURRENT + MODE_FILE, cut);
    const Result set = run({"set", "PICTURE_MODE", "0", "0", "0", "Contrast=55"});
    EXPECT_EQ(set.code, 1);
    EXPECT_THAT(set.errors, HasSubstr("nothing was changed"));
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), cut);
}

TEST_F(DmctlTest, TheTypeOfTheTelevisionStaysInTheFiles) {
    makeFiles("TVTYPE01");
    // A current copy of an older version is merged and written anew.
    std::string old = m_root.read(CURRENT + MODE_FILE);
    old.replace(old.find("v0.4"), 4, "v0.3");
    m_root.write(CURRENT + MODE_FILE, old);
    const Result set = run({"set", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast=55"});
    EXPECT_EQ(set.code, 0) << set.errors;
    EXPECT_THAT(set.errors, Not(HasSubstr("Tv type")));
    const Json verify = runJson({"verify", "PICTURE_MODE"});
    EXPECT_EQ(verify["categories"][0]["copies"][0]["sn"], "TVTYPE01");
    EXPECT_EQ(run({"get", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast"}).output, "Contrast = 55\n");
}

struct WrongLine {
    std::vector<std::string> words;
    int code;
    std::string error;
};

TEST_F(DmctlTest, ErrorsSayWhatWouldBeRight) {
    makeFiles();
    const std::string before = m_root.read(CURRENT + MODE_FILE);
    const std::vector<WrongLine> lines{
        {{}, 2, "Usage: dmctl"},
        {{"gte"}, 2, "unknown verb \"gte\"; did you mean get?"},
        {{"get", "--jsn", "PICTURE_MODE"}, 2, "did you mean --json?"},
        {{"get"}, 2, "name a category: PICTURE_GLOBAL, "},
        {{"get", "PICTURMODE"}, 2, "did you mean PICTURE_MODE"},
        {{"get", "PICTURE_MODE", "HDMI9", "0", "0"}, 2, "did you mean HDMI1, HDMI2, HDMI3, HDMI4?"},
        {{"get", "PICTURE_MODE", "0", "zzz", "0"}, 2, "its values are: VIVID, STANDARD, ENERGY SAVING"},
        {{"get", "PICTURE_MODE", "0", "12", "0"}, 2, "its values are 0 to 11: VIVID"},
        {{"get", "PICTURE_MODE", "0", "-1", "0"}, 2, "its values are 0 to 11"},
        {{"get", "PICTURE_MODE", "0", "0", "Contrast"}, 2, "3 dimensions, but 2 values are given"},
        {{"get", "PICTURE_MODE", "0", "0", "0", "Contrst"}, 2, "did you mean Contrast?"},
        {{"get", "PICTURE_GLOBAL", "HDMI"}, 2, "did you mean HDMI1_DR"},
        {{"set", "PICTURE_MODE", "0", "0", "0"}, 2, "add FIELD=VALUE"},
        {{"set", "PICTURE_MODE", "0", "0", "Contrast=1"}, 2, "dr: SDR_FHD, SDR_UHD"},
        {{"set", "PICTURE_MODE", "0", "0", "0", "Hue=1", "Contrast=5.5"}, 2, "a whole number from -999 to 9999"},
        {{"set", "PICTURE_MODE", "0", "0", "0", "Hue=1", "Contrast=10000"}, 2, "holds -999 to 9999"},
        {{"set", "PICTURE_MODE", "0", "0", "0", "Hue=1", "Contrast=99999999999"}, 2, "holds -999 to 9999"},
        {{"set", "PICTURE_MODE", "0", "0", "0", "Hue=1", "hue=2"}, 2, "Hue is given twice"},
        {{"set", "PICTURE_MODE", "0", "0", "0", "Hue=1", "Nothing=2"}, 2, "unknown field of PICTURE_MODE"},
        {{"init", "here"}, 2, "--root DIR"},
    };
    for (const WrongLine& line : lines) {
        const Result result = run(line.words);
        EXPECT_EQ(result.code, line.code) << line.error;
        EXPECT_THAT(result.errors, HasSubstr(line.error));
        EXPECT_THAT(result.output, IsEmpty()) << line.error;
    }
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE), before);
}

TEST_F(DmctlTest, WrongRoots) {
    const std::string nowhere = m_root.file("nowhere");
    const Result missing = runBare({"--root", nowhere, "get", "PICTURE_GLOBAL"});
    EXPECT_EQ(missing.code, 1);
    EXPECT_THAT(missing.errors, HasSubstr("does not exist; make it with: dmctl --root " + nowhere + " init"));
    EXPECT_FALSE(std::filesystem::exists(nowhere));

    const Result empty = run({"get", "PICTURE_GLOBAL"});
    EXPECT_EQ(empty.code, 1);
    EXPECT_THAT(empty.errors, HasSubstr("there is no file of PICTURE_GLOBAL"));
    EXPECT_THAT(empty.errors, HasSubstr("init"));

    const Result tooLong = runBare({"--root", m_root.file(std::string(200, 'a')), "init"});
    EXPECT_EQ(tooLong.code, 2);
    EXPECT_THAT(tooLong.errors, HasSubstr("too long"));

    EXPECT_EQ(runBare({"init"}).code, 2);
    EXPECT_EQ(runBare({"verify", "--root", m_root.write("file", "")}).code, 1);
}

TEST_F(DmctlTest, HelpAndVersion) {
    for (const char* verb : {"init", "categories", "get", "set", "restore", "apply", "factory-reset", "first-boot",
                             "verify", "document", "completion", "man"}) {
        const Result help = runBare({verb, "--help"});
        EXPECT_EQ(help.code, 0);
        EXPECT_THAT(help.output, AllOf(HasSubstr("Examples:"), HasSubstr(std::string("dmctl [OPTIONS] ") + verb),
                                       HasSubstr("Exit codes:")));
    }
    EXPECT_THAT(runBare({"--help"}).output, AllOf(HasSubstr("Examples:"), HasSubstr("Exit codes:")));
    EXPECT_THAT(runBare({"--version"}).output, StartsWith("dmctl "));
}

} // namespace
} // namespace td::test
