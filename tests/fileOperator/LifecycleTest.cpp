// Which copy of a file is read, replaced, backed up and written, on real files. The numbers of the invariants are those
// of AbstractFileOperator.h.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <dataModule/common/FileUtil.h>
#include <dataModule/fileOperator/FileFactoryPictureOverScan.h>
#include <dataModule/fileOperator/FileUserPictureGlobal.h>
#include <dataModule/fileOperator/FileUserPictureMode.h>

#include "common/FileLock.h"
#include "common/SystemPaths.h"
#include "FakeParent.h"
#include "fileOperator/file/Loading.h"
#include "fileOperator/table/PendingStores.h"
#include "fileOperator/text/TextLayout.h"
#include "Gate.h"
#include "Limits.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

constexpr const char* PICTURE_GLOBAL_FILE = "pic_global_usr.ini";
constexpr const char* PICTURE_MODE_FILE = "pic_mode_usr.ini";
constexpr const char* FIELD = "RGBOnly";
constexpr Copy ALL_COPIES[] = {Copy::Current, Copy::Backup, Copy::Factory};

/// An operator with a place to stop in while the file is written.
template <class Category>
class Tested final : public Category {
public:
    bool backup(bool alsoFactory = false) { return this->backupFile(alsoFactory); }
    bool recover() { return this->recoverFile(); }
    bool openFactory() { return this->switchToManufactory(); }
    bool rewriteSummary() { return this->updateSummary(); }
    unsigned int crcCode(const std::string& path) { return this->getCrcCode(path.c_str()); }
    bool find(const char* id) { return this->searchSectionId(id); }
    bool buildContents(bool defaults) override {
        writing.open();
        mayWrite.pass();
        if (readsBackWhileWriting)
            readBack = this->loadDataFromCurrentFile({});
        const bool built = Category::buildContents(defaults);
        whileWriting();
        return built;
    }
    bool loadContents() override {
        const bool loaded = Category::loadContents();
        whileLoading();
        return loaded;
    }

    std::function<void()> whileWriting = [] {};
    std::function<void()> whileLoading = [] {};

    Gate writing;
    Gate mayWrite; ///< open unless a test makes its own
    bool readsBackWhileWriting = false;
    std::optional<bool> readBack;
};

class LifecycleTest : public testing::Test {
protected:
    using Global = Tested<FileUserPictureGlobal>;
    using Mode = Tested<FileUserPictureMode>;

    template <class Operator = Global>
    std::unique_ptr<Operator> makeOperator(bool mayWrite = true) {
        auto op = std::make_unique<Operator>();
        if (mayWrite)
            op->mayWrite.open();
        op->setParent(&m_parent);
        return op;
    }
    /// Three good copies, told apart by the value of one field: 1 in the current, 2 in the backup, 3 in the factory
    /// copy.
    void makeCopies() {
        ASSERT_TRUE(makeOperator()->initFile(true));
        m_text = m_root.read(Copy::Current, PICTURE_GLOBAL_FILE);
        for (const Copy copy : ALL_COPIES)
            m_root.write(copy, PICTURE_GLOBAL_FILE, goodText(copy));
    }
    int fieldOf(Copy copy) const { return static_cast<int>(copy) + 1; }
    std::string goodText(Copy copy) const {
        return withChecksum(withValue(m_text, "[Global]\n", FIELD, fieldOf(copy)));
    }
    std::string current(const char* file = PICTURE_GLOBAL_FILE) const { return m_root.read(Copy::Current, file); }
    std::string backup(const char* file = PICTURE_GLOBAL_FILE) const { return m_root.read(Copy::Backup, file); }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
    std::string m_text; ///< of a file with default values
};

// --- which copy is loaded ---

struct Damage {
    const char* name;
    /// The damaged text; none: there is no file.
    std::function<std::optional<std::string>(const std::string& good)> apply;
    const char* message;
    bool checksumIsRight = false;
};

const std::vector<Damage>& damages() {
    static const std::vector<Damage> all{
        {"Missing", [](const std::string&) { return std::nullopt; }, "load file failed -- file ["},
        {"Empty", [](const std::string&) { return ""; }, "Summary section subject () is invalid.\n"},
        {"OnlyComments", [](const std::string& good) { return good.substr(0, 76); },
         "Summary section subject () is invalid.\n"},
        {"NoHeader", [](const std::string& good) { return replaced(good, "[Summary]\n", ""); },
         "Summary section subject (SN "},
        {"NoTvType", [](const std::string& good) { return replaced(good, "\nSN ", "\nTV "); },
         "Summary section SN Field (TV "},
        {"NoVersion", [](const std::string& good) { return replaced(good, "\nVersion ", "\nVer     "); },
         "Summary section VER Field (Ver "},
        {"NoCrc", [](const std::string& good) { return replaced(good, "\nCRC ", "\nABC "); },
         "Summary section CRC Field (ABC "},
        {"CutInCrcLine", [](const std::string& good) { return good.substr(0, contentAt(good) - 2); },
         "Summary section CRC Field (CRC "},
        {"WrongCrc", [](const std::string& good) { return replaced(good, "0000\n", "0009\n", contentAt(good)); },
         "] is not matched actually ["},
        {"NoSectionHeader",
         [](const std::string& good) { return withChecksum(replaced(good, "[Global]\n", "(Global)\n")); },
         "read section [(Global)\n] from file [", true},
        {"SectionCutShort",
         [](const std::string& good) { return withChecksum(good.substr(0, good.size() - text::LINE_BUFFER)); },
         " failed, Maybe the file format is wrong !!!\n", true},
        {"Oversize",
         [](const std::string& good) {
             std::string text = good;
             while (text.size() <= text::MAX_FILE_SIZE)
                 text += good.substr(contentAt(good));
             return withChecksum(text);
         },
         " and exception, so will RECOVER it from manufactory.\n", true}, // last, for others to find
    };
    return all;
}

class DamageTest : public LifecycleTest, public testing::WithParamInterface<std::size_t> {
protected:
    void damage(Copy copy) {
        const std::optional<std::string> text = damages()[GetParam()].apply(goodText(copy));
        if (text)
            m_root.write(copy, PICTURE_GLOBAL_FILE, *text);
        else
            m_root.remove(copy, PICTURE_GLOBAL_FILE);
    }
};

TEST_P(DamageTest, TheNextGoodCopyIsLoadedAndPutInPlace) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    damage(Copy::Current);
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(m_log.contains(damages()[GetParam()].message));
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Backup));
    EXPECT_EQ(current(), goodText(Copy::Backup));

    damage(Copy::Current);
    damage(Copy::Backup);
    op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Factory));
    EXPECT_EQ(current(), goodText(Copy::Factory));
    EXPECT_TRUE(op->backup());
    EXPECT_EQ(backup(), goodText(Copy::Factory));
    EXPECT_EQ(op->getFileFullPath(), SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE));
    // From here on it is an ordinary current copy.
    EXPECT_TRUE(storeValue(*op, {}, FIELD, 8));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(current(), withChecksum(withValue(m_text, "[Global]\n", FIELD, 8)));
    EXPECT_EQ(m_root.read(Copy::Factory, PICTURE_GLOBAL_FILE), goodText(Copy::Factory));
}

