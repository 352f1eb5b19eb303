#include <dataModule/fileOperator/FileUserPictureWB20GainIndex.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureWB20GainIndex::FileUserPictureWB20GainIndex() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureWB20GainIndex::layout() {
    using Record = _Usr_Pic_Wb_20_Gain_Index;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_WB_20_GAIN_IDX,
        .file = "pic_wb_20p_gain_idx_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the WB 20 gain index for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11")},
        .fields = {{"GainLevel", &Record::gainLevel}},
        .applyToAllModes = {.axes = axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostChanged, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
