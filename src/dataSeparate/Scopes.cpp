#include "dataSeparate/Scopes.h"

#include <iterator>

namespace td {

namespace {

constexpr _DataCategory_t ALL_CATEGORIES[] = {PICTURE_MODE,
                                              PICTURE_MODE_EX,
                                              PICTURE_MODE_SELF,
                                              PICTURE_FACTORY_WB,
                                              PICTURE_GLOBAL,
                                              PICTURE_FACTORY_CURVE,
                                              PICTURE_WB_2_POINT,
                                              PICTURE_COLOR_TUNER,
                                              PICTURE_XVYCC,
                                              PICTURE_SOURCE_ONLY,
                                              PICTURE_WB_10_POINT_IDX,
                                              PICTURE_WB_10_POINT,
                                              PICTURE_YRANGE,
                                              SOUND_CURVE,
                                              SOUND_DELAY,
                                              SOUND_EQ_WALLMOUNT,
                                              SOUND_MODE,
                                              SOUND_AMP,
                                              SOUND_PEQ,
                                              SOUND_EQ,
                                              SOUND_DBX,
                                              SOUND_DTS,
                                              SOUND_AVC,
                                              SOUND_GLOBAL,
                                              PICTURE_FACTORY_OVERSCAN,
                                              PICTURE_FACTORY_ASPECT,
                                              PICTURE_FACTORY_SCALING,
                                              PICTURE_FACTORY_SCALING_PIP,
                                              PICTURE_FACTORY_SCALING_PIP_POS,
                                              PICTURE_WB_20_POINT,
                                              PICTURE_WB_20_POINT_IDX,
                                              PICTURE_WB_20_GAIN,
                                              PICTURE_WB_20_GAIN_IDX,
                                              PICTURE_LOW_BLUE_LIGHT,
                                              PICTURE_FACTORY_BACKLIGHT_CURVE,
                                              SOUND_GLOBAL_FACTORY,
                                              PICTURE_CONTENT_DETECT,
                                              PICTURE_ENHANCED_VIEWING_ANGLE,
                                              PICTURE_FACTORY_COLOR_TUNER,
                                              PICTURE_FACTORY_WB_SHIFT,
                                              PICTURE_FACTORY_WB_20_GAIN,
                                              PICTURE_FACTORY_WB_20_GAIN_IDX,
                                              PICTURE_FACTORY_WB_20_POINT,
                                              PICTURE_FACTORY_WB_20_POINT_IDX,
                                              PICTURE_USER_DOLBY_IQ_MODE,
                                              PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT,
                                              PICTURE_USER_LIGHT_SENSOR_LEVEL,
                                              PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN,
                                              PICTURE_USER_LIGHT_SENSOR_PLC_POINT,
                                              PICTURE_USER_BACKLIGHT_WB,
                                              PICTURE_USER_CCT_WB,
                                              PICTURE_GAMMA_CALIBRATION_DARK_DETAIL};
constexpr _DataCategory_t BIZ_CATEGORIES[] = {PICTURE_MODE,
                                              PICTURE_MODE_EX,
                                              PICTURE_MODE_SELF,
                                              PICTURE_FACTORY_WB,
                                              PICTURE_GLOBAL,
                                              PICTURE_FACTORY_CURVE,
                                              PICTURE_FACTORY_BACKLIGHT_CURVE,
                                              PICTURE_WB_2_POINT,
                                              PICTURE_COLOR_TUNER,
                                              PICTURE_SOURCE_ONLY,
                                              PICTURE_WB_10_POINT_IDX,
                                              PICTURE_WB_10_POINT,
                                              PICTURE_YRANGE,
                                              PICTURE_WB_20_POINT,
                                              PICTURE_WB_20_POINT_IDX,
                                              PICTURE_WB_20_GAIN,
                                              PICTURE_WB_20_GAIN_IDX,
                                              SOUND_CURVE,
                                              SOUND_DELAY,
                                              SOUND_EQ_WALLMOUNT,
                                              SOUND_MODE,
                                              SOUND_AMP,
                                              SOUND_PEQ,
                                              SOUND_EQ,
                                              SOUND_DBX,
                                              SOUND_DTS,
                                              SOUND_AVC,
                                              SOUND_GLOBAL,
                                              SOUND_GLOBAL_FACTORY,
                                              PICTURE_CONTENT_DETECT,
                                              PICTURE_ENHANCED_VIEWING_ANGLE,
                                              PICTURE_FACTORY_COLOR_TUNER,
                                              PICTURE_FACTORY_WB_SHIFT,
                                              PICTURE_FACTORY_WB_20_GAIN,
                                              PICTURE_FACTORY_WB_20_GAIN_IDX,
                                              PICTURE_FACTORY_WB_20_POINT,
                                              PICTURE_FACTORY_WB_20_POINT_IDX,
                                              PICTURE_USER_DOLBY_IQ_MODE,
                                              PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT,
                                              PICTURE_USER_LIGHT_SENSOR_LEVEL,
                                              PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN,
                                              PICTURE_USER_LIGHT_SENSOR_PLC_POINT,
                                              PICTURE_USER_BACKLIGHT_WB,
                                              PICTURE_USER_CCT_WB};
constexpr _DataCategory_t DVBMAIN_CATEGORIES[] = {PICTURE_FACTORY_OVERSCAN, PICTURE_FACTORY_ASPECT,
                                                  PICTURE_FACTORY_SCALING, PICTURE_FACTORY_SCALING_PIP,
                                                  PICTURE_FACTORY_SCALING_PIP_POS};
static_assert(std::size(ALL_CATEGORIES) == CATEGORY_COUNT, "every category is in the full scope");

bool isVideo(int value) {
    return (value >= 0 && value <= 15) || (value >= 27 && value <= 33) || (value >= 35 && value <= 47);
}

bool isSound(int value) {
    return (value >= 16 && value <= 26) || value == 34;
}

} // namespace

std::span<const _DataCategory_t> categoriesIn(_DS_Scope_t scope) {
    if (scope == DS_SCOPE_BIZ)
        return BIZ_CATEGORIES;
    if (scope == DS_SCOPE_DVBMAIN)
        return DVBMAIN_CATEGORIES;
    return ALL_CATEGORIES;
}

bool isOfType(_DataCategory_t category, _DS_Type_t type) {
    return (type == VIDEO && isVideo(category)) || (type == SOUND && isSound(category));
}

} // namespace td