class FactoryDamageTest : public DamageTest {};

TEST_P(FactoryDamageTest, ADamagedFactoryCopyIsTheEndAndCopiedNowhere) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    for (const Copy copy : ALL_COPIES)
        damage(copy);
    const std::vector<std::string> before = m_root.files();
    auto op = makeOperator();
    EXPECT_FALSE(op->loadFile());
    EXPECT_EQ(m_root.files(), before);
    if (m_root.exists(Copy::Current, PICTURE_GLOBAL_FILE)) {
        EXPECT_EQ(current(), *damages()[GetParam()].apply(goodText(Copy::Current)));
    }
    std::vector<_Argument_t> args;
    EXPECT_FALSE(op->loadData({}, args));
    EXPECT_TRUE(args.empty());
}

std::string damageName(const testing::TestParamInfo<std::size_t>& tested) {
    return damages()[tested.param].name;
}

INSTANTIATE_TEST_SUITE_P(Lifecycle, DamageTest, testing::Range(std::size_t{0}, damages().size()), damageName);
INSTANTIATE_TEST_SUITE_P(Lifecycle, FactoryDamageTest, testing::Range(std::size_t{0}, damages().size()), damageName);

TEST_F(LifecycleTest, AGoodCurrentCopyIsLoadedOnce) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    std::vector<_Argument_t> args;
    EXPECT_FALSE(op->loadData({}, args));
    EXPECT_TRUE(m_log.contains("not completed or failed.\n"));
    ASSERT_TRUE(op->loadFile());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
    EXPECT_NE(op->getFileHandler(), nullptr);

    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, goodText(Copy::Factory));
    EXPECT_TRUE(op->loadFile());
    EXPECT_TRUE(m_log.contains("already load yet, NEEDN'T load again.\n"));
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));

    for (const auto& forget : {&Global::releaseFile, &Global::resetForLoadFile}) {
        EXPECT_TRUE((op.get()->*forget)());
        EXPECT_EQ(op->getFileHandler(), nullptr);
        args.clear();
        EXPECT_FALSE(op->loadData({}, args));
        EXPECT_TRUE(op->loadFile());
        EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Factory));
    }
    EXPECT_TRUE(m_log.contains("@@@@@@@@@@ close file ["));
    EXPECT_FALSE(Global().loadFile()) << "without a parent";
    EXPECT_TRUE(Global().AbstractFileOperator::restoreSetting({}));
    EXPECT_TRUE(m_log.contains("[PICTURE_GLOBAL]: module hasn't completed yet.\n"));
}

TEST_F(LifecycleTest, ACopyOfTheLargestSizeIsRead) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string good = goodText(Copy::Current);
    std::size_t missing = text::MAX_FILE_SIZE - good.size();
    std::string padding;
    for (; missing > 200; missing -= 100)
        padding += "#" + std::string(98, '.') + "\n";
    padding += "#" + std::string(missing - 102, '.') + "\n#" + std::string(98, '.') + "\n";
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, padding + good);
    ASSERT_EQ(current().size(), std::size_t{text::MAX_FILE_SIZE});
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
}

TEST_F(LifecycleTest, WhatTheFormatAllowsLoads) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string good = goodText(Copy::Current);
    const std::size_t crcLine = lineAt(good, "CRC ");
    std::string upper = good;
    std::transform(upper.begin() + static_cast<long>(crcLine) + 29, upper.begin() + static_cast<long>(crcLine) + 37,
                   upper.begin() + static_cast<long>(crcLine) + 29, [](unsigned char c) { return std::toupper(c); });
    const std::pair<const char*, std::string> texts[] = {
        {"edited comment", replaced(good, "# pupose:", "# anything a person wrote #")},
        {"another television", replaced(good, "TVTYPE01", "OTHERTV ")},
        {"upper case digits", upper},
        {"no comments", good.substr(good.find("[Summary]"))},
        {"another header line", withChecksum(replaced(good, "[Global]\n", "[Anything]\n"))},
    };
    for (const auto& [name, text] : texts) {
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, text);
        auto op = makeOperator();
        ASSERT_TRUE(op->loadFile()) << name;
        EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current)) << name;
        EXPECT_EQ(current(), text) << name;
    }
    EXPECT_TRUE(m_log.contains("The Tv type [OTHERTV] of data file ["));
    EXPECT_TRUE(m_log.contains("] is not matched as defined [TVTYPE01] .\n"));
}

TEST_F(LifecycleTest, AFileThatEndsEarlyLoadsWithoutValuesAndIsNeverWritten) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string good = goodText(Copy::Current);
    const std::pair<const char*, std::string> texts[] = {
        {"after the header", good.substr(0, lineAt(good, "SN "))},
        {"after SN", good.substr(0, lineAt(good, "Version "))},
        {"after the version", good.substr(0, lineAt(good, "CRC "))},
        {"after the summary", withChecksum(good.substr(0, contentAt(good)))},
    };
    for (const auto& [name, text] : texts) {
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, text);
        auto op = makeOperator();
        ASSERT_TRUE(op->loadFile()) << name;
        EXPECT_EQ(valueOf(*op, {}, FIELD), 0) << name;
        EXPECT_TRUE(storeValue(*op, {}, FIELD, 5)) << name;
        EXPECT_EQ(m_parent.deliver(), 0) << name;
        EXPECT_EQ(current(), text) << name;
        EXPECT_EQ(valueOf(*op, {}, FIELD), 5) << name;
    }
    EXPECT_TRUE(m_log.contains("search dimension failed , maybe the file content is not completed !!!\n"));
}

TEST_F(LifecycleTest, SectionsThatCannotBePlacedMakeACopyMalformed) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    const std::string good = current(PICTURE_MODE_FILE);
    const std::pair<const char*, const char*> cases[] = {
        {"[0g0]\n", "parse section [[0g0]\n] for file ["},
        {"[00]\n", "parse section [[00]\n] for file ["},
        {"[0c0]\n", "The dimension value is invalid when load content.\n"},
    };
    for (const auto& [header, message] : cases) {
        m_root.write(Copy::Current, PICTURE_MODE_FILE, withChecksum(replaced(good, "[0a0]\n", header)));
        m_log.clear();
        auto op = makeOperator<Mode>();
        EXPECT_TRUE(op->loadFile());
        EXPECT_TRUE(m_log.contains(message)) << header;
        EXPECT_TRUE(current(PICTURE_MODE_FILE) == good) << "the backup took its place";
    }
}

// --- another version ---

TEST_F(LifecycleTest, AFactoryCopyOfAnotherVersionIsTheEnd) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    m_root.write(Copy::Factory, PICTURE_GLOBAL_FILE, replaced(goodText(Copy::Factory), "v0.4", "v0.5"));
    m_root.remove(Copy::Current, PICTURE_GLOBAL_FILE);
    m_root.remove(Copy::Backup, PICTURE_GLOBAL_FILE);
    EXPECT_FALSE(makeOperator()->loadFile());
    EXPECT_TRUE(m_log.contains("The Tv Version [v0.5] of data file ["));
    EXPECT_TRUE(m_log.contains("because of  version not matched from manufactory data files.\n"));
    EXPECT_EQ(m_root.files().size(), 1U);

    // An old current copy changes nothing: it stays, and a later load may try again.
    const std::string old = replaced(goodText(Copy::Current), "v0.4", "v0.3");
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, old);
    auto op = makeOperator();
    EXPECT_FALSE(op->loadFile());
    EXPECT_EQ(current(), old);
    m_root.write(Copy::Factory, PICTURE_GLOBAL_FILE, goodText(Copy::Factory));
    EXPECT_TRUE(op->loadFile());
    op->waitForMerge();
    EXPECT_EQ(current(), goodText(Copy::Current));
}

