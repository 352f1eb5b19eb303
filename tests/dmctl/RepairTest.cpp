#include <algorithm>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/FileLock.h"
#include "DmctlFixture.h"
#include "fileOperator/file/RedoRecord.h"

namespace td::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::string DAMAGED = "/var/local/dataModule/damaged/";
const std::string KEPT = DAMAGED + MODE_FILE + ".damaged";

class RepairTest : public DmctlTest {
protected:
    RepairTest() {
        makeFiles("TVTYPE01");
        m_good = m_root.read(CURRENT + MODE_FILE);
    }

    /// A file whose values of that field are others in every record.
    std::string fileWith(const char* field, int value) const {
        const CategoryLayout& layout = *layoutOf(PICTURE_MODE);
        std::vector<int> table = defaultTable(layout);
        const auto position = static_cast<std::size_t>(layout.fieldByKey(field)->position);
        for (std::size_t row = 0; row < table.size(); row += layout.fields.size())
            table[row + position] = value;
        return wholeFile(layout, "TVTYPE01", table);
    }
    /// One digit of the value of this line, in the section with this header.
    std::size_t valueAt(const char* header, const char* field) const {
        return m_good.find("= ", m_good.find(std::string("\n") + field + " ", m_good.find(header))) + 3;
    }
    void changeAt(std::size_t at, const std::string& bytes) const {
        std::string text = m_root.read(CURRENT + MODE_FILE);
        m_root.write(CURRENT + MODE_FILE, text.replace(at, bytes.size(), bytes));
    }
    void setAge(const std::string& file, long seconds) const {
        const timespec times[] = {{0, UTIME_OMIT}, {1700000000 - seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, m_root.file(file).c_str(), times, 0), 0);
    }
    Result repair(std::vector<std::string> words) const {
        words.insert(words.begin(), {"repair", "PICTURE_MODE"});
        return run(words);
    }

    std::string m_good;
};

TEST_F(RepairTest, GoodCopiesAreNeverTouched) {
    const std::string other = fileWith("Contrast", 77);
    m_root.write(BACKUP + MODE_FILE, other);
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {}, {"--crc"}, {"--salvage"}, {"--from", "backup"}, {"--copy", "factory", "--from", "backup"}}) {
        const Result result = repair(words);
        EXPECT_EQ(result.code, 0);
        EXPECT_EQ(result.output, "1 file: 1 good before, 0 repaired, 0 not.\n");
    }
    // Nor one of another version, which the library merges.
    std::string old = m_good;
    old.replace(old.find("v0.4"), 4, "v0.3");
    m_root.write(CURRENT + MODE_FILE, old);
    EXPECT_THAT(repair({"--salvage"}).output, HasSubstr("left alone"));
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == old);
    EXPECT_TRUE(m_root.read(BACKUP + MODE_FILE) == other);
    EXPECT_TRUE(m_root.read(FACTORY + MODE_FILE) == m_good);
    // A backup that is missing is the library's to make, unless a copy is named.
    std::filesystem::remove(m_root.file(BACKUP + MODE_FILE));
    EXPECT_THAT(repair({"--copy", "backup"}).output, HasSubstr("left alone"));
    EXPECT_FALSE(m_root.exists(BACKUP + MODE_FILE));
    EXPECT_EQ(repair({"--copy", "backup", "--from", "factory"}).code, 0);
    EXPECT_TRUE(m_root.read(BACKUP + MODE_FILE) == m_good);
    EXPECT_FALSE(m_root.exists(DAMAGED));
}

TEST_F(RepairTest, TheNewestGoodCopyTakesThePlace) {
    const std::string backup = fileWith("Contrast", 77);
    const std::string factory = fileWith("Contrast", 78);
    m_root.write(BACKUP + MODE_FILE, backup);
    m_root.write(FACTORY + MODE_FILE, factory);
    setAge(BACKUP + MODE_FILE, 100);
    setAge(FACTORY + MODE_FILE, 200);
    const std::string damaged = m_good.substr(0, 100000);
    m_root.write(CURRENT + MODE_FILE, damaged);

    const Result dry = repair({"--dry-run"});
    EXPECT_EQ(dry.code, 0);
    EXPECT_THAT(dry.output,
                AllOf(HasSubstr("would be taken from the backup copy of 2023"), HasSubstr("1 could be repaired")));
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == damaged);
    EXPECT_FALSE(m_root.exists(DAMAGED));

    const Result result = repair({});
    EXPECT_EQ(result.code, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("the damaged file is kept as"));
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == backup);
    EXPECT_TRUE(m_root.read(KEPT) == damaged);

    // The next one is kept beside it; the factory copy is the newer one now.
    setAge(FACTORY + MODE_FILE, 50);
    m_root.write(CURRENT + MODE_FILE, "x");
    EXPECT_EQ(repair({}).code, 0);
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == factory);
    EXPECT_TRUE(m_root.read(KEPT) == damaged);
    EXPECT_EQ(m_root.read(KEPT + ".2"), "x");

    // A damaged copy is never taken, however new, and a named one is.
    m_root.write(FACTORY + MODE_FILE, damaged);
    std::filesystem::remove(m_root.file(CURRENT + MODE_FILE));
    EXPECT_EQ(repair({"--from", "factory"}).code, 1);
    EXPECT_FALSE(m_root.exists(CURRENT + MODE_FILE));
    EXPECT_EQ(repair({}).code, 0);
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == backup);
    m_root.write(BACKUP + MODE_FILE, "x");
    m_root.write(CURRENT + MODE_FILE, "y");
    const Result none = repair({});
    EXPECT_EQ(none.code, 1);
    EXPECT_THAT(none.output, HasSubstr("no other copy is good; what can still be read saves: --salvage"));
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == "y");
}

