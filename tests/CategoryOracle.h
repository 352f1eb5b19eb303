/// What every category's file has to look like, written down by hand beside the declarations and never made from them:
/// a slip in a declaration shows up as a difference. The numbers are literals; nothing here is computed from a layout.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "SettingsRoot.h"

namespace td::test {

/// One dimension: what is accepted, how an index is written, and how the comment block lists it.
struct OracleDimension {
    int count;                                                   ///< accepted are 0 to count - 1
    char form;                                                   ///< 'x' hexadecimal digit, 'c' single character
    const char* heading;                                         ///< part of the line over the value list; empty: any
    std::vector<const char*> names;                              ///< of the value list; an empty name: any
    const char* digits = "0123456789abcdefghijklmnopqrstuvwxyz"; ///< of the value list's rows, one after another
};

struct OracleRow {
    int value;
    const char* name;
    const char* operatorClass;
    const char* file;
    const char* version;
    std::vector<OracleDimension> dimensions;
    std::vector<const char*> keys; ///< in file order
    int lineLength;                ///< of one key line
    int commentLines;
    int records;
    int sectionSize;                ///< header and key lines
    int fileSize;                   ///< comment block, summary and all sections
    int dataSize;                   ///< bytes of the table
    const char* purpose = "";       ///< the text of the purpose line; empty: any
    const char* dimensionLine = ""; ///< part of the dimension line; empty: any
    const char* note = "";          ///< on a line of its own somewhere in the comment block; empty: none
};

namespace oracle {

using Names = std::vector<const char*>;

inline const Names SOURCES{"ATV", "DTV", "AV",    "COMPONENT", "HDMI1",   "HDMI2",   "HDMI3", "HDMI4",
                           "DMP", "VGA", "SCART", "NETWORK",   "NETFLIX", "YOUTUBE", "VUDU",  "AMAZON"};
inline const Names PICTURE_MODES{
    "VIVID",          "STANDARD",           "ENERGY SAVING",      "MOVIE",           "GAME",
    "SPORT",          "CALIBRATED",         "FILMMAKER_GRAPHICS", "FILMMAKER_PHOTO", "FILMMAKER_CINEMA",
    "FILMMAKER_GAME", "FILMMAKER_RESERVEDA"};
inline const Names USER_RANGES{
    "SDR_FHD",         "SDR_UHD",        "HDR_OTHER_FHD", "HDR_OTHER_UHD", "HDR_DolbyVision_FHD", "HDR_DolbyVision_UHD",
    "HDR_10_PLUS_FHD", "HDR_10_PLUS_UHD"};
inline const Names FACTORY_RANGES{"SDR_FHD",        "SDR_UHD",       "HDR_10_FHD",          "HDR_10_UHD",
                                  "HDR_HLG_FHD",    "HDR_HLG_UHD",   "HDR_DolbyVision_FHD", "HDR_DolbyVision_UHD",
                                  "HDR_10PLUS_FHD", "HDR_10PLUS_UHD"};
inline const Names PLAIN_RANGES{"SDR", "HDR_OTHER", "Dolby Vision", "HDR_10PLUS"};
inline const Names COLOURS{"MAGENTA", "RED", "YELLOW", "GREEN", "CYAN", "BLUE", "FLESH TON"};
inline const Names LEVELS_10{"LEVEL0", "LEVEL1", "LEVEL2", "LEVEL3", "LEVEL4",
                             "LEVEL5", "LEVEL6", "LEVEL7", "LEVEL8", "LEVEL9"};
inline const Names LEVELS_11{"LEVEL0", "LEVEL1", "LEVEL2", "LEVEL3", "LEVEL4", "LEVEL5",
                             "LEVEL6", "LEVEL7", "LEVEL8", "LEVEL9", "LEVEL10"};
inline const Names LEVELS_20{"LEVEL0",  "LEVEL1",  "LEVEL2",  "LEVEL3",  "LEVEL4",  "LEVEL5",  "LEVEL6",
                             "LEVEL7",  "LEVEL8",  "LEVEL9",  "LEVEL10", "LEVEL11", "LEVEL12", "LEVEL13",
                             "LEVEL14", "LEVEL15", "LEVEL16", "LEVEL17", "LEVEL18", "LEVEL19"};
inline const Names BINS{"BIN1", "BIN2", "BIN3", "BIN4", "BIN5", "BIN6"};
inline const Names SIGNALS{"2D", "3D"};
inline const Names TEMPERATURES{"COOL", "NORMAL", "WARM1", "WARM2", "STANDARD_709", "WARM1_P3"};
inline const Names LIGHT_LEVELS{"LS_lEVEL1", "LS_lEVEL2", "LS_lEVEL3", "LS_lEVEL4",
                                "LS_lEVEL5", "LS_lEVEL6", "LS_lEVEL7", "LS_lEVEL8"};
inline const Names SOUND_MODES{"STANDARD", "SPEECH", "LATE NIGHT",   "MUSIC",
                               "THREATER", "SPORTS", "CONCERT HALL", "USER"};
inline const Names ANY_16(16, "");

inline const Names RGB{"Red", "Green", "Blue"};
inline const Names GAINS_AND_OFFSETS{"RGain", "GGain", "BGain", "ROffset", "GOffset", "BOffset"};
inline const Names WINDOWS{"InputHStart",  "InputVStart",  "InputHActive",  "InputVActive",
                           "OutputHStart", "OutputVStart", "OutputHActive", "OutputVActive"};
inline const Names EQ_BANDS{"100HZ", "250HZ", "600HZ", "1KHZ", "2500HZ", "6KHZ", "10KHZ"};

inline Names operator+(Names first, const Names& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline OracleDimension source(const char* heading = "source") {
    return {16, 'x', heading, SOURCES};
}

inline OracleDimension pictureMode() {
    return {12, 'x', "picturemode", PICTURE_MODES};
}

inline OracleDimension userRange() {
    return {8, 'x', "usr_dr", USER_RANGES};
}

inline OracleDimension level20(const char* heading = "") {
    return {20, 'c', heading, LEVELS_20};
}

inline OracleDimension soundMode() {
    return {8, 'x', "", SOUND_MODES};
}

constexpr const char* SOURCE_0_TO_16 = "source       scope:0~16";
constexpr const char* FACTORY_RANGE = "dr           scope:0~7";

// clang-format off
inline std::vector<OracleRow> makeOracle() {
    return {
        {0, "PICTURE_GLOBAL", "FileUserPictureGlobal", "pic_global_usr.ini", "v0.4", {},
         {"RGBOnly", "HDMI1_DR", "HDMI2_DR", "HDMI3_DR", "HDMI4_DR", "HDMI1_SIG_FMT", "HDMI2_SIG_FMT", "HDMI3_SIG_FMT",
          "HDMI4_SIG_FMT", "ApplyModeToSource", "ApplyColorTuner", "ApplyWB2Point", "ApplyWB10Point", "WB10PointFlag",
          "ApplyWB20Point", "ApplyWB20Gain", "ApplyModeExToSource", "Lowbluelightlevel", "TpcSwitch", "PixelShiftType",
          "PixelShiftShape", "PixelShiftTimer", "MotionClearness", "AIPQUserSwitch", "ALLMUserSwitch",
          "EndUserCalbration", "LaserScreenSize", "FpsSwitch"},
         32, 6, 1, 905, 1489, 112, "", "[Global]: No dimension"},
        {1, "PICTURE_SOURCE_ONLY", "FileUserPictureSourceOnly", "pic_sourceonly_usr.ini", "v0.1",
         {source("scope:0~16"), {2, 'x', "", {"SD", "NON_SD"}}},
         {"Aspect_Ratio", "OverScanEnable"},
         32, 26, 32, 69, 4312, 256},
        {2, "PICTURE_MODE", "FileUserPictureMode", "pic_mode_usr.ini", "v0.4",
         {source(SOURCE_0_TO_16), pictureMode(), userRange()},
         {"Contrast", "Brightness", "Color", "Hue", "Sharpness", "AutoBacklight", "BacklightLevel", "DynamicContrast",
          "ColorTemp", "MEMC", "Judder", "Blur", "NoiseReduction", "MPEG_NR", "ColorSpace", "ColorTuner",
          "SensorEnable", "MinBacklight", "Gamma", "SensorCCTEnable", "HDRDTM", "DOLBYDD", "DOLBYPD", "Gradient"},
         32, 45, 1536, 774, 1192412, 147456,
         "The file is used to define the picture mode data for user picture", "[(source)(picturemode)(dr)]: 3 dimension"},
        {3, "PICTURE_MODE_SELF", "FileUserPictureModeSelf", "pic_modeself_usr.ini", "v0.3",
         {source("scope:0~16"), {4, 'x', "dr", PLAIN_RANGES}},
         {"PictureMode"},
         32, 28, 64, 37, 4624, 256},
        {4, "PICTURE_COLOR_TUNER", "FileUserPictureColorTuner", "pic_color_tuner_usr.ini", "v0.2",
         {source(), pictureMode(), userRange(), {7, 'x', "", COLOURS}},
         {"Brightness", "Hue", "Saturation"},
         32, 53, 10752, 103, 1111612, 129024, "", ": 3 dimension"},
        {5, "PICTURE_WB_2_POINT", "FileUserPictureWB2Point", "pic_wb_2p_usr.ini", "v0.2",
         {source(), pictureMode()},
         {"Enable", "RGain", "GGain", "BGain", "ROffset", "GOffset", "BOffset"},
         32, 36, 192, 229, 46832, 5376},
        {6, "PICTURE_WB_10_POINT_IDX", "FileUserPictureWB10PointIndex", "pic_wb_10p_idx_usr.ini",
         "v0.2",
         {source(), pictureMode()},
         {"Enable", "Level"},
         32, 36, 192, 69, 16112, 1536},
        {7, "PICTURE_WB_10_POINT", "FileUserPictureWB10Point", "pic_wb_10p_usr.ini", "v0.2",
         {source(), pictureMode(), {10, 'x', "", LEVELS_10}},
         RGB,
         32, 47, 1920, 102, 199540, 23040},
        {8, "PICTURE_FACTORY_WB", "FileFactoryPictureWB", "pic_wb_factory.ini", "v0.3",
         {{6, 'x', "bin", BINS}, source("source       scope:0~15"), {10, 'x', FACTORY_RANGE, FACTORY_RANGES},
          {2, 'x', "2D/3D", SIGNALS}, {6, 'x', "ColorTemperature_t", TEMPERATURES}},
         GAINS_AND_OFFSETS,
         32, 51, 11520, 200, 2308004, 276480},
        {9, "PICTURE_FACTORY_CURVE", "FileFactoryPictureCurve", "pic_curve_factory.ini", "v0.3",
         {source(), {10, 'x', FACTORY_RANGE, FACTORY_RANGES}, {2, 'x', "", SIGNALS},
          {6, 'x', "curve_mode", {"BRIGHTNESS", "CONTRAST", "COLOR", "SHARPNESS", "TINT", "BACKLIGHT"}}},
         {"Curv0", "Curv1", "Curv2", "Curv3", "Curv4"},
         32, 44, 1920, 167, 324112, 38400},
        {10, "PICTURE_YRANGE", "FileUserPictureYRange", "pic_yrange_usr.ini", "v0.2",
         {source(), pictureMode(),
          {6, 'x', "scope:0~4", {"SDR", "HDR_10", "HDR_HLG", "HDR_DObyVison", "HDR_10Plus", "HDR_ToSDR"}}},
         {"BlackLevel", "WhiteLevel", "BlackStretch"},
         32, 43, 1152, 102, 120900, 13824},
        {11, "PICTURE_FACTORY_OVERSCAN", "FileFactoryPictureOverScan", "pic_overscan_factory.ini",
         "v0.1",
         {{28, 'c', "overscan conversion index      scope:0~26",
           {"NO_OVERSCAN", "SD_OVERSCAN", "HD_OVERSCAN", "TTX_SPLIT_4x3_OVERSCAN", "TTX_SPLIT_16x9_OVERSCAN",
            "HDMI_480I_OVERSCAN", "HDMI_576I_OVERSCAN", "HDMI_480P_OVERSCAN", "HDMI_576P_OVERSCAN",
            "HDMI_720P_OVERSCAN", "HDMI_1080I_OVERSCAN", "HDMI_1080P_OVERSCAN", "YPBPR_480I_OVERSCAN",
            "YPBPR_576I_OVERSCAN", "YPBPR_480P_OVERSCAN", "YPBPR_576P_OVERSCAN", "YPBPR_720P_OVERSCAN",
            "YPBPR_1080I_OVERSCAN", "YPBPR_1080P_OVERSCAN", "AV_PAL_OVERSCAN", "AV_NTSC_OVERSCAN",
            "AV_SECAM_OVERSCAN", "AV_PAL60_OVERSCAN", "ATV_PAL_OVERSCAN", "ATV_NTSC_OVERSCAN", "SCART_RGB_OVERSCAN",
            "SCART_CVBS_OVERSCAN"}}},
         WINDOWS,
         32, 34, 28, 260, 9992, 896},
        {12, "PICTURE_FACTORY_ASPECT", "FileFactoryPictureAspect", "pic_aspect_factory.ini",
         "v0.1",
         {{15, 'x', "scope:0~15",
           {"AR_4x3_4x3 = 0", "AR_16x9_4x3", "AR_14x9_4x3", "AR_4x3_SP14x9_4x3", "AR_16x9_SP14x9_4x3",
            "AR_16x9_SP4x3_4x3", "AR_16x9_16x9", "AR_4x3_16x9", "AR_14x9_16x9", "AR_4x3_SP14x9_16x9",
            "AR_16x9_SP14x9_16x9", "AR_16x9_SP4x3_16x9", "AR_CCO_16x9", "AR_LB_16x9", "AR_16x9_235x100"}}},
         WINDOWS + Names{"SDScaling", "HDScalingTv", "HDScalingPc"},
         32, 22, 15, 356, 7140, 660},
        {13, "PICTURE_FACTORY_SCALING", "FileFactoryPictureScaling", "pic_scaling_factory.ini",
         "v0.1",
         {{16, 'x', "scope:0~16",
           {"GEO_16x9", "GEO_4x3", "GEO_PANO1", "GEO_PANO2", "GEO_ZOOM", "GEO_PALPLUS", "GEO_16x9_PC", "GEO_16x9_TV",
            "GEO_16x9_ZOOM", "GEO_4x3_PC", "GEO_4x3_TV", "GEO_4x3_ZOOM", "GEO_ZOOM_2", "GEO_AUTO", "GEO_SMART",
            "GEO_21x9"}}},
         WINDOWS + Names{"OverScan"},
         32, 23, 16, 292, 6548, 576},
        {14, "PICTURE_FACTORY_SCALING_PIP", "FileFactoryPictureScalingPIP",          "pic_scaling_pip_factory.ini", "v0.1",
         {{3, 'x', "overscan conversion index      scope:0~3",
           {"SCALING_PIP_SIZE_SMALL", "SCALING_PIP_SIZE_LARGE", "SCALING_PIP_SIZE_SPLIT_SCREEN"}}},
         {"OutputHMultiplier", "OutputVMultiplier"},
         32, 10, 3, 68, 1092, 24},
        {15, "PICTURE_FACTORY_SCALING_PIP_POS", "FileFactoryPictureScalingPIPPos",          "pic_scaling_pip_pos_factory.ini", "v0.1",
         {{5, 'x', "overscan conversion index      scope:0~5",
           {"NO_OVERSCAN", "SCALING_PIP_POSITION_UPPER_LEFT", "SCALING_PIP_POSITION_UPPER_RIGHT",
            "SCALING_PIP_POSITION_BOTTOM_LEFT", "SCALING_PIP_POSITION_BOTTOM_RIGHT",
            "SCALING_PIP_POSITION_SPLIT_SCREEN"},
           "001234"}},
         {"OutputHMultiplier", "OutputVMultiplier"},
         32, 13, 5, 68, 1456, 40},
        {16, "SOUND_GLOBAL", "FileUserSoundGlobal", "sound_global_usr.ini", "v0.2", {},
         {"Volume", "Balance", "Spdif", "Speaker", "HeadPhoneVolume", "AudioOut", "AudioDescriptionEnable",
          "AudioDescriptionOutDev", "AudioDescriptionVolume", "HeadPhoneMode", "WallMount", "BT_Volume",
          "ApplyModeToSource", "DolbyAtmosEnable", "BT_HeadphoneVolume", "EArcSwitchValue", "SelectSoundEffect",
          "BassVolume", "BTWithSpeaker", "WavesSwitch", "SoundDevice", "TopVolume", "CenterVolume"},
         32, 6, 1, 745, 1329, 92, "", "[Global]: No dimension"},
        {17, "SOUND_MODE", "FileUserSoundMode", "sound_mode_usr.ini", "v0.1",
         {source("scope:0~16")},
         {"SoundMode"},
         32, 23, 16, 36, 2452, 64},
        {18, "SOUND_EQ", "FileUserSoundEQ", "sound_eq_usr.ini", "v0.3",
         {source("scope:0~16"), soundMode()},
         EQ_BANDS,
         32, 32, 128, 229, 31872, 3584},
        {19, "SOUND_DELAY", "FileUserSoundDelay", "sound_delay_usr.ini", "v0.1",
         {source("scope:0~16"),
          {9, 'c', "",
           {"TIMING_480P", "TIMING_480I", "TIMING_576P", "TIMING_576I", "TIMING_720P", "TIMING_720I", "TIMING_1080P",
            "TIMING_1080I", "TIMING_4K2K"}}},
         {"LipSync", "SpdifDelay", "LipSyncOffset", "SpdifDelayOffset"},
         32, 33, 144, 133, 21788, 2304},
        {20, "SOUND_DBX", "FileUserSoundDbx", "sound_dbx_usr.ini", "v0.2",
         {source("scope:0~16"), soundMode()},
         {"Sonic", "Surroud", "Volume"},
         32, 32, 128, 101, 15488, 1536},
        {21, "SOUND_DTS", "FileUserSoundDTS", "sound_dts_usr.ini", "v0.2",
         {source("scope:0~16"), soundMode()},
         {"BassBoost", "SurroundSound", "DialogClarity", "TruVolume"},
         32, 32, 128, 133, 19584, 2048},
        {22, "SOUND_AVC", "FileFactorySoundAVC", "sound_avc_factory.ini", "v0.2",
         {source(), soundMode()},
         {"AvcEnable", "AvcMode", "AvcLevel", "AttackTime", "ReleaseTime"},
         32, 32, 128, 165, 23680, 2560, "The file is used to define the sound AVC data for user sound"},
        {23, "SOUND_AMP", "FileFactorySoundAMP", "sound_amp_factory.ini", "v0.3",
         {{5, 'x', "double amp scope:0~1", {"MAIN AMP", "SUB1 AMP", "SUB2 AMP", "SUB3 AMP", "SUB4 AMP"}},
          {6, 'x', "amp  scope:0~5",
           {"AMP-DRC L", "AMP-DRC H", "AMP-DRC S", "AMP-DRC P", "AMP-Master Gain", "AMP-PA Gain"}}},
         {"Data1", "Data2", "Data3", "Data4", "DataLength", "Enable"},
         32, 19, 30, 197, 7482, 720},
        {24, "SOUND_PEQ", "FileFactorySoundPEQ", "sound_peq_factory.ini", "v0.1",
         {{16, 'x', "band",
           {"BAND0", "BAND1", "BAND2", "BAND3", "BAND4", "BAND5", "BAND6", "BAND7", "BAND8", "BAND9", "BAND10",
            "BAND11", "BAND12", "BAND13", "BAND14", "BAND15"}}},
         {"BandQ", "BandGain", "BandFreq"},
         32, 24, 16, 100, 3552, 192, "", "",
         "close sound effect using BAND0~BAND7,others using BAND8~BAND15."},
        {25, "SOUND_EQ_WALLMOUNT", "FileFactorySoundEQ", "sound_eq_wallmount.ini", "v0.3",
         {source(), soundMode()},
         EQ_BANDS,
         32, 32, 128, 229, 31872, 3584},
        {26, "SOUND_CURVE", "FileFactorySoundCurve", "sound_curve_factory.ini", "v0.2",
         {source()},
         {"Curv0", "Curv1", "Curv2", "Curv3", "Curv4", "SpeakerPrescale", "HpPrescale"},
         32, 23, 16, 228, 5524, 448},
        {27, "PICTURE_WB_20_POINT", "FileUserPictureWB20Point", "pic_wb_20p_usr.ini", "v0.1",
         {source(), pictureMode(), level20()},
         RGB,
         32, 57, 3840, 102, 396140, 46080},
        {28, "PICTURE_WB_20_POINT_IDX", "FileUserPictureWB20PointIndex",          "pic_wb_20p_idx_usr.ini", "v0.2",
         {source(), pictureMode()},
         {"Enable", "Level"},
         32, 36, 192, 69, 16112, 1536},
        {29, "PICTURE_WB_20_GAIN", "FileUserPictureWB20Gain", "pic_wb_20p_gain_usr.ini", "v0.2",
         {source(), pictureMode(), level20()},
         {"GainValue"},
         32, 57, 3840, 38, 150380, 15360},
        {30, "PICTURE_WB_20_GAIN_IDX", "FileUserPictureWB20GainIndex",          "pic_wb_20p_gain_idx_usr.ini", "v0.2",
         {source(), pictureMode()},
         {"GainLevel"},
         32, 36, 192, 37, 9968, 768},
        {31, "PICTURE_MODE_EX", "FileUserPictureModeEx", "pic_mode_ex_usr.ini", "v0.4",
         {source("scope:0~16"), pictureMode(), userRange()},
         {"Gamemodeswitch", "Allmmodeswitch", "Reserve2", "Reserve3", "Reserve4", "Reserve5", "Reserve6", "Reserve7",
          "Reserve8", "Reserve9", "Reserve10"},
         32, 45, 1536, 358, 553436, 67584},
        {32, "PICTURE_LOW_BLUE_LIGHT", "FileUserPictureLowBlueLight",          "pic_low_blue_light_usr.ini", "v0.1",
         {{4, 'x', "", {"COOL", "NORMAL", "WARM1", "WARM2"}},
          {5, 'x', "", {"OFF", "LOW", "NORMAL", "STRONG", "VERY STRONG"}}},
         {"RGain", "GGain", "BGain"},
         32, 17, 20, 101, 3440, 240},
        {33, "PICTURE_FACTORY_BACKLIGHT_CURVE", "FileFactoryPictureBacklightCurve",          "pic_backlight_curve_factory.ini", "v0.3",
         {source(), {10, 'x', FACTORY_RANGE, FACTORY_RANGES}, {2, 'x', "", SIGNALS},
          {1, 'x', "curve_mode   scope:0 ", {"BACKLIGHT"}}},
         {"Curv0", "Curv1", "Curv2", "Curv3", "Curv4"},
         32, 39, 320, 167, 56532, 6400},
        {34, "SOUND_GLOBAL_FACTORY", "FileFactorySoundGlobal", "sound_global_factory.ini", "v0.1",
         {},
         {"Hpf_Enable", "Hpf_Value", "Lpf_Enable", "Lpf_Value", "Soc_Drc_Enable", "Soc_Drc_Value", "Hp_Drc_Enable",
          "Hp_Drc_Value"},
         32, 6, 1, 265, 849, 32, "", "[Global]: No dimension"},
        {35, "PICTURE_CONTENT_DETECT", "FileUserPictureContentDetect",          "pic_content_detect_usr.ini", "v0.1",
         {source()},
         {"Filmmaker_Switch", "ALLM", "Freesync_enable", "windowshift"},
         32, 23, 16, 132, 3988, 256},
        {36, "PICTURE_ENHANCED_VIEWING_ANGLE", "FileUserPictureEnhancedViewingAngle",          "pic_enhanced_viewing_angle_usr.ini", "v0.1",
         {pictureMode(), {4, 'x', "dr", PLAIN_RANGES}},
         {"EvaSwitch", "Judfreeswitch", "EvaReserved1"},
         32, 24, 48, 101, 6800, 576},
        {37, "PICTURE_FACTORY_COLOR_TUNER", "FileFactoryPictureColorTuner",          "pic_color_tuner_factory.ini", "v0.1",
         {source(), pictureMode(), userRange(), {7, 'x', "colortune_mode", COLOURS}},
         {"Brightness", "Hue", "Saturation"},
         32, 53, 10752, 103, 1111612, 129024, "", "[(source)(picturemode)(colortune_mode)]: 3 dimension"},
        {38, "PICTURE_FACTORY_WB_SHIFT", "FileFactoryPictureWBShift", "pic_wb_shift_factory.ini",
         "v0.1",
         {{6, 'x', "bin", BINS}, source("source       scope:0~15"), {10, 'x', FACTORY_RANGE, FACTORY_RANGES},
          {2, 'x', "2D/3D", SIGNALS}, {6, 'x', "ColorTemperature_t", TEMPERATURES}},
         {"RGainShift", "GGainShift", "BGainShift", "ROffsetShift", "GOffsetShift", "BOffsetShift"},
         32, 51, 11520, 200, 2308004, 276480},
        {39, "PICTURE_FACTORY_WB_20_GAIN", "FileFactoryPictureWB20Gain",          "pic_wb_20p_gain_factory.ini", "v0.1",
         {source(SOURCE_0_TO_16), pictureMode(), level20()},
         {"GainValue"},
         32, 57, 3840, 38, 150380, 15360},
        {40, "PICTURE_FACTORY_WB_20_GAIN_IDX", "FileFactoryPictureWB20GainIndex",          "pic_wb_20p_gain_idx_factory.ini", "v0.1",
         {source(SOURCE_0_TO_16), pictureMode()},
         {"GainLevel"},
         32, 36, 192, 37, 9968, 768},
        {41, "PICTURE_FACTORY_WB_20_POINT", "FileFactoryPictureWB20Point",          "pic_wb_20p_factory.ini", "v0.1",
         {source(SOURCE_0_TO_16), pictureMode(), level20()},
         RGB,
         32, 57, 3840, 102, 396140, 46080},
        {42, "PICTURE_FACTORY_WB_20_POINT_IDX", "FileFactoryPictureWB20PointIndex",          "pic_wb_20p_idx_factory.ini", "v0.1",
         {source(SOURCE_0_TO_16), pictureMode()},
         {"Enable", "Level"},
         32, 36, 192, 69, 16112, 1536},
        {43, "PICTURE_USER_DOLBY_IQ_MODE", "FileUserPictureDolbyIQMode",          "pic_dolbyiq_mode_usr.ini", "v0.1",
         {{16, 'c', "",
           {"CONTENT_TYPE_DEFAULT", "CONTENT_TYPE_MOVIE", "CONTENT_TYPE_GAME", "CONTENT_TYPE_SPORT", "CONTENT_TYPE_UGC",
            "CONTENT_TYPE_EPISODIC", "CONTENT_TYPE_GRAPHICS", "CONTENT_TYPE1", "CONTENT_TYPE2", "CONTENT_TYPE3",
            "CONTENT_TYPE4", "CONTENT_TYPE5", "CONTENT_TYPE6", "CONTENT_TYPE7", "CONTENT_TYPE8", "CONTENT_TYPE9"}}},
         {"DolbyIQ_memc", "DolbyIQ_nr", "DolbyIQ_sharpness", "DolbyIQ_mpegnc"},
         32, 23, 16, 132, 3988, 256},
        {44, "PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT", "FileUserPictureDolbyIQIntentedWhitePoint", "pic_dolbyiq_intented_wp_usr.ini", "v0.1",
         {{16, 'c', "", ANY_16}},
         {"DolbyIQ_rgain", "DolbyIQ_ggain", "DolbyIQ_bgain", "DolbyIQ_roffset", "DolbyIQ_goffset", "DolbyIQ_boffset"},
         32, 23, 16, 196, 5012, 384},
        {45, "PICTURE_USER_LIGHT_SENSOR_LEVEL", "FileUserPictureLightSensorShift",          "pic_light_sensor_level_usr.ini", "v0.1",
         {{8, 'x', "", LIGHT_LEVELS}},
         {"LS_GammaCalbrationLevel", "LS_Pwm", "LS_Brightness", "LS_Contrast", "LS_Saturation", "LS_WBGainValue0",
          "LS_WBGainValue1", "LS_WBGainValue2", "LS_WBGainValue3", "LS_WBGainValue4", "LS_WBGainValue5",
          "LS_WBGainValue6", "LS_WBGainValue7", "LS_WBGainValue8", "LS_WBGainValue9", "LS_WBGainValue10",
          "LS_WBGainValue11", "LS_WBGainValue12", "LS_WBGainValue13", "LS_WBGainValue14", "LS_WBGainValue15",
          "LS_WBGainValue16", "LS_WBGainValue17", "LS_WBGainValue18", "LS_WBGainValue19"},
         32, 15, 8, 804, 7700, 800},
        {46, "PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN", "FileUserPictureLightSensorWB20Gain",          "pic_light_sensor_WB_20_gain_usr.ini", "v0.1",
         {{8, 'x', "", LIGHT_LEVELS}, {20, 'c', "scope:0~11", LEVELS_20, "1123456789abcdefghij"}},
         {"WBGainValue"},
         32, 36, 160, 37, 8784, 640},
        {47, "PICTURE_USER_LIGHT_SENSOR_PLC_POINT", "FileUserPictureLightSensorPLC",          "pic_light_sensor_plc_usr.ini", "v0.1",
         {{8, 'x', "", LIGHT_LEVELS}},
         {"LS_plc0", "LS_plc1", "LS_plc2", "LS_plc3", "LS_plc4", "LS_plc5", "LS_plc6", "LS_plc7"},
         32, 15, 8, 260, 3348, 256},
        {48, "PICTURE_XVYCC", "FileUserPictureXVYCC", "pic_xvycc_factory.ini", "v0.1",
         {{6, 'x', "", {"Native_BT709_P3", "Auto_P3_P3/BT2020_Native", "Auto_BT709_BT709", "", "", ""}}},
         {"XVYCC_0", "XVYCC_1", "XVYCC_2", "XVYCC_3", "XVYCC_4", "XVYCC_5", "XVYCC_6", "XVYCC_7", "XVYCC_8"},
         35, 13, 6, 319, 3030, 216},
        {49, "PICTURE_USER_BACKLIGHT_WB", "FileUserPictureBacklightWB",          "velmora_color_temperature_compensation.ini", "v0.1",
         {{11, 'x', "", LEVELS_11}},
         {"BL_WBRedGain", "BL_WBGreenGain", "BL_WBBlueGain", "BL_WBRedOffset", "BL_WBGreenOffset", "BL_WBBlueOffset"},
         32, 18, 11, 196, 3652, 264},
        {50, "PICTURE_USER_CCT_WB", "FileUserPictureCCTWB", "pic_cct_wb_usr.ini", "v0.1",
         {{5, 'x', "", LEVELS_11}},
         {"CCT_WBRedGain", "CCT_WBGreenGain", "CCT_WBBlueGain", "CCT_WBRedOffset", "CCT_WBGreenOffset",
          "CCT_WBBlueOffset"},
         32, 18, 5, 196, 2476, 120},
        {51, "PICTURE_GAMMA_CALIBRATION_DARK_DETAIL", "FileUserPictureGammaCalibrationDarkDetail",          "pic_gamma_calibration_dark_detail.ini", "v0.1",
         {{5, 'x', "", {"SDR", "HDR10", "HLG", "DolbyVision", "HDR10+"}}, level20()},
         {"DDgain"},
         32, 33, 100, 37, 6336, 400},
    };
}
// clang-format on

enum class Form { Decimal4, Decimal5, Hexadecimal };

inline Form formOf(const OracleRow& row) {
    if (std::strcmp(row.name, "PICTURE_XVYCC") == 0)
        return Form::Hexadecimal;
    // The two files whose values have five digits.
    if (std::strcmp(row.name, "SOUND_GLOBAL_FACTORY") == 0 || std::strcmp(row.name, "SOUND_PEQ") == 0)
        return Form::Decimal5;
    return Form::Decimal4;
}

} // namespace oracle

/// What an operation on many records does in a category.
struct OracleBulk {
    enum class Kind {
        NotOffered,     ///< only logs that it is not completed
        Nothing,        ///< succeeds without a word
        CopyPosting,    ///< copies the record over those that differ, an event for each
        CopyAtOnce,     ///< the same, writing the file itself
        RestoreChanged, ///< takes the records back, an event for those that differ from the given one
        RestorePosting, ///< takes the records back, an event for each
    };
    Kind kind = Kind::NotOffered;
    std::vector<int> axes = {}; ///< dimensions that are swept
};

/// All categories in ascending value.
inline const std::vector<OracleRow>& categoryOracle() {
    static const std::vector<OracleRow> rows = oracle::makeOracle();
    return rows;
}

inline const OracleRow& oracleOf(int category) {
    return categoryOracle().at(static_cast<std::size_t>(category));
}

/// Names in requests, in the order of a whole-record answer; null where an answer has a nameless entry. Fields that a
/// whole record leaves out are not in it.
inline std::vector<const char*> wholeRecordNames(const OracleRow& row) {
    const std::string name = row.name;
    std::vector<const char*> names = row.keys;
    if (name == "PICTURE_GLOBAL") {
        names.resize(26);
        names[12] = nullptr;
    } else if (name == "SOUND_GLOBAL") {
        // The record has it before the headphone volume, the file after the audio description.
        names.erase(names.begin() + 9);
        names.insert(names.begin() + 4, "HeadPhoneMode");
    } else if (name == "PICTURE_LOW_BLUE_LIGHT") {
        names = {"Lowbluelightrgain", "Lowbluelightggain", "Lowbluelightbgain"};
    }
    return names;
}

/// The name of a field in requests; `key` names its line.
inline std::string argumentName(const OracleRow& row, const std::string& key) {
    if (std::strcmp(row.name, "PICTURE_LOW_BLUE_LIGHT") != 0)
        return key;
    if (key == "RGain")
        return "Lowbluelightrgain";
    return key == "GGain" ? "Lowbluelightggain" : "Lowbluelightbgain";
}

/// The key lines' largest and smallest value.
inline int widest(const OracleRow& row) {
    switch (oracle::formOf(row)) {
    case oracle::Form::Hexadecimal:
        return 0xFFFFF;
    case oracle::Form::Decimal5:
        return 99999;
    case oracle::Form::Decimal4:
        break;
    }
    return 9999;
}

inline int narrowest(const OracleRow& row) {
    switch (oracle::formOf(row)) {
    case oracle::Form::Hexadecimal:
        return 0;
    case oracle::Form::Decimal5:
        return -9999;
    case oracle::Form::Decimal4:
        break;
    }
    return -999;
}

/// The indices of record number `record`, in the order in which the file lists the sections.
inline std::vector<int> oracleIndices(const OracleRow& row, int record) {
    std::vector<int> indices(row.dimensions.size());
    for (std::size_t d = row.dimensions.size(); d-- > 0;) {
        indices[d] = record % row.dimensions[d].count;
        record /= row.dimensions[d].count;
    }
    return indices;
}

/// "[3a7]\n".
inline std::string oracleHeader(const OracleRow& row, const std::vector<int>& indices) {
    if (row.dimensions.empty())
        return "[Global]\n";
    std::string header = "[";
    for (const int index : indices)
        header += "0123456789abcdefghijklmnopqr"[index];
    return header + "]\n";
}

/// One key line.
inline std::string oracleLine(const OracleRow& row, const std::string& key, int value) {
    char line[64];
    switch (oracle::formOf(row)) {
    case oracle::Form::Decimal4:
        std::snprintf(line, sizeof line, "%-24s = %04d\n", key.c_str(), value);
        break;
    case oracle::Form::Decimal5:
        std::snprintf(line, sizeof line, "%-23s = %05d\n", key.c_str(), value);
        break;
    case oracle::Form::Hexadecimal:
        std::snprintf(line, sizeof line, "%-24s = 0x%5x\n", key.c_str(), static_cast<unsigned int>(value));
        break;
    }
    return line;
}

/// The value of a field of a record; fields count in file order.
using OracleValues = std::function<int(int record, int field)>;

/// The key lines of one section.
inline std::string oracleKeyLines(const OracleRow& row, int record, const OracleValues& values) {
    std::string lines;
    for (std::size_t field = 0; field < row.keys.size(); ++field)
        lines += oracleLine(row, row.keys[field], values(record, static_cast<int>(field)));
    return lines;
}

/// All sections.
inline std::string oracleContent(const OracleRow& row, const OracleValues& values) {
    std::string content;
    for (int record = 0; record < row.records; ++record)
        content += oracleHeader(row, oracleIndices(row, record)) + oracleKeyLines(row, record, values);
    return content;
}

/// A whole file with a right checksum, under a comment block of one line if none is given.
inline std::string oracleFile(const std::string& version, const std::string& content,
                              const std::string& comment = "# of no interest\n") {
    char summary[160];
    std::snprintf(summary, sizeof summary,
                  "[Summary]\nSN                       = %-16s\nVersion                  = %-8s\n"
                  "CRC                      = 0x%08x\n",
                  "TVTYPE01", version.c_str(), checksum(content));
    return comment + summary + content;
}

/// A comment line: text with the given start, blanks up to the closing '#', newline.
inline std::string commentLine(const std::string& text) {
    std::string line = text;
    line.resize(74, ' ');
    return line + "#\n";
}

inline OracleBulk applyToAllSources(int category) {
    switch (category) {
    case 2:
        return {OracleBulk::Kind::CopyAtOnce, {0}};
    case 4:
    case 5:
    case 6:
    case 7:
    case 18:
    case 20:
    case 21:
    case 22:
    case 25:
    case 27:
    case 28:
    case 29:
    case 31:
    case 36: // its first dimension is the picture mode
    case 37:
    case 39:
    case 41:
    case 42:
        return {OracleBulk::Kind::CopyPosting, {0}};
    default:
        return {};
    }
}

inline OracleBulk applyToAllModes(int category) {
    switch (category) {
    case 4:
    case 5:
    case 7:
    case 27:
    case 29:
    case 37:
    case 39:
    case 41:
        return {OracleBulk::Kind::CopyPosting, {0, 1}};
    case 6:
    case 28:
    case 30:
    case 40:
    case 42:
    case 46: // its second dimension is the point
        return {OracleBulk::Kind::CopyPosting, {1}};
    default:
        return {};
    }
}

inline OracleBulk restoreForAllSources(int category) {
    switch (category) {
    case 2:
        return {OracleBulk::Kind::Nothing, {}};
    case 4:
    case 5:
    case 6:
    case 7:
    case 27:
    case 28:
    case 29:
    case 30:
    case 46: // its first dimension is the light-sensor level
        return {OracleBulk::Kind::RestoreChanged, {0}};
    case 9:
    case 17:
    case 18:
    case 19:
    case 20:
    case 21:
    case 22:
    case 25:
    case 26:
    case 33:
    case 37:
    case 39:
    case 40:
    case 41:
    case 42:
        return {OracleBulk::Kind::RestorePosting, {0}};
    case 11:
    case 12:
    case 13:
    case 14:
    case 15:
    case 23:
    case 24:
        return {OracleBulk::Kind::RestorePosting, {}};
    default:
        return {};
    }
}

inline bool restoresFromCurrent(int category) {
    switch (category) {
    case 8:
    case 9:
    case 10:
    case 11:
    case 12:
    case 13:
    case 14:
    case 15:
    case 22:
    case 23:
    case 24:
    case 25:
    case 26:
    case 32:
    case 33:
    case 38:
    case 43:
    case 44:
    case 45:
    case 47:
    case 49:
    case 50:
    case 51:
        return false;
    default:
        return true;
    }
}

} // namespace td::test