TEST_F(LifecycleTest, AnOldCurrentCopyIsMergedByKey) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    const std::string good = current(PICTURE_MODE_FILE);
    // Older: keys in another order, one missing, one unknown, a section that no longer exists.
    std::string old = replaced(good, "v0.4", "v0.3");
    const std::size_t section = old.find("[3a7]\n") + 6;
    old = replaced(old, keyLine("Contrast", "0050") + keyLine("Brightness", "0050"),
                   keyLine("Brightness", "0061") + keyLine("Contrast", "0062"), section);
    old = replaced(old, keyLine("Hue", "0000"), keyLine("Forgotten", "0063"), section);
    old = replaced(old, keyLine("Gamma", "0003"), keyLine("Gamma", "12345"), section);
    old = replaced(old, "[3b0]\n", "[3c0]\n" + keyLine("Contrast", "0064") + "[3b0]\n");
    m_root.write(Copy::Current, PICTURE_MODE_FILE, withChecksum(old));
    const std::string factory = withValue(withValue(good, "[3a7]\n", "Hue", 17), "[3a7]\n", "Gamma", 2);
    m_root.write(Copy::Factory, PICTURE_MODE_FILE, withChecksum(factory));

    const std::string path = m_root.path(Copy::Current, PICTURE_MODE_FILE);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);

    auto op = makeOperator<Mode>();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(m_log.contains("dataModule will load data as OTA Flow in [NORMAL_LOAD].\n"));
    EXPECT_TRUE(m_log.contains("load current data file in OTA mode completely \n"));
    const std::vector<int> dims{3, 10, 7};
    EXPECT_EQ(valueOf(*op, dims, "Brightness"), 61);
    EXPECT_EQ(valueOf(*op, dims, "Contrast"), 62);
    EXPECT_EQ(valueOf(*op, dims, "Hue"), 17) << "the factory's: the old copy had none";
    EXPECT_EQ(valueOf(*op, dims, "Gamma"), 2) << "the factory's: the old copy's had too many digits";
    op->waitForMerge();
    const std::string expected =
        withChecksum(withValue(withValue(factory, "[3a7]\n", "Brightness", 61), "[3a7]\n", "Contrast", 62));
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0640U) << "the new file has the old one's mode";
    EXPECT_TRUE(current(PICTURE_MODE_FILE) == expected);
    EXPECT_TRUE(backup(PICTURE_MODE_FILE) == expected);

    EXPECT_TRUE(storeValue(*op, dims, "Hue", 18));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_TRUE(current(PICTURE_MODE_FILE) == withChecksum(withValue(expected, "[3a7]\n", "Hue", 18)));
}

TEST_F(LifecycleTest, AnOldBackupIsMergedWhenTheCurrentCopyCannotBe) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string oldBackup = replaced(goodText(Copy::Backup), "v0.4", "v0.3");
    const std::string oldCurrent = replaced(goodText(Copy::Current), "v0.4", "v0.3");
    const std::optional<std::string> currents[] = {
        std::nullopt, replaced(oldCurrent, "= 0x", "= 0xf"), // of no checksum that it could have
        oldCurrent.substr(0, lineAt(oldCurrent, "CRC ")),    // never verified
        withChecksum(oldCurrent.substr(0, contentAt(oldCurrent)) + "[Other]\n") + "x", // damaged after the summary
    };
    for (const auto& text : currents) {
        m_root.write(Copy::Backup, PICTURE_GLOBAL_FILE, oldBackup);
        m_root.remove(Copy::Current, PICTURE_GLOBAL_FILE);
        if (text)
            m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, *text);
        auto op = makeOperator();
        ASSERT_TRUE(op->loadFile());
        EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Backup));
        op->waitForMerge();
        EXPECT_EQ(current(), goodText(Copy::Backup));
        EXPECT_EQ(backup(), goodText(Copy::Backup));
    }
    // With neither of use the factory values are written in the new version.
    const std::string path = SettingsRoot::path(Copy::Backup, PICTURE_GLOBAL_FILE);
    for (const bool isLinkLoop : {false, true}) {
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, replaced(oldCurrent, "= 0x", "= 0xf"));
        m_root.write(Copy::Backup, PICTURE_GLOBAL_FILE, replaced(oldBackup, "= 0x", "= 0xf"));
        if (isLinkLoop && std::filesystem::remove(path))
            std::filesystem::create_symlink(path, path);
        auto op = makeOperator();
        ASSERT_TRUE(op->loadFile());
        EXPECT_TRUE(m_log.contains("just ignore current file content !!! \n"));
        op->waitForMerge();
        EXPECT_EQ(current(), goodText(Copy::Factory));
    }
}

TEST_F(LifecycleTest, WhatWasReadOfABackupThatCannotBeMergedIsForgotten) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    const std::string good = current(PICTURE_MODE_FILE);
    const std::string old = withValue(replaced(good, "v0.4", "v0.3"), "[000]\n", "Hue", 9);
    m_root.write(Copy::Current, PICTURE_MODE_FILE, replaced(old, "= 0x", "= 0xf"));
    m_root.write(Copy::Backup, PICTURE_MODE_FILE, withChecksum(replaced(old, "[0a0]\n", "[0g0]\n")));
    auto op = makeOperator<Mode>();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(m_log.contains("parse section [[0g0]\n] for file ["));
    EXPECT_EQ(valueOf(*op, {0, 0, 0}, "Hue"), 0) << "the factory's";
    op->waitForMerge();
    EXPECT_TRUE(current(PICTURE_MODE_FILE) == good);
}

TEST_F(LifecycleTest, AMergeThatCouldNotBeWrittenIsMadeAgainByTheNextLoad) {
    using OverScan = Tested<FileFactoryPictureOverScan>; // may be loaded again without a release
    const char* const file = FileFactoryPictureOverScan::layout().file;
    auto op = makeOperator<OverScan>();
    ASSERT_TRUE(op->initFile(true));
    const std::string merged = withChecksum(withValue(current(file), "[0]\n", "InputHStart", 7));
    const std::string old = replaced(merged, FileFactoryPictureOverScan::layout().version, "v9.9");
    m_root.write(Copy::Current, file, old);
    const std::string obstacle = SettingsRoot::path(Copy::Current, file) + FileUtil::TEMPORARY_SUFFIX;
    std::filesystem::create_directories(obstacle + "/in the way");
    for (int load = 0; load < 2; ++load) {
        m_log.clear();
        ASSERT_TRUE(op->loadFile());
        ASSERT_TRUE(m_log.waitFor("background thread terminal to create NEW current file"));
        EXPECT_EQ(valueOf(*op, {0}, "InputHStart"), 7);
        EXPECT_EQ(current(file), old);
    }
    std::filesystem::remove_all(obstacle);
    ASSERT_TRUE(op->loadFile());
    EXPECT_EQ(current(file), merged);
}

