#include <dataModule/fileOperator/FileUserPictureWB20Point.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureWB20Point::FileUserPictureWB20Point() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureWB20Point::layout() {
    using Record = _Usr_Pic_Wb_20_Point;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_WB_20_POINT,
        .file = "pic_wb_20p_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the WB 20 point for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::level(20, "level        scope:0~19")},
        .fields = {{"Red", &Record::red}, {"Green", &Record::green}, {"Blue", &Record::blue}},
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
