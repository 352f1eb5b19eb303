#include <dataModule/fileOperator/FileFactoryPictureBacklightCurve.h>

#include "fileOperator/Axes.h"
#include "fileOperator/factoryPicture/FactoryAxes.h"

namespace td {

namespace {

constexpr const char* BACKLIGHT_CURVES[] = {"BACKLIGHT"};

} // namespace

FileFactoryPictureBacklightCurve::FileFactoryPictureBacklightCurve() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureBacklightCurve::layout() {
    using Record = _Factory_Pic_Curve;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_BACKLIGHT_CURVE,
        .file = "pic_backlight_curve_factory.ini",
        .version = "v0.3",
        .purpose = "The file is used to define the backlight curve data",
        .dimensions =
            {axis::source("source       scope:0~16"),
             axis::factoryDynamicRange("dr           scope:0~7"),
             axis::signal("sig          scope:0~1"),
             {.name = "curve_mode", .heading = "curve_mode   scope:0", .count = 1, .valueNames = BACKLIGHT_CURVES}},
        .fields = {{"Curv0", &Record::curv0},
                   {"Curv1", &Record::curv1},
                   {"Curv2", &Record::curv2},
                   {"Curv3", &Record::curv3},
                   {"Curv4", &Record::curv4}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