TEST_F(LifecycleTest, NobodyMeetsTheThreadThatWritesTheMergedFile) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string old = replaced(goodText(Copy::Current), "v0.4", "v0.3");
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, old);
    auto op = makeOperator(false);
    ASSERT_TRUE(op->loadFile());
    op->writing.pass();
    EXPECT_FALSE(op->tryEnterCriticalSection()) << "no backup now";
    EXPECT_EQ(current(), old) << "the old copy stays until the new one is complete";
    EXPECT_FALSE(op->loadFile());
    EXPECT_TRUE(m_log.contains("Forbidden load flle ["));
    EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 44));
    op->mayWrite.open();
    op->waitForMerge();
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(current(), withChecksum(withValue(goodText(Copy::Current), "[Global]\n", "FpsSwitch", 44)));
    const bool entered = op->tryEnterCriticalSection();
    ASSERT_TRUE(entered);
    if (entered)
        op->leaveCriticalSection();
}

TEST_F(LifecycleTest, AStoreWaitsForNoFileAndIsInTheNextOne) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    const auto pending = [&] { return op->state().contents->pendingStores()->all().size(); };
    // By the thread that holds the files' lock: it would wait for itself.
    op->whileWriting = [&] {
        EXPECT_TRUE(storeValue(*op, {}, FIELD, 44));
        EXPECT_EQ(valueOf(*op, {}, FIELD), 44);
    };
    EXPECT_TRUE(op->initFile(false));
    EXPECT_EQ(current(), goodText(Copy::Current)) << "its contents were made before";
    EXPECT_EQ(pending(), 1U);
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(current(), withChecksum(withValue(m_text, "[Global]\n", FIELD, 44)));
    EXPECT_EQ(pending(), 0U);
}

TEST_F(LifecycleTest, ALoadGoesUnderWhatIsStoredMeanwhile) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    // No change of the zeros that are there before, but one of what is being loaded.
    op->whileLoading = [&] {
        EXPECT_TRUE(storeValue(*op, {}, FIELD, 0));
        EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 5));
    };
    ASSERT_TRUE(op->loadFile());
    EXPECT_EQ(valueOf(*op, {}, FIELD), 0);
    m_parent.deliver();
    EXPECT_EQ(current(),
              withChecksum(withValue(withValue(m_text, "[Global]\n", FIELD, 0), "[Global]\n", "FpsSwitch", 5)));
    op->whileLoading = [&] { EXPECT_TRUE(storeValue(*op, {}, FIELD, 6)); };
    EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 7));
    ASSERT_TRUE(op->refreshDataFromCurrent());
    EXPECT_EQ(valueOf(*op, {}, FIELD), 6);
    EXPECT_EQ(valueOf(*op, {}, "FpsSwitch"), 5) << "it was given up";
}

TEST_F(LifecycleTest, NothingIsOpenAfterARelease) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    ASSERT_NE(op->getFileHandler(), nullptr);
    const std::function<void()> uses[] = {
        [&] { EXPECT_FALSE(op->restoreSettingFromCurrent({})); },
        [&] { EXPECT_FALSE(op->restoreSetting({})); },
        [&] { op->refreshDataFromCurrent(); },
        [&] { op->refreshDataFromManufactory(); },
        [&] {
            EXPECT_TRUE(storeValue(*op, {}, FIELD, 7));
            EXPECT_EQ(m_parent.deliver(), 0);
        },
    };
    for (const auto& use : uses) {
        ASSERT_TRUE(op->releaseFile());
        use();
        EXPECT_EQ(op->getFileHandler(), nullptr);
    }
}

TEST_F(LifecycleTest, NothingIsReadBackFromAFileThatIsBeingMerged) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, replaced(goodText(Copy::Current), "v0.4", "v0.3"));
    auto op = makeOperator();
    op->readsBackWhileWriting = true;
    ASSERT_TRUE(op->loadFile());
    op->waitForMerge();
    EXPECT_EQ(op->readBack, false);
    EXPECT_EQ(current(), goodText(Copy::Current));
}

TEST_F(LifecycleTest, ReleasingWaitsForTheMergedFile) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    for (const auto& release : {&Global::releaseFile, &Global::resetForLoadFile}) {
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, replaced(goodText(Copy::Current), "v0.4", "v0.3"));
        auto op = makeOperator();
        ASSERT_TRUE(op->loadFile());
        EXPECT_TRUE((op.get()->*release)());
        EXPECT_EQ(current(), goodText(Copy::Current)) << "nobody writes a released file";
        EXPECT_EQ(op->getFileHandler(), nullptr);
        EXPECT_TRUE(op->loadFile());
        EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
    }
}

TEST_F(LifecycleTest, AWholeFileIsNotUndoneByOlderSnapshots) { // invariant 4
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(storeValue(*op, {}, FIELD, 20));
    EXPECT_TRUE(storeValue(*op, {}, FIELD, 21));
    ASSERT_TRUE(op->initFile(false)); // writes the table, as the end of a merge does
    const std::string written = withChecksum(withValue(m_text, "[Global]\n", FIELD, 21));
    EXPECT_EQ(current(), written);
    const auto events = m_parent.takePosted();
    EXPECT_TRUE(events.front()->handle());
    EXPECT_EQ(current(), written);
}

TEST_F(LifecycleTest, AMergeThatCannotBeWrittenKeepsTheOldCopies) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    // Keys in another order: read by position, the values would change places.
    const std::string first = keyLine(FIELD, "0001");
    const std::string second = keyLine("HDMI1_DR", "0000");
    const std::string old =
        withChecksum(replaced(replaced(goodText(Copy::Current), "v0.4", "v0.3"), first + second, second + first));
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, old);
    m_root.write(Copy::Current, std::string(PICTURE_GLOBAL_FILE) + FileUtil::TEMPORARY_SUFFIX + "/obstacle", "");
    const auto obstacle = SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE) + FileUtil::TEMPORARY_SUFFIX;
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    op->waitForMerge();
    EXPECT_TRUE(m_log.contains(" failed when load OTA data.\n"));
    EXPECT_EQ(current(), old);
    EXPECT_EQ(backup(), goodText(Copy::Backup));
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
    EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 3));
    EXPECT_EQ(m_parent.deliver(), 0);
    EXPECT_EQ(current(), old);
    // Loaded again it is still a file of another version.
    op->releaseFile();
    ASSERT_TRUE(op->loadFile());
    op->waitForMerge();
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
    EXPECT_EQ(valueOf(*op, {}, "FpsSwitch"), 3) << "it could not be written, but it was stored";

    std::filesystem::remove_all(obstacle);
    EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 4));
    EXPECT_EQ(m_parent.deliver(), 2) << "the old one was posted again";
    EXPECT_EQ(current(), withChecksum(withValue(goodText(Copy::Current), "[Global]\n", "FpsSwitch", 4)));
    EXPECT_EQ(backup(), current());
}

