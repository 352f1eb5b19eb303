#include <dataModule/fileOperator/FileUserPictureLightSensorShift.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureLightSensorShift::FileUserPictureLightSensorShift() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureLightSensorShift::layout() {
    using Record = _UserLightSensorShift_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_USER_LIGHT_SENSOR_LEVEL,
        .file = "pic_light_sensor_level_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the light sensor level data for user",
        .dimensions = {axis::lightSensorLevel("lightsensor  scope:0~7")},
        .fields = {{"LS_GammaCalbrationLevel", &Record::gammaCalibrationLevel},
                   {"LS_Pwm", &Record::pwm},
                   {"LS_Brightness", &Record::brightness},
                   {"LS_Contrast", &Record::contrast},
                   {"LS_Saturation", &Record::saturation},
                   {"LS_WBGainValue0", &Record::wbGainValue0},
                   {"LS_WBGainValue1", &Record::wbGainValue1},
                   {"LS_WBGainValue2", &Record::wbGainValue2},
                   {"LS_WBGainValue3", &Record::wbGainValue3},
                   {"LS_WBGainValue4", &Record::wbGainValue4},
                   {"LS_WBGainValue5", &Record::wbGainValue5},
                   {"LS_WBGainValue6", &Record::wbGainValue6},
                   {"LS_WBGainValue7", &Record::wbGainValue7},
                   {"LS_WBGainValue8", &Record::wbGainValue8},
                   {"LS_WBGainValue9", &Record::wbGainValue9},
                   {"LS_WBGainValue10", &Record::wbGainValue10},
                   {"LS_WBGainValue11", &Record::wbGainValue11},
                   {"LS_WBGainValue12", &Record::wbGainValue12},
                   {"LS_WBGainValue13", &Record::wbGainValue13},
                   {"LS_WBGainValue14", &Record::wbGainValue14},
                   {"LS_WBGainValue15", &Record::wbGainValue15},
                   {"LS_WBGainValue16", &Record::wbGainValue16},
                   {"LS_WBGainValue17", &Record::wbGainValue17},
                   {"LS_WBGainValue18", &Record::wbGainValue18},
                   {"LS_WBGainValue19", &Record::wbGainValue19}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
