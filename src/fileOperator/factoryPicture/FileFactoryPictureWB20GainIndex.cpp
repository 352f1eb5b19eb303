#include <dataModule/fileOperator/FileFactoryPictureWB20GainIndex.h>

#include "fileOperator/Axes.h"

namespace td {

FileFactoryPictureWB20GainIndex::FileFactoryPictureWB20GainIndex() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureWB20GainIndex::layout() {
    using Record = _Fac_Pic_Wb_20_Gain_Index;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_WB_20_GAIN_IDX,
        .file = "pic_wb_20p_gain_idx_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the WB gain index for factory picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11")},
        .fields = {{"GainLevel", &Record::gainLevel}},
        .restoreFromCurrentFailed = " Load data from file [%s] failed when restore setting from current.\n",
        .applyToAllModes = {.axes = axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
