#include <dataModule/fileOperator/FileUserPictureMode.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureMode::FileUserPictureMode() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureMode::layout() {
    using Record = _UsrPicMode_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_MODE,
        .file = "pic_mode_usr.ini",
        .version = "v0.4",
        .purpose = "The file is used to define the picture mode data for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::userDynamicRange("usr_dr       scope:0~7")},
        .fields = {{"Contrast", &Record::contrast, 50, "contrast"},
                   {"Brightness", &Record::brightness, 50, "brighness"},
                   {"Color", &Record::color, 50, "color"},
                   {"Hue", &Record::hue, 0, "hue"},
                   {"Sharpness", &Record::sharpness, 10, "sharpness"},
                   {"AutoBacklight", &Record::autoBacklight, 1, "ab"},
                   {"BacklightLevel", &Record::backlightLevel, 100, "bl"},
                   {"DynamicContrast", &Record::dynamicContrast, 2, "dc"},
                   {"ColorTemp", &Record::colorTemp},
                   {"MEMC", &Record::memc, 5},
                   {"Judder", &Record::judder, 10},
                   {"Blur", &Record::blur, 10},
                   {"NoiseReduction", &Record::noiseReduction, 2},
                   {"MPEG_NR", &Record::mpegNr, 3},
                   {"ColorSpace", &Record::colorSpace, 1},
                   {"ColorTuner", &Record::colorTuner},
                   {"SensorEnable", &Record::sensorEnable},
                   {"MinBacklight", &Record::minBacklight, 20},
                   {"Gamma", &Record::gamma, 3},
                   {"SensorCCTEnable", &Record::sensorCctEnable, 0, "sensorCCTEnable"},
                   {"HDRDTM", &Record::hdrDtm},
                   {"DOLBYDD", &Record::dolbyDd, 0, "DolbyDD"},
                   {"DOLBYPD", &Record::dolbyPd, 0, "DolbyPD"},
                   {"Gradient", &Record::gradient}},
        .applyFlag = "ApplyModeToSource",
        .applyToAllSources = {.axes = axisBit(0),
                              .writesAtOnce = true,
                              .startMessage = "start to update Picture Mode for all source ... \n",
                              .endMessage = "update Picture Mode for all source completely, elpased time = %d (ms).\n"},
        .restoreForAllSources = {.kind = BulkRestore::Kind::SilentlyTrue},
    };
    return layout;
}

} // namespace td
