// What sets the sound categories apart, on real files.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <dataModule/FileDataSeparateManager.h>
#include <dataModule/fileOperator/FileFactorySoundAMP.h>
#include <dataModule/fileOperator/FileFactorySoundAVC.h>
#include <dataModule/fileOperator/FileFactorySoundGlobal.h>
#include <dataModule/fileOperator/FileFactorySoundPEQ.h>
#include <dataModule/fileOperator/FileUserSoundDbx.h>
#include <dataModule/fileOperator/FileUserSoundDelay.h>
#include <dataModule/fileOperator/FileUserSoundDTS.h>
#include <dataModule/fileOperator/FileUserSoundEQ.h>
#include <dataModule/fileOperator/FileUserSoundGlobal.h>
#include <dataModule/fileOperator/FileUserSoundMode.h>

#include "FakeOperator.h"
#include "FakeParent.h"
#include "fileOperator/text/TextLayout.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

class SoundCategoriesTest : public testing::Test {
protected:
    template <class Operator>
    std::unique_ptr<Operator> loaded() {
        auto op = std::make_unique<Operator>();
        op->setParent(&m_parent);
        EXPECT_TRUE(op->initFile(true));
        EXPECT_TRUE(op->loadFile());
        return op;
    }
    std::string contentOf(const TableOperator& op) const {
        const std::string text = m_root.read(Copy::Current, op.layoutOf().file);
        return text.substr(contentAt(text));
    }

    SettingsRoot m_root;
    FakeParent m_parent;
    LogCapture m_log;
};

// --- user sound global ---

TEST_F(SoundCategoriesTest, TheGlobalFileHasAnotherOrderThanTheRecord) {
    const auto op = loaded<FileUserSoundGlobal>();
    std::vector<_Argument_t> args;
    ASSERT_TRUE(op->loadData({}, args));
    ASSERT_EQ(args.size(), static_cast<std::size_t>(SND_GLOBAL_FIELD_COUNT));
    EXPECT_STREQ(args[SND_GLOBAL_HEADPHONE_MODE].name, "HeadPhoneMode");
    EXPECT_STREQ(args[4].name, "HeadPhoneMode");
    EXPECT_STREQ(args[5].name, "HeadPhoneVolume");
    EXPECT_STREQ(args[9].name, "AudioDescriptionVolume");
    EXPECT_STREQ(args[22].name, "CenterVolume");
    for (int i = 0; i < SND_GLOBAL_FIELD_COUNT; ++i)
        args[static_cast<std::size_t>(i)].value = i + 1;
    ASSERT_TRUE(op->storeData({}, args));
    EXPECT_EQ(m_parent.deliver(), 1);

    EXPECT_EQ(contentOf(*op),
              "[Global]\n" + keyLine("Volume", "0001") + keyLine("Balance", "0002") + keyLine("Spdif", "0003") +
                  keyLine("Speaker", "0004") + keyLine("HeadPhoneVolume", "0006") + keyLine("AudioOut", "0007") +
                  keyLine("AudioDescriptionEnable", "0008") + keyLine("AudioDescriptionOutDev", "0009") +
                  keyLine("AudioDescriptionVolume", "0010") + keyLine("HeadPhoneMode", "0005") +
                  keyLine("WallMount", "0011") + keyLine("BT_Volume", "0012") + keyLine("ApplyModeToSource", "0013") +
                  keyLine("DolbyAtmosEnable", "0014") + keyLine("BT_HeadphoneVolume", "0015") +
                  keyLine("EArcSwitchValue", "0016") + keyLine("SelectSoundEffect", "0017") +
                  keyLine("BassVolume", "0018") + keyLine("BTWithSpeaker", "0019") + keyLine("WavesSwitch", "0020") +
                  keyLine("SoundDevice", "0021") + keyLine("TopVolume", "0022") + keyLine("CenterVolume", "0023"));

    FileUserSoundGlobal again;
    again.setParent(&m_parent);
    ASSERT_TRUE(again.loadFile());
    std::vector<_Argument_t> read;
    ASSERT_TRUE(again.loadData({}, read));
    for (int i = 0; i < SND_GLOBAL_FIELD_COUNT; ++i)
        EXPECT_EQ(read[static_cast<std::size_t>(i)].value, i + 1) << read[static_cast<std::size_t>(i)].name;

    ASSERT_TRUE(storeValue(again, {}, "HeadPhoneMode", 99));
    EXPECT_TRUE(again.restoreSettingFromCurrent({}));
    EXPECT_EQ(valueOf(again, {}, "HeadPhoneMode"), 5);
}

