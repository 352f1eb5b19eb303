#include <dataModule/fileOperator/FileUserPictureWB10Point.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureWB10Point::FileUserPictureWB10Point() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureWB10Point::layout() {
    using Record = _Usr_Pic_Wb_10_Point;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_WB_10_POINT,
        .file = "pic_wb_10p_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the WB 10 point for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::hexadecimalLevel(10, 10, "level        scope:0~9")},
        .fields = {{"Red", &Record::red}, {"Green", &Record::green}, {"Blue", &Record::blue}},
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
