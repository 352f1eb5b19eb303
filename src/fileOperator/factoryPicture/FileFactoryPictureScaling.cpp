#include <dataModule/fileOperator/FileFactoryPictureScaling.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* SCALINGS[] = {"GEO_16x9",      "GEO_4x3",     "GEO_PANO1",   "GEO_PANO2",
                                    "GEO_ZOOM",      "GEO_PALPLUS", "GEO_16x9_PC", "GEO_16x9_TV",
                                    "GEO_16x9_ZOOM", "GEO_4x3_PC",  "GEO_4x3_TV",  "GEO_4x3_ZOOM",
                                    "GEO_ZOOM_2",    "GEO_AUTO",    "GEO_SMART",   "GEO_21x9"};

} // namespace

FileFactoryPictureScaling::FileFactoryPictureScaling() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureScaling::layout() {
    using Record = _FactoryPicScaling_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_SCALING,
        .file = "pic_scaling_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the scaling data for factory picture",
        .dimensions = {{.name = "scaling",
                        .heading = "scaling conversion index      scope:0~16",
                        .count = 16,
                        .valueNames = SCALINGS}},
        .fields = {{"InputHStart", &Record::inputHStart},
                   {"InputVStart", &Record::inputVStart},
                   {"InputHActive", &Record::inputHActive},
                   {"InputVActive", &Record::inputVActive},
                   {"OutputHStart", &Record::outputHStart},
                   {"OutputVStart", &Record::outputVStart},
                   {"OutputHActive", &Record::outputHActive},
                   {"OutputVActive", &Record::outputVActive},
                   {"OverScan", &Record::overScan}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
