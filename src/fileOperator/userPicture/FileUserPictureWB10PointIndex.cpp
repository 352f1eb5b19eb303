#include <dataModule/fileOperator/FileUserPictureWB10PointIndex.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureWB10PointIndex::FileUserPictureWB10PointIndex() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureWB10PointIndex::layout() {
    using Record = _Usr_Pic_Wb_10_Point_Index;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_WB_10_POINT_IDX,
        .file = "pic_wb_10p_idx_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the WB 10 point index for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11")},
        .fields = {{"Enable", &Record::enable}, {"Level", &Record::level}},
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
