#include <dataModule/fileOperator/FileFactoryPictureWB20Point.h>

#include "fileOperator/Axes.h"

namespace td {

FileFactoryPictureWB20Point::FileFactoryPictureWB20Point() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureWB20Point::layout() {
    using Record = _Fac_Pic_Wb_20_Point;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_WB_20_POINT,
        .file = "pic_wb_20p_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the WB 20 point for factory picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::level(20, "level        scope:0~19")},
        .fields = {{"Red", &Record::red}, {"Green", &Record::green}, {"Blue", &Record::blue}},
        .restoreFromCurrentFailed = " Load data from file [%s] failed when restore setting from current.\n",
        .applyToAllSources = {.axes = axisBit(0)},
        .applyToAllModes = {.axes = axisBit(0) | axisBit(1)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