TEST_F(LifecycleTest, AMergeThatCouldNotBeWrittenDoesNotUndoAnotherProcesses) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    const std::string good = current(PICTURE_MODE_FILE);
    const std::string merged = withChecksum(withValue(good, "[3a7]\n", "Hue", 9)); // and a store since
    for (const bool loading : {true, false}) {
        m_root.write(Copy::Current, PICTURE_MODE_FILE, withChecksum(replaced(good, "v0.4", "v0.3")));
        m_root.write(Copy::Current, std::string(PICTURE_MODE_FILE) + FileUtil::TEMPORARY_SUFFIX + "/obstacle", "");
        auto op = makeOperator<Mode>();
        ASSERT_TRUE(op->loadFile());
        op->waitForMerge();
        std::filesystem::remove_all(SettingsRoot::path(Copy::Current, PICTURE_MODE_FILE) + FileUtil::TEMPORARY_SUFFIX);
        m_root.write(Copy::Current, PICTURE_MODE_FILE, merged); // the other process had more luck
        if (loading) {
            EXPECT_TRUE(op->releaseFile());
            EXPECT_TRUE(op->loadFile());
            EXPECT_EQ(valueOf(*op, {3, 10, 7}, "Hue"), 9);
        }
        EXPECT_TRUE(storeValue(*op, {4, 0, 0}, "Hue", 7));
        EXPECT_EQ(m_parent.deliver(), 1);
        EXPECT_TRUE(current(PICTURE_MODE_FILE) == withChecksum(withValue(merged, "[400]\n", "Hue", 7))) << loading;
    }
}

TEST_F(LifecycleTest, ACopyToAllSourcesThatFindsNoFileIsKept) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    const std::string good = current(PICTURE_MODE_FILE);
    auto op = makeOperator<Mode>();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(storeValue(*op, {4, 0, 0}, "Hue", 9));
    EXPECT_EQ(m_parent.deliver(), 1);
    m_root.remove(Copy::Current, PICTURE_MODE_FILE);
    EXPECT_TRUE(op->applySettingForAllSources({4, 0, 0}));
    EXPECT_EQ(m_log.count("] failed for storing data.\n"), 15U);
    EXPECT_FALSE(m_root.exists(Copy::Current, PICTURE_MODE_FILE));
    // The next load finds the backup, without the copies, and writes them.
    EXPECT_TRUE(op->releaseFile() && op->loadFile());
    EXPECT_EQ(valueOf(*op, {15, 0, 0}, "Hue"), 9);
    EXPECT_EQ(m_parent.deliver(), 15);
    std::string expected = good;
    for (const char source : std::string("012356789abcdef"))
        expected = withValue(expected, std::string("[") + source + "00]\n", "Hue", 9);
    EXPECT_TRUE(current(PICTURE_MODE_FILE) == withChecksum(expected));
}

// --- what runs out ---

/// A store whose write stops halfway and that could leave no record of what it was about to do.
class TornStoreTest : public LifecycleTest {
protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(makeCopies());
        std::filesystem::create_symlink("/dev/full", m_path + ".redo"); // a record goes into no link
        m_op = makeOperator();
        ASSERT_TRUE(m_op->loadFile());
        EXPECT_TRUE(m_op->storeData({}, {{FIELD, 9}, {"FpsSwitch", 7}}));
    }
    std::string stored(const std::string& before) const {
        return withChecksum(withValue(withValue(before, "[Global]\n", FIELD, 9), "[Global]\n", "FpsSwitch", 7));
    }
    /// Writes no further than behind the first value.
    std::unique_ptr<FullDisk> fullDisk() const {
        return std::make_unique<FullDisk>(contentAt(m_text) + std::string("[Global]\n").size() + 32);
    }
    void tear() {
        const std::string torn = withValue(goodText(Copy::Current), "[Global]\n", FIELD, 9);
        ASSERT_EQ(m_parent.deliver(), 0);
        ASSERT_TRUE(m_log.contains("the store goes on without.\n"));
        ASSERT_TRUE(m_log.contains("write section [Global] for file ["));
        ASSERT_EQ(current(), torn);
    }

    const std::string m_path = SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE);
    std::unique_ptr<Global> m_op;
};

TEST_F(TornStoreTest, IsEndedAsSoonAsThatIsPossible) { // invariant 7
    auto disk = fullDisk();
    ASSERT_NO_FATAL_FAILURE(tear());
    const std::string torn = current();
    EXPECT_FALSE(m_op->refreshDataFromCurrent());
    EXPECT_TRUE(m_op->releaseFile());
    EXPECT_FALSE(m_op->loadFile()) << "nothing older takes its place";
    EXPECT_TRUE(m_log.contains("] cannot be read now ("));
    EXPECT_EQ(current(), torn);
    disk.reset();
    EXPECT_TRUE(m_op->loadFile());
    EXPECT_EQ(current(), stored(goodText(Copy::Current)));
    EXPECT_EQ(valueOf(*m_op, {}, "FpsSwitch"), 7);
    EXPECT_TRUE(m_op->backup());
    EXPECT_EQ(backup(), current());
}

TEST_F(TornStoreTest, DoesNotTouchAnotherFileInItsPlace) {
    auto disk = fullDisk();
    ASSERT_NO_FATAL_FAILURE(tear());
    disk.reset();
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, goodText(Copy::Factory));
    EXPECT_TRUE(m_op->backup());
    EXPECT_EQ(current(), goodText(Copy::Factory));
    tryAgain(m_op->state());
    EXPECT_EQ(current(), stored(goodText(Copy::Factory)));
}

// --- making files ---

TEST_F(LifecycleTest, MakesThreeCopiesOnce) {
    m_parent.tvType = "SN0";
    ASSERT_TRUE(makeOperator()->initFile(true));
    const std::string text = current();
    const CategoryLayout& layout = FileUserPictureGlobal::layout();
    EXPECT_EQ(text.substr(0, lineAt(text, "CRC ")),
              text::commentBlock(layout) + text::summary("SN0", "v0.4", 0, true).substr(0, text::CRC_LINE_OFFSET));
    EXPECT_EQ(text.size() - contentAt(text), std::size_t{9 + 28 * 32});
    EXPECT_TRUE(checksumIsRight(text));
    EXPECT_EQ(backup(), text);
    EXPECT_EQ(m_root.read(Copy::Factory, PICTURE_GLOBAL_FILE), text);
    EXPECT_EQ(m_root.files().size(), 3U) << "nothing temporary is left";

    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, "mine");
    EXPECT_FALSE(makeOperator()->initFile(true));
    EXPECT_TRUE(m_log.contains("init failed -- file ["));
    EXPECT_EQ(current(), "mine");
}

// --- backups ---

TEST_F(LifecycleTest, BackupsAreMadeOfWhatChanged) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(op->backup());
    EXPECT_TRUE(m_log.contains("and NEEDN'T generate backup file.\n"));
    EXPECT_EQ(backup(), goodText(Copy::Backup)) << "the open current copy answers for the backup";

    for (const bool readAgain : {false, true}) {
        EXPECT_FALSE(op->getBackupReq());
        EXPECT_TRUE(storeValue(*op, {}, FIELD, readAgain ? 7 : 6));
        EXPECT_EQ(m_parent.deliver(), 1);
        EXPECT_TRUE(op->getBackupReq());
        op->setBackupReq(false);
        if (readAgain) {
            EXPECT_TRUE(op->refreshDataFromCurrent());
        }
        EXPECT_TRUE(op->backup());
        EXPECT_EQ(backup(), current()) << "after a store the next backup really copies";
    }
    EXPECT_EQ(m_root.read(Copy::Factory, PICTURE_GLOBAL_FILE), goodText(Copy::Factory));

    EXPECT_TRUE(storeValue(*op, {}, FIELD, 9));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_TRUE(op->backup(true));
    EXPECT_EQ(m_root.read(Copy::Factory, PICTURE_GLOBAL_FILE), current());

    m_root.remove(Copy::Backup, PICTURE_GLOBAL_FILE);
    EXPECT_TRUE(op->backup());
    EXPECT_EQ(backup(), current());
}