// --- tables per source ---

// --- the flag of the user's global settings ---

class ManagerWithOperators final : public FileDataSeparateManager {
public:
    ~ManagerWithOperators() override { stop(); }
    using FileDataSeparateManager::registerOperator;
};

template <class Operator>
class SoundFlagTest : public testing::Test {
protected:
    LogCapture m_log;
};
using FlagCategories = testing::Types<FileUserSoundEQ, FileUserSoundDbx, FileUserSoundDTS, FileFactorySoundAVC>;
TYPED_TEST_SUITE(SoundFlagTest, FlagCategories, );

TYPED_TEST(SoundFlagTest, TheManagersAnswerIsAnyValueButZero) {
    ManagerWithOperators manager;
    TypeParam op;
    op.setParent(&manager);
    EXPECT_FALSE(op.loadFlagFromGlobalFile());
    EXPECT_EQ(this->m_log.count("[dataModule] load [ApplyModeToSource] from sound_global failed.\n"), 1U);

    auto* const global = new FakeOperator(SOUND_GLOBAL);
    manager.registerOperator(global);
    EXPECT_FALSE(op.loadFlagFromGlobalFile());
    EXPECT_TRUE(this->m_log.contains("[dataModule]  load [ApplyModeToSource] value is 0.\n"));
    global->setValue("ApplyModeToSource", 2);
    EXPECT_TRUE(op.loadFlagFromGlobalFile());
    EXPECT_TRUE(this->m_log.contains("[dataModule] Apply Setting For All Sources successfully.\n"));
    global->fail("loadData");
    EXPECT_FALSE(op.loadFlagFromGlobalFile());
    EXPECT_EQ(this->m_log.count("[dataModule] load [ApplyModeToSource] from sound_global failed.\n"), 2U);
}

TYPED_TEST(SoundFlagTest, WithoutTheClientsInterfaceTheFlagQueryAnswers) {
    TypeParam op;
    EXPECT_FALSE(op.loadFlagFromGlobalFile());
    FakeParent parent;
    op.setParent(&parent);
    EXPECT_FALSE(op.loadFlagFromGlobalFile());
    parent.applyFlags.insert("SOUND_GLOBAL/ApplyModeToSource");
    EXPECT_TRUE(op.loadFlagFromGlobalFile());
}

// --- wide values ---

TEST_F(SoundCategoriesTest, TheFactoryGlobalReadsBothWidths) {
    const auto op = loaded<FileFactorySoundGlobal>();
    const char* file = op->layoutOf().file;
    std::string text = m_root.read(Copy::Current, file);
    text = replaced(text, "Hpf_Value               = 00000\n", keyLine("Hpf_Value", "-123"));
    text = replaced(text, "Lpf_Value               = 00000\n", "Lpf_Value               = 12345\n");
    m_root.write(Copy::Current, file, withChecksum(text));
    FileFactorySoundGlobal again;
    again.setParent(&m_parent);
    ASSERT_TRUE(again.loadFile());
    EXPECT_EQ(valueOf(again, {}, "Hpf_Value"), -123);
    EXPECT_EQ(valueOf(again, {}, "Lpf_Value"), 12345);

    ASSERT_TRUE(storeValue(again, {}, "Hp_Drc_Value", 100000));
    EXPECT_EQ(m_parent.deliver(), 0);
    EXPECT_EQ(m_root.read(Copy::Current, file), withChecksum(text));
}

// --- comment blocks ---

} // namespace
} // namespace td::test