TEST_F(RepairTest, TheFactoryCopyIsNotMadeOfTheUsersValuesUnasked) {
    const std::string users = fileWith("Contrast", 77);
    m_root.write(CURRENT + MODE_FILE, users);
    m_root.write(FACTORY + MODE_FILE, m_good.substr(0, 100000));
    const Result refused = repair({"--copy", "factory"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.output, HasSubstr("name one with --from"));
    EXPECT_EQ(repair({"--copy", "factory", "--salvage"}).code, 0);
    EXPECT_TRUE(m_root.read(FACTORY + MODE_FILE) == m_good) << "what is lost comes from the defaults";
    m_root.write(FACTORY + MODE_FILE, "x");
    EXPECT_EQ(repair({"--copy", "factory", "--from", "current"}).code, 0);
    EXPECT_TRUE(m_root.read(FACTORY + MODE_FILE) == users);
}

TEST_F(RepairTest, AChecksumIsRewrittenIfNothingElseIsWrong) {
    // A value that a person changed with an editor.
    changeAt(valueAt("[431]", "Contrast"), "077");
    EXPECT_EQ(repair({"--crc", "--dry-run"}).code, 0);
    EXPECT_EQ(run({"verify", "PICTURE_MODE"}).code, 1);
    const Result result = repair({"--crc"});
    EXPECT_EQ(result.code, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("checksum rewritten"));
    EXPECT_EQ(run({"verify", "PICTURE_MODE"}).code, 0);
    EXPECT_EQ(run({"get", "PICTURE_MODE", "HDMI1", "MOVIE", "SDR_UHD", "Contrast"}).output, "Contrast = 77\n");

    changeAt(valueAt("[431]", "Contrast"), "0x7");
    const std::string damaged = m_root.read(CURRENT + MODE_FILE);
    const Result refused = repair({"--crc"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.output,
                AllOf(HasSubstr("not only its checksum is wrong; with a new one the file still is damaged: line "),
                      HasSubstr("section [431]")));
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == damaged);
    // However much else there is to be said about the file.
    std::string capitals = m_good;
    for (std::size_t at = capitals.find("\n[000]"); at != std::string::npos; at = capitals.find("\n[", at + 1))
        std::transform(capitals.begin() + static_cast<std::ptrdiff_t>(at) + 2,
                       capitals.begin() + static_cast<std::ptrdiff_t>(at) + 5,
                       capitals.begin() + static_cast<std::ptrdiff_t>(at) + 2, toupper);
    capitals[capitals.rfind("Gradient") + 1] = 'x';
    m_root.write(CURRENT + MODE_FILE, capitals);
    EXPECT_EQ(repair({"--crc"}).code, 1);
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == capitals);
    std::filesystem::remove(m_root.file(CURRENT + MODE_FILE));
    EXPECT_EQ(repair({"--crc"}).code, 1);
}