TEST_F(LifecycleTest, ADamagedCurrentCopyNeverGoesOverTheBackup) { // invariant 1
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    for (const Damage& damage : damages()) {
        auto op = makeOperator();
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, goodText(Copy::Current));
        ASSERT_TRUE(op->loadFile());
        EXPECT_TRUE(storeValue(*op, {}, FIELD, 6));
        EXPECT_EQ(m_parent.deliver(), 1);
        if (damage.checksumIsRight)
            continue;
        const std::optional<std::string> text = damage.apply(goodText(Copy::Current));
        m_root.remove(Copy::Current, PICTURE_GLOBAL_FILE);
        if (text)
            m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, *text);
        m_log.clear();
        EXPECT_TRUE(op->backup());
        EXPECT_TRUE(m_log.contains("Backup file [")) << damage.name;
        EXPECT_EQ(backup(), goodText(Copy::Backup)) << damage.name;
    }
}

TEST_F(LifecycleTest, AFileThatMayNotBeWrittenIsRead) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    ASSERT_EQ(chmod(SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE).c_str(), 0444), 0);
    auto op = makeOperator();
    const ModesHold modes;
    ASSERT_TRUE(op->loadFile());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
    ASSERT_TRUE(storeValue(*op, {}, FIELD, 9));
    EXPECT_EQ(m_parent.deliver(), 0);
    EXPECT_EQ(current(), goodText(Copy::Current));
}

TEST_F(LifecycleTest, WhatAnotherProcessMendedMeanwhileIsLoaded) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string mended = withChecksum(withValue(m_text, "[Global]\n", FIELD, 7));
    const std::pair<std::string, const char*> cases[] = {
        {"damaged", "Summary section subject (damaged) is invalid.\n"},
        {replaced(goodText(Copy::Current), "v0.4", "v0.3"),
         "dataModule will load data as OTA Flow in [NORMAL_LOAD].\n"},
    };
    const std::string lockFile = paths::lockFile(PICTURE_GLOBAL_FILE);
    for (const auto& [found, message] : cases) {
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, found);
        FileLock other; // keeps the load from the place where it would recover the backup, or merge
        ASSERT_TRUE(other.lock(lockFile, FileLock::Kind::Shared));
        const int givenBack = inotify_init1(IN_CLOEXEC);
        ASSERT_GE(inotify_add_watch(givenBack, lockFile.c_str(), IN_CLOSE_NOWRITE), 0);
        auto op = makeOperator();
        bool loaded = false;
        std::thread loader([&] { loaded = op->loadFile(); });
        pollfd waiting{givenBack, POLLIN, 0}; // until it wants its shared lock to be an exclusive one
        EXPECT_EQ(poll(&waiting, 1, 60000), 1);
        close(givenBack);
        EXPECT_TRUE(m_log.contains(message));
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, mended);
        other.unlock();
        loader.join();
        op->waitForMerge();
        EXPECT_TRUE(loaded);
        EXPECT_EQ(valueOf(*op, {}, FIELD), 7);
        EXPECT_EQ(current(), mended);
        EXPECT_EQ(backup(), goodText(Copy::Backup)) << "nothing is written";
    }
}

TEST_F(LifecycleTest, ACopyThatCannotBeReadForAMomentIsTriedAgain) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    std::optional<NoMoreFiles> files(std::in_place, 1); // the lock's
    DebugOutput::setSink([&](DebugOutput::Level, const char* line) {
        if (std::string(line).find("open file [") != std::string::npos)
            files.reset();
    });
    EXPECT_TRUE(op->loadFile());
    EXPECT_FALSE(files);
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
}

TEST_F(LifecycleTest, AReleasedFileIsNotBackedUp) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    op->releaseFile();
    const bool entered = op->tryEnterCriticalSection();
    EXPECT_FALSE(entered);
    if (entered)
        op->leaveCriticalSection();
    EXPECT_EQ(op->getFileHandler(), nullptr);
    // A resume ends it, however often the files were released.
    op->releaseFile();
    EXPECT_TRUE(loadIfReleased(op->state()));
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
    const bool enteredAgain = op->tryEnterCriticalSection();
    EXPECT_TRUE(enteredAgain);
    if (enteredAgain)
        op->leaveCriticalSection();
}

TEST_F(LifecycleTest, RecoveringIsForTheOtherCopies) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(op->recover());
    EXPECT_TRUE(m_log.contains("is 'NORMAL_LOAD' and needn't recover file.\n"));
    EXPECT_EQ(current(), goodText(Copy::Current));
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, "damaged");
    op->releaseFile();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(
        m_log.contains("] from file [" + SettingsRoot::path(Copy::Backup, PICTURE_GLOBAL_FILE) + "] successfully.\n"));

    // Without a directory to put it in, the load fails although a copy could be read.
    std::filesystem::remove_all(SettingsRoot::directory(Copy::Current));
    m_root.write(Copy::Backup, "../current", "in the way");
    EXPECT_FALSE(makeOperator()->loadFile());
    EXPECT_EQ(backup(), goodText(Copy::Backup));
}

// --- factory reset, refresh, removal ---

TEST_F(LifecycleTest, ResetTakesAFactoryCopyThatVerifies) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    const std::string good = goodText(Copy::Factory);
    for (const std::string& bad : {std::string(), replaced(good, "0000\n", "0009\n", contentAt(good)),
                                   replaced(good, "v0.4", "v0.5"), *damages().back().apply(good)}) {
        m_root.write(Copy::Factory, PICTURE_GLOBAL_FILE, bad);
        EXPECT_TRUE(op->resetCurrentFileFromManufactoryFile());
        EXPECT_EQ(current(), goodText(Copy::Current));
        EXPECT_FALSE(op->getBackupReq());
    }
    m_root.write(Copy::Factory, PICTURE_GLOBAL_FILE, good);
    EXPECT_TRUE(storeValue(*op, {}, FIELD, 9)); // still queued when the reset comes
    EXPECT_TRUE(op->refreshDataFromManufactory());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Factory));
    EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 2)); // between the two steps of a factory reset
    EXPECT_TRUE(op->resetCurrentFileFromManufactoryFile());
    EXPECT_EQ(current(), good);
    EXPECT_TRUE(op->getBackupReq());
    m_parent.deliver();
    EXPECT_EQ(current(), withChecksum(withValue(good, "[Global]\n", "FpsSwitch", 2)));
    EXPECT_TRUE(op->backup());
    EXPECT_EQ(backup(), current());
}

