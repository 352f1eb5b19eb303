#include <dataModule/fileOperator/FileUserPictureLightSensorPLC.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureLightSensorPLC::FileUserPictureLightSensorPLC() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureLightSensorPLC::layout() {
    using Record = _UserLightSensorPlc_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_USER_LIGHT_SENSOR_PLC_POINT,
        .file = "pic_light_sensor_plc_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the light sensor plc data for user",
        .dimensions = {axis::lightSensorLevel("lightsensor  scope:0~7")},
        .fields = {{"LS_plc0", &Record::plc0},
                   {"LS_plc1", &Record::plc1},
                   {"LS_plc2", &Record::plc2},
                   {"LS_plc3", &Record::plc3},
                   {"LS_plc4", &Record::plc4},
                   {"LS_plc5", &Record::plc5},
                   {"LS_plc6", &Record::plc6},
                   {"LS_plc7", &Record::plc7}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
