#include <dataModule/fileOperator/FileUserPictureWB20PointIndex.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureWB20PointIndex::FileUserPictureWB20PointIndex() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureWB20PointIndex::layout() {
    using Record = _Usr_Pic_Wb_20_Point_Index;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_WB_20_POINT_IDX,
        .file = "pic_wb_20p_idx_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the WB 20 point index for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11")},
        .fields = {{"Enable", &Record::enable}, {"Level", &Record::level}},
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
