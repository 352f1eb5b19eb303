// Sections and comment blocks of some categories as they stand in the file, letter for letter.

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dataModule/fileOperator/OperatorFactory.h>
#include <dataModule/fileOperator/TextLayout.h>

#include "FakeParent.h"
#include "LogCapture.h"
#include "SettingsRoot.h"

namespace td::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class CategoryText : public testing::Test {
protected:
    /// The section as it stands in the file after a store.
    std::string stored(_DataCategory_t category, const std::vector<int>& dims, const std::string& header,
                       const std::vector<_Argument_t>& args) {
        m_operator.reset(createOperator(category));
        if (!m_operator)
            return "not served";
        m_operator->setParent(&m_parent);
        EXPECT_TRUE(m_operator->initFile(true));
        EXPECT_TRUE(m_operator->loadFile());
        EXPECT_TRUE(m_operator->storeData(dims, args));
        EXPECT_EQ(m_parent.deliver(), 1);
        const std::string text = m_root.read(Copy::Current, layoutOf(category)->file);
        const std::size_t start = lineAt(text, header + "\n");
        return text.substr(start, text.find('[', start + 1) - start);
    }
    /// Whether a newly started operator finds the values in the file.
    void expectReadBack(_DataCategory_t category, const std::vector<int>& dims, const std::vector<_Argument_t>& args) {
        m_operator.reset(createOperator(category));
        ASSERT_NE(m_operator, nullptr);
        m_operator->setParent(&m_parent);
        ASSERT_TRUE(m_operator->loadFile());
        for (const _Argument_t& argument : args)
            EXPECT_EQ(valueOf(*m_operator, dims, argument.name), argument.value) << argument.name;
    }
    static std::string commentBlock(_DataCategory_t category) {
        const CategoryLayout* layout = layoutOf(category);
        return layout != nullptr ? text::commentBlock(*layout) : "not served";
    }

    LogCapture m_log;
    SettingsRoot m_root;
    FakeParent m_parent;
    std::unique_ptr<AbstractFileOperator> m_operator;
};

TEST_F(CategoryText, LevelBeyondNineIsALetter) {
    EXPECT_EQ(stored(PICTURE_WB_20_POINT, {4, 5, 19}, "[45j]", {{"Red", 1}, {"Green", -2}, {"Blue", 345}}),
              R"([45j]
Red                      = 0001
Green                    = -002
Blue                     = 0345
)");
}

TEST_F(CategoryText, ColourTunerHasFourDigits) {
    EXPECT_EQ(stored(PICTURE_COLOR_TUNER, {15, 11, 7, 6}, "[fb76]",
                     {{"Brightness", 50}, {"Hue", -999}, {"Saturation", 9999}}),
              R"([fb76]
Brightness               = 0050
Hue                      = -999
Saturation               = 9999
)");
}

TEST_F(CategoryText, OverscanGoesOnToR) {
    const std::vector<_Argument_t> args{{"InputHStart", 1},      {"InputVStart", 2},     {"InputHActive", 1920},
                                        {"InputVActive", 1080},  {"OutputHStart", 3},    {"OutputVStart", 4},
                                        {"OutputHActive", 3840}, {"OutputVActive", 2160}};
    EXPECT_EQ(stored(PICTURE_FACTORY_OVERSCAN, {27}, "[r]", args), R"([r]
InputHStart              = 0001
InputVStart              = 0002
InputHActive             = 1920
InputVActive             = 1080
OutputHStart             = 0003
OutputVStart             = 0004
OutputHActive            = 3840
OutputVActive            = 2160
)");
    expectReadBack(PICTURE_FACTORY_OVERSCAN, {27}, args);
}

