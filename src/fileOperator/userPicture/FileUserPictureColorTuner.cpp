#include <dataModule/fileOperator/FileUserPictureColorTuner.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureColorTuner::FileUserPictureColorTuner() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureColorTuner::layout() {
    using Record = _Usr_Pic_Color_Tuner;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_COLOR_TUNER,
        .file = "pic_color_tuner_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the color tuner data for user picture",
        // The files leave out the dynamic range.
        .dimensionLine = "[(source)(picturemode)(colortune_mode)]: 3 dimension",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::userDynamicRange("usr_dr       scope:0~7"), axis::tunedColour("colortune    scope:0~6")},
        .fields = {{"Brightness", &Record::brightness}, {"Hue", &Record::hue}, {"Saturation", &Record::saturation}},
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
