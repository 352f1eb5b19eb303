/// The shared vocabulary: categories, data types, scopes, arguments and group arrays.
/// Plain values without ownership; safe to use from any thread.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

namespace td {

/// The one list of categories: X(value, name, operator class). A category is one settings file served by one operator.
/// The values are shared with every client process: never renumber, only append.
#define DATAMODULE_CATEGORY_LIST(X)                                                             \
    X(0, PICTURE_GLOBAL, FileUserPictureGlobal)                                                 \
    X(1, PICTURE_SOURCE_ONLY, FileUserPictureSourceOnly)                                        \
    X(2, PICTURE_MODE, FileUserPictureMode)                                                     \
    X(3, PICTURE_MODE_SELF, FileUserPictureModeSelf)                                            \
    X(4, PICTURE_COLOR_TUNER, FileUserPictureColorTuner)                                        \
    X(5, PICTURE_WB_2_POINT, FileUserPictureWB2Point)                                           \
    X(6, PICTURE_WB_10_POINT_IDX, FileUserPictureWB10PointIndex)                                \
    X(7, PICTURE_WB_10_POINT, FileUserPictureWB10Point)                                         \
    X(8, PICTURE_FACTORY_WB, FileFactoryPictureWB)                                              \
    X(9, PICTURE_FACTORY_CURVE, FileFactoryPictureCurve)                                        \
    X(10, PICTURE_YRANGE, FileUserPictureYRange)                                                \
    X(11, PICTURE_FACTORY_OVERSCAN, FileFactoryPictureOverScan)                                 \
    X(12, PICTURE_FACTORY_ASPECT, FileFactoryPictureAspect)                                     \
    X(13, PICTURE_FACTORY_SCALING, FileFactoryPictureScaling)                                   \
    X(14, PICTURE_FACTORY_SCALING_PIP, FileFactoryPictureScalingPIP)                            \
    X(15, PICTURE_FACTORY_SCALING_PIP_POS, FileFactoryPictureScalingPIPPos)                     \
    X(16, SOUND_GLOBAL, FileUserSoundGlobal)                                                    \
    X(17, SOUND_MODE, FileUserSoundMode)                                                        \
    X(18, SOUND_EQ, FileUserSoundEQ)                                                            \
    X(19, SOUND_DELAY, FileUserSoundDelay)                                                      \
    X(20, SOUND_DBX, FileUserSoundDbx)                                                          \
    X(21, SOUND_DTS, FileUserSoundDTS)                                                          \
    X(22, SOUND_AVC, FileFactorySoundAVC)                                                       \
    X(23, SOUND_AMP, FileFactorySoundAMP)                                                       \
    X(24, SOUND_PEQ, FileFactorySoundPEQ)                                                       \
    X(25, SOUND_EQ_WALLMOUNT, FileFactorySoundEQ)                                               \
    X(26, SOUND_CURVE, FileFactorySoundCurve)                                                   \
    X(27, PICTURE_WB_20_POINT, FileUserPictureWB20Point)                                        \
    X(28, PICTURE_WB_20_POINT_IDX, FileUserPictureWB20PointIndex)                               \
    X(29, PICTURE_WB_20_GAIN, FileUserPictureWB20Gain)                                          \
    X(30, PICTURE_WB_20_GAIN_IDX, FileUserPictureWB20GainIndex)                                 \
    X(31, PICTURE_MODE_EX, FileUserPictureModeEx)                                               \
    X(32, PICTURE_LOW_BLUE_LIGHT, FileUserPictureLowBlueLight)                                  \
    X(33, PICTURE_FACTORY_BACKLIGHT_CURVE, FileFactoryPictureBacklightCurve)                    \
    X(34, SOUND_GLOBAL_FACTORY, FileFactorySoundGlobal)                                         \
    X(35, PICTURE_CONTENT_DETECT, FileUserPictureContentDetect)                                 \
    X(36, PICTURE_ENHANCED_VIEWING_ANGLE, FileUserPictureEnhancedViewingAngle)                  \
    X(37, PICTURE_FACTORY_COLOR_TUNER, FileFactoryPictureColorTuner)                            \
    X(38, PICTURE_FACTORY_WB_SHIFT, FileFactoryPictureWBShift)                                  \
    X(39, PICTURE_FACTORY_WB_20_GAIN, FileFactoryPictureWB20Gain)                               \
    X(40, PICTURE_FACTORY_WB_20_GAIN_IDX, FileFactoryPictureWB20GainIndex)                      \
    X(41, PICTURE_FACTORY_WB_20_POINT, FileFactoryPictureWB20Point)                             \
    X(42, PICTURE_FACTORY_WB_20_POINT_IDX, FileFactoryPictureWB20PointIndex)                    \
    X(43, PICTURE_USER_DOLBY_IQ_MODE, FileUserPictureDolbyIQMode)                               \
    X(44, PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT, FileUserPictureDolbyIQIntentedWhitePoint) \
    X(45, PICTURE_USER_LIGHT_SENSOR_LEVEL, FileUserPictureLightSensorShift)                     \
    X(46, PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN, FileUserPictureLightSensorWB20Gain)             \
    X(47, PICTURE_USER_LIGHT_SENSOR_PLC_POINT, FileUserPictureLightSensorPLC)                   \
    X(48, PICTURE_XVYCC, FileUserPictureXVYCC)                                                  \
    X(49, PICTURE_USER_BACKLIGHT_WB, FileUserPictureBacklightWB)                                \
    X(50, PICTURE_USER_CCT_WB, FileUserPictureCCTWB)                                            \
    X(51, PICTURE_GAMMA_CALIBRATION_DARK_DETAIL, FileUserPictureGammaCalibrationDarkDetail)

/// A category of settings, 0 to 51.
enum _DataCategory_t : int {
#define DATAMODULE_ENUMERATOR(value, name, operatorClass) name = value,
    DATAMODULE_CATEGORY_LIST(DATAMODULE_ENUMERATOR)
#undef DATAMODULE_ENUMERATOR
};

/// Number of categories.
constexpr int CATEGORY_COUNT = 52;

/// The data type that selects a subset of the categories for typed loads and resets.
/// Categories 48 to 51 belong to neither type.
enum _DS_Type_t : int {
    VIDEO = 1,
    SOUND = 2,
};

/// Which categories a process registers; any other value means all.
enum _DS_Scope_t : int {
    DS_SCOPE_ALL = 0,     ///< all 52 categories
    DS_SCOPE_BIZ = 1,     ///< the 44 of the picture and sound control process
    DS_SCOPE_DVBMAIN = 2, ///< the 5 geometry categories 11 to 15
};

/// One field of a record, by name. The caller owns the text and keeps it alive for the duration of a call;
/// the library never copies, frees or stores the pointer.
struct _Argument_t {
    const char* name;   ///< NUL-terminated field name, compared case-sensitively
    std::int32_t value; ///< filled in by a read, taken from here by a write
};
static_assert(std::is_trivially_copyable<_Argument_t>::value, "arguments move by plain word copies");

/// Group buffer: [source 0-15][position in the caller's list][field].
using GroupArray = int[16][6][6];
/// Self-defined group buffer: [source 0-15][dynamic range 0-9][colour temperature 0-5][field].
using SelfDefinedGroupArray = int[16][10][6][6];

} // namespace td
