#include <string>
#include <vector>

#include "common/FileLock.h"
#include "DmctlFixture.h"

namespace td::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string HEADER = "category,index1,index2,index3,index4,index5,field,value\n";

class ExchangeVerbsTest : public DmctlTest {
protected:
    ExchangeVerbsTest() { makeFiles(); }
    std::string exported(const char* name) const { return m_output.file(name); }
    std::string current() const { return m_root.read(CURRENT + MODE_FILE); }
};

TEST_F(ExchangeVerbsTest, AnImportBringsBackEveryByte) {
    ASSERT_EQ(run({"set", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast=55", "Hue=-7"}).code, 0);
    const std::string wanted = current();
    const Result json = run({"export", "PICTURE_MODE", "PICTURE_GLOBAL", exported("all.json")});
    EXPECT_EQ(json.code, 0) << json.errors;
    EXPECT_THAT(json.output, HasSubstr("values of 2 categories"));
    ASSERT_EQ(run({"export", "PICTURE_MODE", "PICTURE_GLOBAL", exported("all.csv")}).code, 0);
    EXPECT_TRUE(run({"export", "PICTURE_MODE", "PICTURE_GLOBAL", "--format", "csv"}).output ==
                m_output.read("all.csv"));
    EXPECT_THAT(m_output.read("all.csv"), StartsWith(HEADER));

    for (const char* file : {"all.json", "all.csv"}) {
        ASSERT_EQ(run({"set", "PICTURE_MODE", "HDMI*", "MOVIE", "SDR_UHD", "Contrast=11", "Hue=2"}).code, 0);
        const Result dry = run({"import", exported(file), "--dry-run", "--verbose"});
        EXPECT_EQ(dry.code, 0) << dry.errors;
        EXPECT_THAT(dry.output, AllOf(HasSubstr("8 would be changed"), HasSubstr("11 -> 55")));
        EXPECT_TRUE(current() != wanted);
        const Result import = run({"import", exported(file)});
        EXPECT_EQ(import.code, 0) << import.errors;
        EXPECT_THAT(import.output, HasSubstr("8 were changed"));
        EXPECT_TRUE(current() == wanted);
        EXPECT_THAT(run({"import", exported(file)}).output, HasSubstr("0 were changed"));
    }
    EXPECT_EQ(runJson({"import", exported("all.json"), "--dry-run"})["changed"], 0);
}

TEST_F(ExchangeVerbsTest, AnImportChangesWhatItNamesAndNothingElse) {
    // With the flag that it brings along a change of one source would go to all.
    const std::string file = m_output.write("part.csv", HEADER + "PICTURE_GLOBAL,,,,,,ApplyModeToSource,1\n" +
                                                            "PICTURE_MODE,HDMI1,MOVIE,SDR_UHD,,,Contrast,61\n");
    const Result import = run({"import", file});
    EXPECT_EQ(import.code, 0) << import.errors;
    EXPECT_THAT(import.errors, IsEmpty());
    const Json diff = Json::parse(run({"diff", "--against", "factory", "PICTURE_MODE", "--json"}).output);
    EXPECT_EQ(diff["differences"], 1);
    EXPECT_EQ(diff["categories"][0]["differences"][0]["left"], 61);
}

TEST_F(ExchangeVerbsTest, FaultsAnywhereMeanThatNothingChanges) {
    const std::string before = current();
    const std::string file = m_output.write("bad.csv", HEADER + "PICTURE_MODE,HDMI1,MOVIE,SDR_UHD,,,Contrast,61\n" +
                                                           "PICTURE_MODE,HDMI9,MOVIE,SDR_UHD,,,Contrast,61\n" +
                                                           "PICTURE_MODE,HDMI2,MOVIE,SDR_UHD,,,Contrast,x\n");
    const Result import = run({"import", file});
    EXPECT_EQ(import.code, 1);
    EXPECT_THAT(import.errors, AllOf(HasSubstr("line 3: unknown value"), HasSubstr("line 4: \"x\" is no whole number"),
                                     HasSubstr("nothing was changed: 2 faults")));
    const Result json = run({"import", file, "--json"});
    EXPECT_EQ(json.code, 1);
    EXPECT_EQ(Json::parse(json.output)["faults"][1]["place"], "line 4");

    // Nor when a file of one of the categories is damaged or missing.
    const std::string good = m_output.write("good.csv", HEADER + "PICTURE_MODE,HDMI1,MOVIE,SDR_UHD,,,Contrast,61\n" +
                                                            "SOUND_EQ,HDMI1,STANDARD,,,,100HZ,61\n");
    const Result missing = run({"import", good});
    EXPECT_EQ(missing.code, 1);
    EXPECT_THAT(missing.errors, AllOf(HasSubstr("have to be repaired first"), HasSubstr("is missing")));
    EXPECT_EQ(run({"import", m_output.file("nowhere")}).code, 1);
    EXPECT_EQ(run({"import"}).code, 2);

    FileLock processes;
    ASSERT_TRUE(processes.lock(m_root.file("/var/local/dataModule/lock/processes.lock"), FileLock::Kind::Shared));
    const std::string mode = m_output.write("mode.csv", HEADER + "PICTURE_MODE,HDMI1,MOVIE,SDR_UHD,,,Contrast,61\n");
    EXPECT_EQ(run({"import", mode}).code, 3);
    EXPECT_EQ(run({"import", mode, "--dry-run"}).code, 0);
    EXPECT_TRUE(current() == before);
}

TEST_F(ExchangeVerbsTest, WhatCannotBeExportedIsSaid) {
    changeByte(CURRENT + MODE_FILE, 50000);
    const Result damaged = run({"export", "PICTURE_MODE", "PICTURE_GLOBAL", exported("x.json")});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_THAT(damaged.errors, AllOf(HasSubstr(MODE_FILE), HasSubstr("is damaged: line ")));
    EXPECT_FALSE(m_output.exists("x.json"));
    EXPECT_EQ(run({"export", "PICTURE_MODE", "--copy", "backup", exported("x.json")}).code, 0);
    EXPECT_EQ(run({"export", "PICTURE_GLOBAL", exported("no/such/directory.json")}).code, 1);
    EXPECT_EQ(run({"export", "PICTURE_GLOBAL", "--json", "--format", "csv"}).code, 2);
    EXPECT_EQ(run({"export", "PICTURE_GLOBL"}).code, 2);
}

TEST_F(ExchangeVerbsTest, DiffNamesWhatDiffersAndNothingElse) {
    const auto diff = [this](std::vector<std::string> words) {
        words.insert(words.begin(), {"diff", "PICTURE_MODE", "PICTURE_GLOBAL"});
        return run(words);
    };
    EXPECT_EQ(diff({}).code, 0);
    EXPECT_THAT(diff({}).output, IsEmpty());
    ASSERT_EQ(run({"export", "PICTURE_MODE", "PICTURE_GLOBAL", exported("before.json")}).code, 0);
    const TemporaryDirectory other;
    std::filesystem::copy(m_root.path(), other.path(), std::filesystem::copy_options::recursive);
    ASSERT_EQ(run({"set", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast=55"}).code, 0);

    for (const std::string& against : {std::string("factory"), std::string("backup"), std::string("defaults"),
                                       other.string(), other.file(CURRENT), exported("before.json")}) {
        const Result result = diff({"--against", against});
        EXPECT_EQ(result.code, 1) << against;
        EXPECT_THAT(result.output, AllOf(HasSubstr("PICTURE_MODE: 1 difference in 1 record"),
                                         HasSubstr("HDMI1, MOVIE, SDR_UHD  Contrast  55"), HasSubstr("50"),
                                         Not(HasSubstr("PICTURE_GLOBAL"))))
            << against;
    }
    EXPECT_EQ(diff({"--copy", "backup"}).code, 0);
    EXPECT_EQ(run({"diff", "--against", exported("before.json")}).code, 1) << "only what the export has is compared";
    const std::string part = m_output.write("part.csv", HEADER + "PICTURE_MODE,HDMI1,MOVIE,SDR_UHD,,,Hue,0\n");
    EXPECT_EQ(run({"diff", "--against", part}).code, 0);

    m_root.write(BACKUP + MODE_FILE, "x");
    const Result damaged = diff({"--against", "backup", "--json"});
    EXPECT_EQ(damaged.code, 1);
    EXPECT_THAT(Json::parse(damaged.output)["categories"][0]["notCompared"][0], HasSubstr("is damaged"));
    EXPECT_EQ(diff({"--against", "nowhere"}).code, 2);
    EXPECT_EQ(diff({"--against", m_output.write("no.json", "{}")}).code, 1);
}

/// A folder of exports may be anybody's to write in.
TEST_F(ExchangeVerbsTest, AnExportFollowsNoLinkOfItsTemporaryNameAndReplacesNoDevice) {
    const std::string kept = m_output.write("kept", "another one's");
    for (const char* target : {"kept", "nothing"}) {
        std::filesystem::create_symlink(m_output.file(target), m_output.file("export.csv.tmp"));
        EXPECT_EQ(run({"export", "PICTURE_MODE", m_output.file("export.csv")}).code, 0);
        EXPECT_EQ(m_output.read("kept"), "another one's");
        EXPECT_FALSE(m_output.exists("nothing"));
        EXPECT_FALSE(m_output.exists("export.csv.tmp"));
    }
    // A device of the test's own: nobody's is put at risk.
    std::filesystem::create_symlink("/dev/null", m_output.file("device"));
    EXPECT_EQ(run({"export", "PICTURE_MODE", m_output.file("device")}).code, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(m_output.file("device")));
}

/// Nor do the verbs that make whole files.
TEST_F(ExchangeVerbsTest, WhatInitMakesIsNotWrittenThroughALink) {
    ASSERT_EQ(run({"init"}).code, 0);
    const std::string kept = m_output.write("kept", "another one's");
    const std::string factory = m_root.file(FACTORY + MODE_FILE);
    for (const char* target : {"kept", "nothing"}) {
        std::filesystem::remove(factory);
        std::filesystem::create_symlink(m_output.file(target), factory + ".tmp");
        EXPECT_EQ(run({"init"}).code, 0);
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(factory)));
        EXPECT_EQ(m_output.read("kept"), "another one's");
        EXPECT_FALSE(m_output.exists("nothing"));
    }
}

} // namespace
} // namespace td::test