TEST_F(CategoryText, XvyccValuesAreHexadecimal) {
    const std::vector<_Argument_t> args{{"XVYCC_0", 255}, {"XVYCC_1", 0},    {"XVYCC_2", 0xFFFFF},
                                        {"XVYCC_3", 1},   {"XVYCC_4", 4096}, {"XVYCC_5", 16},
                                        {"XVYCC_6", 10},  {"XVYCC_7", 2748}, {"XVYCC_8", 65535}};
    EXPECT_EQ(stored(PICTURE_XVYCC, {2}, "[2]", args), R"([2]
XVYCC_0                  = 0x   ff
XVYCC_1                  = 0x    0
XVYCC_2                  = 0xfffff
XVYCC_3                  = 0x    1
XVYCC_4                  = 0x 1000
XVYCC_5                  = 0x   10
XVYCC_6                  = 0x    a
XVYCC_7                  = 0x  abc
XVYCC_8                  = 0x ffff
)");
    expectReadBack(PICTURE_XVYCC, {2}, args);
}

TEST_F(CategoryText, EqualiserBandsHaveFiveDigitValues) {
    const std::vector<_Argument_t> args{{"BandQ", 7}, {"BandGain", -9999}, {"BandFreq", 20000}};
    EXPECT_EQ(stored(SOUND_PEQ, {15}, "[f]", args), R"([f]
BandQ                   = 00007
BandGain                = -9999
BandFreq                = 20000
)");
    expectReadBack(SOUND_PEQ, {15}, args);
}

TEST_F(CategoryText, FactorySoundGlobalHasFiveDigitValues) {
    const std::vector<_Argument_t> args{{"Hpf_Enable", 1},     {"Hpf_Value", 99999},  {"Lpf_Enable", 0},
                                        {"Lpf_Value", -9999},  {"Soc_Drc_Enable", 1}, {"Soc_Drc_Value", 12345},
                                        {"Hp_Drc_Enable", -1}, {"Hp_Drc_Value", 30}};
    EXPECT_EQ(stored(SOUND_GLOBAL_FACTORY, {}, "[Global]", args), R"([Global]
Hpf_Enable              = 00001
Hpf_Value               = 99999
Lpf_Enable              = 00000
Lpf_Value               = -9999
Soc_Drc_Enable          = 00001
Soc_Drc_Value           = 12345
Hp_Drc_Enable           = -0001
Hp_Drc_Value            = 00030
)");
    expectReadBack(SOUND_GLOBAL_FACTORY, {}, args);
}

TEST_F(CategoryText, FiveDigitFilesAlsoReadFourDigitLines) {
    ASSERT_NE(layoutOf(SOUND_PEQ), nullptr);
    stored(SOUND_PEQ, {15}, "[f]", {{"BandQ", 1}});
    std::string text = m_root.read(Copy::Current, "sound_peq_factory.ini");
    text =
        replaced(text, "BandGain                = 00000\n", "BandGain                 = -123\n", lineAt(text, "[f]"));
    m_root.write(Copy::Current, "sound_peq_factory.ini", withChecksum(text));
    expectReadBack(SOUND_PEQ, {15}, {{"BandQ", 1}, {"BandGain", -123}});
}

TEST_F(CategoryText, UserSoundGlobalHasAFileOrderOfItsOwn) {
    const std::vector<_Argument_t> args{{"Volume", 1},
                                        {"Balance", 2},
                                        {"Spdif", 3},
                                        {"Speaker", 4},
                                        {"HeadPhoneMode", 5},
                                        {"HeadPhoneVolume", 6},
                                        {"AudioOut", 7},
                                        {"AudioDescriptionEnable", 8},
                                        {"AudioDescriptionOutDev", 9},
                                        {"AudioDescriptionVolume", 10},
                                        {"WallMount", 11},
                                        {"BT_Volume", 12},
                                        {"ApplyModeToSource", 13},
                                        {"DolbyAtmosEnable", 14},
                                        {"BT_HeadphoneVolume", 15},
                                        {"EArcSwitchValue", 16},
                                        {"SelectSoundEffect", 17},
                                        {"BassVolume", 18},
                                        {"BTWithSpeaker", 19},
                                        {"WavesSwitch", 20},
                                        {"SoundDevice", 21},
                                        {"TopVolume", 22},
                                        {"CenterVolume", 23}};
    EXPECT_EQ(stored(SOUND_GLOBAL, {}, "[Global]", args), R"([Global]
Volume                   = 0001
Balance                  = 0002
Spdif                    = 0003
Speaker                  = 0004
HeadPhoneVolume          = 0006
AudioOut                 = 0007
AudioDescriptionEnable   = 0008
AudioDescriptionOutDev   = 0009
AudioDescriptionVolume   = 0010
HeadPhoneMode            = 0005
WallMount                = 0011
BT_Volume                = 0012
ApplyModeToSource        = 0013
DolbyAtmosEnable         = 0014
BT_HeadphoneVolume       = 0015
EArcSwitchValue          = 0016
SelectSoundEffect        = 0017
BassVolume               = 0018
BTWithSpeaker            = 0019
WavesSwitch              = 0020
SoundDevice              = 0021
TopVolume                = 0022
CenterVolume             = 0023
)");
    expectReadBack(SOUND_GLOBAL, {}, args);
    // A whole record comes in record order: the values were given in it.
    std::vector<_Argument_t> whole;
    ASSERT_TRUE(m_operator->loadData({}, whole));
    for (std::size_t i = 0; i < whole.size(); ++i)
        EXPECT_EQ(whole[i].value, static_cast<int>(i) + 1) << whole[i].name;
}

