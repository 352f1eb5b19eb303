#include <dataModule/fileOperator/FileFactoryPictureWB20Gain.h>

#include "fileOperator/Axes.h"

namespace td {

FileFactoryPictureWB20Gain::FileFactoryPictureWB20Gain() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureWB20Gain::layout() {
    using Record = _Fac_Pic_Wb_20_Gain;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_WB_20_GAIN,
        .file = "pic_wb_20p_gain_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the WB 20 gain for factory picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::level(20, "level        scope:0~19")},
        .fields = {{"GainValue", &Record::gainValue}},
        .restoreFromCurrentFailed = " Load data from file [%s] failed when restore setting from current.\n",
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
