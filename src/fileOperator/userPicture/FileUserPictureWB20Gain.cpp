#include <dataModule/fileOperator/FileUserPictureWB20Gain.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureWB20Gain::FileUserPictureWB20Gain() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureWB20Gain::layout() {
    using Record = _Usr_Pic_Wb_20_Gain;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_WB_20_GAIN,
        .file = "pic_wb_20p_gain_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the WB 20 point gain for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::level(20, "level        scope:0~19")},
        .fields = {{"GainValue", &Record::gainValue}},
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
