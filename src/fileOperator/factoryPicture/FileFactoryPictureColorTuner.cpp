#include <dataModule/fileOperator/FileFactoryPictureColorTuner.h>

#include "fileOperator/Axes.h"

namespace td {

FileFactoryPictureColorTuner::FileFactoryPictureColorTuner() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureColorTuner::layout() {
    using Record = _factory_Pic_Color_Tuner;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_COLOR_TUNER,
        .file = "pic_color_tuner_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the color tuner for factory picture",
        // One less than there are; the files say it so.
        .dimensionLine = "[(source)(picturemode)(colortune_mode)]: 3 dimension",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::userDynamicRange("usr_dr       scope:0~7"), axis::tunedColour("colortune_mode scope:0~6")},
        .fields = {{"Brightness", &Record::brightness}, {"Hue", &Record::hue}, {"Saturation", &Record::saturation}},
        .restoreFromCurrentFailed = " Load data from file [%s] failed when restore setting from current.\n",
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