TEST_F(LifecycleTest, CopiesToAllSourcesBetweenTheStepsOfAResetAreKept) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    std::string expected = current(PICTURE_MODE_FILE);
    m_root.write(Copy::Factory, PICTURE_MODE_FILE, expected = withChecksum(withValue(expected, "[400]\n", "Hue", 9)));
    auto op = makeOperator<Mode>();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(op->refreshDataFromManufactory());
    EXPECT_TRUE(op->applySettingForAllSources({4, 0, 0}));
    EXPECT_TRUE(op->resetCurrentFileFromManufactoryFile());
    EXPECT_EQ(m_parent.deliver(), 15);
    for (const char source : std::string("0123456789abcdef"))
        expected = withValue(expected, std::string("[") + source + "00]\n", "Hue", 9);
    EXPECT_TRUE(current(PICTURE_MODE_FILE) == withChecksum(expected));
}

TEST_F(LifecycleTest, RefreshReadsTheWholeTableAgain) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(op->refreshDataFromManufactory());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Factory));
    EXPECT_EQ(current(), goodText(Copy::Current));
    EXPECT_TRUE(op->refreshDataFromCurrent());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));

    // Reading the factory copy begins no merge, whatever the current one is.
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, replaced(goodText(Copy::Current), "v0.4", "v0.3"));
    EXPECT_TRUE(op->refreshDataFromManufactory());
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, goodText(Copy::Current));
    EXPECT_TRUE(op->refreshDataFromCurrent());
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));

    m_root.remove(Copy::Factory, PICTURE_GLOBAL_FILE);
    EXPECT_FALSE(op->refreshDataFromManufactory());
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, replaced(goodText(Copy::Current), "v0.4", "v0.3"));
    EXPECT_FALSE(op->refreshDataFromCurrent()) << "of another version";
    m_root.remove(Copy::Current, PICTURE_GLOBAL_FILE);
    EXPECT_FALSE(op->refreshDataFromCurrent());
    EXPECT_EQ(m_log.count("Load file from manufactory failed.\n"), 3U);
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Current));
}

TEST_F(LifecycleTest, RemovesTheFiles) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    EXPECT_TRUE(op->removeCurrentFile());
    EXPECT_EQ(m_root.files().size(), 2U);
    EXPECT_FALSE(op->removeCurrentFile());
    EXPECT_FALSE(op->removeFile()) << "the result is that of the current copy";
    EXPECT_TRUE(m_root.files().empty());
    EXPECT_EQ(op->getFileFullPath(), SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE));
    EXPECT_EQ(m_log.count("remove file ["), 2U);
    EXPECT_TRUE(op->initFile(true));
    m_root.remove(Copy::Backup, PICTURE_GLOBAL_FILE);
    EXPECT_TRUE(op->removeFile());
    EXPECT_TRUE(m_root.files().empty());
}

// --- any file, and files that change while they are in use ---

TEST_F(LifecycleTest, LoadingAnyFileLeavesThePathAlone) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    const std::string elsewhere = SettingsRoot::directory(Copy::Backup) + "../other.ini";
    // Its lengths are others, and so is its version; neither may reach the current copy.
    const std::string other = "# one line more #\n" + replaced(goodText(Copy::Factory), "v0.4", "v0.9");
    m_root.write(Copy::Backup, "../other.ini", other);
    EXPECT_TRUE(op->loadFile(elsewhere.c_str()));
    EXPECT_EQ(valueOf(*op, {}, FIELD), fieldOf(Copy::Factory));
    EXPECT_EQ(op->getFileFullPath(), SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE));
    EXPECT_TRUE(storeValue(*op, {}, FIELD, 9));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(current(), withChecksum(withValue(m_text, "[Global]\n", FIELD, 9)));
    EXPECT_EQ(m_root.read(Copy::Backup, "../other.ini"), other);

    m_root.write(Copy::Backup, "../other.ini", replaced(other, "= 0x", "= 0xf"));
    EXPECT_FALSE(op->loadFile(elsewhere.c_str()));
    EXPECT_FALSE(op->loadFile((elsewhere + ".missing").c_str()));
    EXPECT_FALSE(op->loadFile((elsewhere + std::string(300, 'x')).c_str()));
    EXPECT_FALSE(op->loadFile(nullptr));
    EXPECT_EQ(m_log.count("load summary failed from file ["), 4U);
    m_root.write(Copy::Backup, "../other.ini", withChecksum(replaced(other, "[Global]\n", "(Global)\n")));
    EXPECT_FALSE(op->loadFile(elsewhere.c_str()));
    EXPECT_TRUE(m_log.contains("load contents failed from file ["));
    EXPECT_EQ(valueOf(*op, {}, FIELD), 9);
}

TEST_F(LifecycleTest, StoresGoToTheFileThatIsThereNow) { // invariant 3
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    const std::string path = SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE);
    // Replaced by another file with a longer comment block.
    const std::string longer = "# one line more #\n" + goodText(Copy::Factory);
    m_root.write(Copy::Current, "new", longer);
    std::filesystem::rename(SettingsRoot::path(Copy::Current, "new"), path);
    EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 4));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(current(),
              withChecksum("# one line more #\n" + withValue(goodText(Copy::Current), "[Global]\n", "FpsSwitch", 4)));

    // Removed: nothing is written, and nothing is made.
    EXPECT_TRUE(op->refreshDataFromCurrent());
    m_root.remove(Copy::Current, PICTURE_GLOBAL_FILE);
    EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", 5));
    EXPECT_EQ(m_parent.deliver(), 0);
    EXPECT_TRUE(m_log.contains("open file [" + path + "] failed for storing data.\n"));
    EXPECT_FALSE(m_root.exists(Copy::Current, PICTURE_GLOBAL_FILE));

    // Of another version, or with a checksum line that cannot be rewritten in place: left as it is.
    for (const std::string& text : {replaced(goodText(Copy::Current), "v0.4", "v0.3"),
                                    replaced(goodText(Copy::Current), " = 0x", " =  0x", 300)}) {
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, text);
        EXPECT_TRUE(storeValue(*op, {}, "FpsSwitch", valueOf(*op, {}, "FpsSwitch") + 1));
        EXPECT_EQ(m_parent.deliver(), 0);
        EXPECT_EQ(current(), text);
    }
}

TEST_F(LifecycleTest, NoSectionIsWrittenBeyondTheEndOfTheFile) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    auto op = makeOperator<Mode>();
    ASSERT_TRUE(op->loadFile());
    const std::string cut = withChecksum(current(PICTURE_MODE_FILE).substr(0, 3420 + 128 + 774 * 1535 + 773));
    m_root.write(Copy::Current, PICTURE_MODE_FILE, cut);
    EXPECT_TRUE(storeValue(*op, {15, 11, 7}, "Hue", 1));
    EXPECT_EQ(m_parent.deliver(), 0);
    EXPECT_TRUE(m_log.contains("search dimension failed , maybe the file content is not completed !!!\n"));
    EXPECT_TRUE(current(PICTURE_MODE_FILE) == cut);
    EXPECT_TRUE(storeValue(*op, {15, 11, 6}, "Hue", 1));
    EXPECT_EQ(m_parent.deliver(), 1);
    EXPECT_EQ(current(PICTURE_MODE_FILE).size(), cut.size());
}

// --- checksum and summary ---

