#include <dataModule/fileOperator/FileFactoryPictureWB20PointIndex.h>

#include "fileOperator/Axes.h"

namespace td {

FileFactoryPictureWB20PointIndex::FileFactoryPictureWB20PointIndex() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureWB20PointIndex::layout() {
    using Record = _Fac_Pic_Wb_20_Point_Index;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_WB_20_POINT_IDX,
        .file = "pic_wb_20p_idx_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the WB 20 index for factory picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11")},
        .fields = {{"Enable", &Record::enable}, {"Level", &Record::level}},
        .restoreFromCurrentFailed = " Load data from file [%s] failed when restore setting from current.\n",
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