TEST_F(RepairTest, AStoreThatWasCutOffIsEndedWhateverTheWay) {
    // The section of the last store is in the file, its checksum is not.
    m_root.write(BACKUP + MODE_FILE, fileWith("Hue", 5));
    const CategoryLayout& layout = *layoutOf(PICTURE_MODE);
    std::vector<int> table = defaultTable(layout);
    table.front() = 77;
    const std::string stored = wholeFile(layout, "TVTYPE01", table);
    RedoRecord record;
    record.contentPosition = inspectFile(layout, stored).contentOffset;
    record.crcPosition = inspectFile(layout, stored).checksumOffset;
    record.crc = inspectFile(layout, stored).statedChecksum;
    const std::size_t section = stored.find("[000]\n") + 6;
    record.writes.push_back({static_cast<int>(section), stored.substr(section, 768)});
    std::string cut = stored;
    cut.replace(m_good.find("CRC "), 38, m_good.substr(m_good.find("CRC "), 38));
    for (const std::vector<std::string>& way : std::vector<std::vector<std::string>>{{}, {"--salvage"}}) {
        m_root.write(CURRENT + MODE_FILE, cut);
        m_root.write(CURRENT + MODE_FILE + ".redo", redoText(record));
        EXPECT_THAT(run({"verify", "PICTURE_MODE"}).output, HasSubstr("a store was cut off"));
        const Result result = repair(way);
        EXPECT_EQ(result.code, 0) << result.output;
        EXPECT_THAT(result.output, HasSubstr("brought to the end of its store"));
        EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == stored);
    }
    // A record that does not fit is none.
    m_root.write(CURRENT + MODE_FILE, cut.substr(0, 100000));
    m_root.write(CURRENT + MODE_FILE + ".redo", redoText(record));
    EXPECT_THAT(repair({}).output, HasSubstr("taken from the "));
}

TEST_F(RepairTest, SalvageTellsForEverySectionWhatCameFromWhere) {
    // The user's values are in the current copy; in the damaged places the backup, then the factory copy answers.
    const std::string users = fileWith("Contrast", 77);
    const std::string backup = fileWith("Contrast", 66);
    m_root.write(CURRENT + MODE_FILE, users);
    m_root.write(BACKUP + MODE_FILE, backup);
    changeAt(valueAt("[431]", "Contrast"), "0x7");
    const std::size_t section = m_good.find("[3a7]\n");
    changeAt(section, std::string(774, '\0'));
    // In the backup the same section and another one are lost too.
    std::string damagedBackup = backup;
    damagedBackup.replace(section, 774, std::string(774, 'x'));
    damagedBackup.replace(m_good.find("[fb7]\n"), 774, std::string(774, 'x'));
    m_root.write(BACKUP + MODE_FILE, damagedBackup);

    const Json dry = runJson({"repair", "PICTURE_MODE", "--salvage", "--dry-run"});
    EXPECT_EQ(dry["categories"][0]["repaired"], false);
    const Result result = repair({"--salvage"});
    EXPECT_EQ(result.code, 0) << result.output;
    EXPECT_THAT(result.output, AllOf(HasSubstr("1536 sections: 1534 from current, 1 from factory, 1 from several"),
                                     HasSubstr("HDMI1, MOVIE, SDR_UHD "),
                                     HasSubstr("  23 of 24 fields current, 1 of 24 fields backup\n"),
                                     HasSubstr("the checksum does not fit")));

    const Json salvage = dry["categories"][0]["salvage"];
    EXPECT_EQ(salvage["summary"],
              Json({{"current", 1534}, {"backup", 0}, {"factory", 1}, {"defaults", 0}, {"several", 1}}));
    ASSERT_EQ(salvage["sections"].size(), 1536U);
    EXPECT_EQ(salvage["sections"][(4 * 12 + 3) * 8 + 1]["fields"], Json({{"current", 23}, {"backup", 1}}));
    EXPECT_EQ(salvage["sections"][(3 * 12 + 10) * 8 + 7]["fields"], Json({{"factory", 24}}));
    EXPECT_EQ(salvage["sections"][(3 * 12 + 10) * 8 + 7]["record"]["source"]["number"], 3);

    EXPECT_EQ(run({"verify", "PICTURE_MODE"}).code, 1) << "the backup is still damaged";
    const std::string repaired = m_root.read(CURRENT + MODE_FILE);
    EXPECT_EQ(repaired.size(), users.size());
    std::string expected = users;
    expected.replace(valueAt("[431]", "Contrast"), 3, "066");
    expected.replace(section, 774, m_good.substr(section, 774));
    const std::size_t crc = expected.find("CRC ");
    EXPECT_TRUE(repaired.substr(crc + 38) == expected.substr(crc + 38));
    EXPECT_EQ(repaired.substr(0, crc), expected.substr(0, crc));
    EXPECT_THAT(m_root.read(KEPT), HasSubstr(std::string(774, '\0')));

    // And with everything gone there are the default values; what is no text is no type of a television.
    for (const std::string& directory : {CURRENT, BACKUP, FACTORY})
        m_root.write(directory + MODE_FILE, "nothing");
    std::string head = m_good.substr(0, m_good.find("Version "));
    head.replace(head.find("TVTYPE01"), 8, "TV\x1b[31m!");
    m_root.write(BACKUP + MODE_FILE, head);
    const Result defaults = repair({"--salvage"});
    EXPECT_EQ(defaults.code, 0);
    EXPECT_THAT(defaults.output, AllOf(HasSubstr("1536 sections: 1536 from defaults"), HasSubstr("and 1516 more")));
    EXPECT_EQ(m_root.read(CURRENT + MODE_FILE),
              wholeFile(*layoutOf(PICTURE_MODE), "", defaultTable(*layoutOf(PICTURE_MODE))));
}