TEST_F(LifecycleTest, GetCrcCodeSaysWhatIsWrongWithTheOpenFile) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    auto op = makeOperator<Mode>();
    ASSERT_TRUE(op->loadFile());
    const std::string path = SettingsRoot::path(Copy::Current, PICTURE_MODE_FILE);
    const std::string good = current(PICTURE_MODE_FILE);
    const std::pair<std::string, const char*> cases[] = {
        {replaced(good, "[Summary]", "[Sumary]"), "Summary section subject ([Sumary]\n) is invalid.\n"},
        {replaced(good, "\nSN ", "\nTV "), "Summary section SN Field (TV"},
        {replaced(good, "\nVersion", "\nVerzion"), "Summary section VER Field (Verzion"},
        {replaced(good, "\nCRC ", "\nABC "), "Summary section CRC Field (ABC"},
    };
    for (const auto& [text, message] : cases) {
        std::ofstream(path) << text; // into the open file
        op->find("[Nowhere]\n");     // to its end, so that nothing of its start is in memory
        EXPECT_EQ(op->crcCode(path), 0U) << message;
        EXPECT_TRUE(m_log.contains(message)) << message;
    }
    std::ofstream(path) << good.substr(0, lineAt(good, "Version "));
    op->find("[Nowhere]\n");
    m_log.clear();
    EXPECT_EQ(op->crcCode(path), 0U);
    EXPECT_FALSE(m_log.contains("is invalid")) << "nothing of the files before is left";
    std::ofstream(path) << good;
    op->find("[Nowhere]\n");
    EXPECT_EQ(op->crcCode(path), checksum(good.substr(contentAt(good))));
}

TEST_F(LifecycleTest, WhatAnotherProcessStoredInTheOpenFileIsBackedUp) {
    ASSERT_TRUE(makeOperator<Mode>()->initFile(true));
    auto op = makeOperator<Mode>();
    ASSERT_TRUE(op->loadFile());
    const std::string stored = withChecksum(withValue(current(PICTURE_MODE_FILE), "[3a7]\n", "Hue", 9));
    std::ofstream(SettingsRoot::path(Copy::Current, PICTURE_MODE_FILE)) << stored;
    op->find("[Nowhere]\n"); // to its end, so that nothing of its start is in memory
    EXPECT_TRUE(op->backup());
    EXPECT_TRUE(backup(PICTURE_MODE_FILE) == stored);
}

TEST_F(LifecycleTest, WhileTheFactoryCopyIsOpenThereIsNothingToBackUp) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    ASSERT_TRUE(op->openFactory());
    EXPECT_FALSE(op->backup());
    EXPECT_TRUE(m_log.contains("current load mode [MANUFACTORY_LOAD] is not 'NORMAL_LOAD' when backup file.\n"));
    EXPECT_EQ(backup(), goodText(Copy::Backup));
}

TEST_F(LifecycleTest, RewritesTheSummaryInPlace) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    auto op = makeOperator();
    ASSERT_TRUE(op->loadFile());
    m_parent.tvType = "ANOTHERTYPE";
    EXPECT_TRUE(op->rewriteSummary());
    EXPECT_EQ(current(), replaced(goodText(Copy::Current), "TVTYPE01   ", "ANOTHERTYPE"));

    const std::string wide = replaced(current(), "ANOTHERTYPE     ", "ANOTHERTYPE      ");
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, wide);
    EXPECT_FALSE(op->rewriteSummary()) << "its lines are not the ones we write";
    EXPECT_EQ(current(), wide);
    m_root.remove(Copy::Current, PICTURE_GLOBAL_FILE);
    EXPECT_FALSE(op->rewriteSummary());
    EXPECT_FALSE(op->find("[Summary]\n"));
    EXPECT_FALSE(op->find(nullptr));
}

TEST_F(LifecycleTest, RepairsAChecksumLine) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string good = goodText(Copy::Current);
    const std::string path = SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE);
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE,
                 replaced(withValue(good, "[Global]\n", FIELD, 42), "v0.4", "v9.9"));
    EXPECT_TRUE(AbstractFileOperator::generateCRC32(path.c_str()));
    EXPECT_EQ(current(), replaced(withChecksum(withValue(good, "[Global]\n", FIELD, 42)), "v0.4", "v9.9"));

    const std::size_t crcLine = lineAt(good, "CRC ");
    const std::pair<std::string, const char*> refused[] = {
        {"", "Summary section subject () is invalid.\n"},
        {replaced(good, "[Summary]", "[Sumary]"), "Summary section subject ([Sumary]\n) is invalid.\n"},
        {good.substr(0, lineAt(good, "SN ")), "read line failed for tv type.\n"},
        {replaced(good, "\nSN ", "\nTV "), "Summary section SN Field (TV"},
        {good.substr(0, lineAt(good, "Version ")), "read line failed for tv version.\n"},
        {replaced(good, "\nVersion", "\nVerzion"), "Summary section VER Field (Verzion"},
        {good.substr(0, crcLine), "read line failed for tv crc.\n"},
        {replaced(good, "\nCRC ", "\nABC "), "Summary section CRC Field (ABC"},
        {replaced(good, " = 0x", "= 0x", crcLine), "Summary section CRC Field (CRC"},
        {good.substr(0, contentAt(good) - 1), "Summary section CRC Field (CRC"},
    };
    for (const auto& [text, message] : refused) {
        m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, text);
        m_log.clear();
        EXPECT_FALSE(AbstractFileOperator::generateCRC32(path.c_str())) << message;
        EXPECT_TRUE(m_log.contains(message)) << message;
        EXPECT_EQ(current(), text) << message;
    }
    EXPECT_FALSE(AbstractFileOperator::generateCRC32((path + ".missing").c_str()));
    EXPECT_FALSE(AbstractFileOperator::generateCRC32(SettingsRoot::directory(Copy::Current).c_str()));
    EXPECT_TRUE(m_log.contains("open file ["));
    EXPECT_FALSE(AbstractFileOperator::generateCRC32(nullptr));
}

TEST_F(LifecycleTest, ARepairThatFailsChangesNothing) {
    ASSERT_NO_FATAL_FAILURE(makeCopies());
    const std::string path = SettingsRoot::path(Copy::Current, PICTURE_GLOBAL_FILE);
    const std::string damaged = withValue(goodText(Copy::Current), "[Global]\n", FIELD, 42);
    m_root.write(Copy::Current, PICTURE_GLOBAL_FILE, damaged);
    {
        const NoMoreFiles files(2); // lock and file
        EXPECT_FALSE(AbstractFileOperator::generateCRC32(path.c_str()));
    }
    EXPECT_TRUE(m_log.contains("Failed to Calculate CRC code of data file [" + path + "].\n"));
    EXPECT_EQ(current(), damaged);
    {
        const FullDisk disk(lineAt(damaged, "CRC "));
        EXPECT_FALSE(AbstractFileOperator::generateCRC32(path.c_str()));
    }
    EXPECT_TRUE(m_log.contains("Failed to write CRC code of data file [" + path + "].\n"));
    EXPECT_EQ(current(), damaged);
    EXPECT_TRUE(AbstractFileOperator::generateCRC32(path.c_str()));
    EXPECT_EQ(current(), withChecksum(damaged));
}

} // namespace
} // namespace td::test
