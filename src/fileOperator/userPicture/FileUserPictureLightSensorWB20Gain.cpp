#include <dataModule/fileOperator/FileUserPictureLightSensorWB20Gain.h>

#include "fileOperator/Axes.h"

namespace td {

namespace {

/// The files number the first two rows 1, and end the scope of the heading early.
constexpr const char* POINT_ROWS[] = {"1--LEVEL0",  "1--LEVEL1",  "2--LEVEL2",  "3--LEVEL3",  "4--LEVEL4",
                                      "5--LEVEL5",  "6--LEVEL6",  "7--LEVEL7",  "8--LEVEL8",  "9--LEVEL9",
                                      "a--LEVEL10", "b--LEVEL11", "c--LEVEL12", "d--LEVEL13", "e--LEVEL14",
                                      "f--LEVEL15", "g--LEVEL16", "h--LEVEL17", "i--LEVEL18", "j--LEVEL19"};

Dimension point() {
    Dimension dimension = axis::level(20, "level        scope:0~11");
    dimension.commentRows = POINT_ROWS;
    return dimension;
}

} // namespace

FileUserPictureLightSensorWB20Gain::FileUserPictureLightSensorWB20Gain() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureLightSensorWB20Gain::layout() {
    using Record = _Usr_Pic_Light_Sensor_Wb_20_Gain;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN,
        .file = "pic_light_sensor_WB_20_gain_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the light sensor gain for user picture",
        .dimensions = {axis::lightSensorLevel("lightsensor  scope:0~7"), point()},
        .fields = {{"WBGainValue", &Record::wbGainValue}},
        // The levels of the sensor take the place of sources, the points that of modes.
        .applyToAllModes = {.axes = axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