TEST_F(RepairTest, AFileThatCannotBeKeptIsLeftAlone) {
    m_root.write(CURRENT + MODE_FILE, "x");
    m_root.write(DAMAGED.substr(0, DAMAGED.size() - 1), "a file, no directory");
    const Result result = repair({});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.output, HasSubstr("nothing was done"));
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == "x");
}

TEST_F(RepairTest, WhatIsNoFileIsNamedAndMovedAside) {
    const auto plantFifo = [this](const std::string& directory) {
        std::filesystem::remove(m_root.file(directory + MODE_FILE));
        ASSERT_EQ(mkfifo(m_root.file(directory + MODE_FILE).c_str(), 0600), 0);
    };
    plantFifo(CURRENT);
    EXPECT_THAT(repair({}).output, AllOf(HasSubstr("the current copy is no file: it is a FIFO"),
                                         HasSubstr("the damaged file is kept as " + m_root.file(CURRENT + MODE_FILE))));
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == m_good);
    EXPECT_TRUE(std::filesystem::is_fifo(m_root.file(CURRENT + MODE_FILE + ".stray1")));

    // Nobody waits for the other end, where there is nothing else either.
    for (const std::string& directory : {CURRENT, BACKUP, FACTORY})
        plantFifo(directory);
    EXPECT_THAT(verify().output, HasSubstr("it is a FIFO"));
    EXPECT_THAT(run({"info"}).output, HasSubstr("damaged"));
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"get", "PICTURE_MODE", "ATV", "VIVID", "SDR_FHD"},
                                               {"export", "PICTURE_MODE"},
                                               {"diff", "PICTURE_MODE"}}) {
        const Result result = run(words);
        EXPECT_GT(result.code, 0) << words[0];
        EXPECT_THAT(result.output + result.errors, HasSubstr("no file")) << words[0];
    }
}

TEST_F(RepairTest, ARootInUseIsNotRepairedUnlessForced) {
    m_root.write(CURRENT + MODE_FILE, "x");
    FileLock processes;
    ASSERT_TRUE(processes.lock(m_root.file("/var/local/dataModule/lock/processes.lock"), FileLock::Kind::Shared));
    EXPECT_EQ(repair({}).code, 3);
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == "x");
    EXPECT_EQ(repair({"--dry-run"}).code, 0);
    EXPECT_EQ(repair({"--force"}).code, 0);
    EXPECT_TRUE(m_root.read(CURRENT + MODE_FILE) == m_good);

    const Json info = runJson({"info", "PICTURE_MODE"});
    EXPECT_EQ(info["users"][0]["pid"], getpid());
}

TEST_F(RepairTest, ContradictionsAreRefused) {
    EXPECT_EQ(repair({"--crc", "--salvage"}).code, 2);
    EXPECT_EQ(repair({"--salvage", "--from", "backup"}).code, 2);
    EXPECT_EQ(repair({"--from", "current"}).code, 2);
    EXPECT_EQ(repair({"--copy", "x"}).code, 2);
}

TEST_F(RepairTest, InfoTellsWhichCopiesDiffer) {
    m_root.write(BACKUP + MODE_FILE, fileWith("Contrast", 77));
    m_root.write(FACTORY + MODE_FILE, "x");
    const Json mode = runJson({"info", "PICTURE_MODE"})["categories"][0];
    EXPECT_EQ(mode["scopes"], Json({"biz", "all"}));
    EXPECT_EQ(mode["current"]["bytes"], m_good.size());
    EXPECT_EQ(mode["backup"]["differsFromCurrent"], true);
    EXPECT_EQ(mode["factory"]["state"], "damaged");
    EXPECT_EQ(runJson({"info", "PICTURE_GLOBAL"})["categories"][0]["backup"]["differsFromCurrent"], false);
    EXPECT_EQ(runJson({"info", "PICTURE_FACTORY_SCALING"})["categories"][0]["scopes"], Json({"dvbmain", "all"}));
    const Result text = run({"info", "PICTURE_MODE"});
    EXPECT_EQ(text.code, 0);
    EXPECT_THAT(text.output, AllOf(HasSubstr("in use by"), HasSubstr("nobody"), HasSubstr("differs, "),
                                   HasSubstr("damaged, "), Not(HasSubstr("same, "))));
}

} // namespace
} // namespace td::test
