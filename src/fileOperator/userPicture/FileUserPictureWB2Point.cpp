#include <dataModule/fileOperator/FileUserPictureWB2Point.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureWB2Point::FileUserPictureWB2Point() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureWB2Point::layout() {
    using Record = _Usr_Pic_Wb_2_Point;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_WB_2_POINT,
        .file = "pic_wb_2p_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the WB 2 point for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11")},
        .fields = {{"Enable", &Record::enable},
                   {"RGain", &Record::rGain},
                   {"GGain", &Record::gGain},
                   {"BGain", &Record::bGain},
                   {"ROffset", &Record::rOffset},
                   {"GOffset", &Record::gOffset},
                   {"BOffset", &Record::bOffset}},
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