TEST_F(CategoryText, LowBlueLightIsStoredUnderOtherNames) {
    EXPECT_EQ(stored(PICTURE_LOW_BLUE_LIGHT, {3, 4}, "[34]",
                     {{"Lowbluelightrgain", 1}, {"Lowbluelightggain", 2}, {"Lowbluelightbgain", 3}}),
              R"([34]
RGain                    = 0001
GGain                    = 0002
BGain                    = 0003
)");
    EXPECT_TRUE(storeValue(*m_operator, {3, 4}, "RGain", 9));
    EXPECT_EQ(m_parent.posted(), 0U);
    EXPECT_TRUE(m_log.contains("The field [RGain] is invalid.\n"));
}

TEST_F(CategoryText, LightSensorGainNumbersItsFirstTwoRowsAlike) {
    const std::string block = commentBlock(PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN);
    EXPECT_THAT(block, HasSubstr("scope:0~11 "));
    EXPECT_THAT(block, HasSubstr(R"(#       0--LS_lEVEL1                                                      #
#       1--LS_lEVEL2                                                      #
#       2--LS_lEVEL3                                                      #
#       3--LS_lEVEL4                                                      #
#       4--LS_lEVEL5                                                      #
#       5--LS_lEVEL6                                                      #
#       6--LS_lEVEL7                                                      #
#       7--LS_lEVEL8                                                      #
)"));
    EXPECT_THAT(block, EndsWith(R"(#       1--LEVEL0                                                         #
#       1--LEVEL1                                                         #
#       2--LEVEL2                                                         #
#       3--LEVEL3                                                         #
#       4--LEVEL4                                                         #
#       5--LEVEL5                                                         #
#       6--LEVEL6                                                         #
#       7--LEVEL7                                                         #
#       8--LEVEL8                                                         #
#       9--LEVEL9                                                         #
#       a--LEVEL10                                                        #
#       b--LEVEL11                                                        #
#       c--LEVEL12                                                        #
#       d--LEVEL13                                                        #
#       e--LEVEL14                                                        #
#       f--LEVEL15                                                        #
#       g--LEVEL16                                                        #
#       h--LEVEL17                                                        #
#       i--LEVEL18                                                        #
#       j--LEVEL19                                                        #
#----------------------- Description -------------------------------------#
)"));
}

TEST_F(CategoryText, PipPositionListsOneRowMore) {
    EXPECT_THAT(commentBlock(PICTURE_FACTORY_SCALING_PIP_POS),
                EndsWith(R"(#   overscan conversion index      scope:0~5                              #
#       0--NO_OVERSCAN                                                    #
#       0--SCALING_PIP_POSITION_UPPER_LEFT                                #
#       1--SCALING_PIP_POSITION_UPPER_RIGHT                               #
#       2--SCALING_PIP_POSITION_BOTTOM_LEFT                               #
#       3--SCALING_PIP_POSITION_BOTTOM_RIGHT                              #
#       4--SCALING_PIP_POSITION_SPLIT_SCREEN                              #
#----------------------- Description -------------------------------------#
)"));
}

TEST_F(CategoryText, OverscanListsOneRowLess) {
    EXPECT_THAT(commentBlock(PICTURE_FACTORY_OVERSCAN),
                EndsWith(R"(#   overscan conversion index      scope:0~26                             #
#       0--NO_OVERSCAN                                                    #
#       1--SD_OVERSCAN                                                    #
#       2--HD_OVERSCAN                                                    #
#       3--TTX_SPLIT_4x3_OVERSCAN                                         #
#       4--TTX_SPLIT_16x9_OVERSCAN                                        #
#       5--HDMI_480I_OVERSCAN                                             #
#       6--HDMI_576I_OVERSCAN                                             #
#       7--HDMI_480P_OVERSCAN                                             #
#       8--HDMI_576P_OVERSCAN                                             #
#       9--HDMI_720P_OVERSCAN                                             #
#       a--HDMI_1080I_OVERSCAN                                            #
#       b--HDMI_1080P_OVERSCAN                                            #
#       c--YPBPR_480I_OVERSCAN                                            #
#       d--YPBPR_576I_OVERSCAN                                            #
#       e--YPBPR_480P_OVERSCAN                                            #
#       f--YPBPR_576P_OVERSCAN                                            #
#       g--YPBPR_720P_OVERSCAN                                            #
#       h--YPBPR_1080I_OVERSCAN                                           #
#       i--YPBPR_1080P_OVERSCAN                                           #
#       j--AV_PAL_OVERSCAN                                                #
#       k--AV_NTSC_OVERSCAN                                               #
#       l--AV_SECAM_OVERSCAN                                              #
#       m--AV_PAL60_OVERSCAN                                              #
#       n--ATV_PAL_OVERSCAN                                               #
#       o--ATV_NTSC_OVERSCAN                                              #
#       p--SCART_RGB_OVERSCAN                                             #
#       q--SCART_CVBS_OVERSCAN                                            #
#----------------------- Description -------------------------------------#
)"));
}

TEST_F(CategoryText, FactoryWhiteBalanceListsTenRangesUnderEight) {
    const std::string block = commentBlock(PICTURE_FACTORY_WB);
    EXPECT_THAT(block, HasSubstr(R"(#       0--BIN1                                                           #
#       1--BIN2                                                           #
#       2--BIN3                                                           #
#       3--BIN4                                                           #
#       4--BIN5                                                           #
#       5--BIN6                                                           #
)"));
    EXPECT_THAT(block, HasSubstr(R"(#   source       scope:0~15                                               #
#       0--ATV                                                            #
#       1--DTV                                                            #
#       2--AV                                                             #
#       3--COMPONENT                                                      #
#       4--HDMI1                                                          #
#       5--HDMI2                                                          #
#       6--HDMI3                                                          #
#       7--HDMI4                                                          #
#       8--DMP                                                            #
#       9--VGA                                                            #
#       a--SCART                                                          #
#       b--NETWORK                                                        #
#       c--NETFLIX                                                        #
#       d--YOUTUBE                                                        #
#       e--VUDU                                                           #
#       f--AMAZON                                                         #
#   dr           scope:0~7                                                #
#       0--SDR_FHD                                                        #
#       1--SDR_UHD                                                        #
#       2--HDR_10_FHD                                                     #
#       3--HDR_10_UHD                                                     #
#       4--HDR_HLG_FHD                                                    #
#       5--HDR_HLG_UHD                                                    #
#       6--HDR_DolbyVision_FHD                                            #
#       7--HDR_DolbyVision_UHD                                            #
#       8--HDR_10PLUS_FHD                                                 #
#       9--HDR_10PLUS_UHD                                                 #
)"));
    EXPECT_THAT(block, HasSubstr(R"(#       0--2D                                                             #
#       1--3D                                                             #
)"));
    EXPECT_THAT(block, EndsWith(R"(#       0--COOL                                                           #
#       1--NORMAL                                                         #
#       2--WARM1                                                          #
#       3--WARM2                                                          #
#       4--STANDARD_709                                                   #
#       5--WARM1_P3                                                       #
#----------------------- Description -------------------------------------#
)"));
}

} // namespace
} // namespace td::test
