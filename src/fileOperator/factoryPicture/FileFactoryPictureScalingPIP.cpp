#include <dataModule/fileOperator/FileFactoryPictureScalingPIP.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* SIZES[] = {"SCALING_PIP_SIZE_SMALL", "SCALING_PIP_SIZE_LARGE", "SCALING_PIP_SIZE_SPLIT_SCREEN"};

} // namespace

FileFactoryPictureScalingPIP::FileFactoryPictureScalingPIP() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureScalingPIP::layout() {
    using Record = _FactoryPicScalingPIP_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_SCALING_PIP,
        .file = "pic_scaling_pip_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the PIP scaling for factory picture",
        .dimensions = {{.name = "pip_size",
                        .heading = "overscan conversion index      scope:0~3",
                        .count = 3,
                        .valueNames = SIZES}},
        .fields = {{"OutputHMultiplier", &Record::outputHMultiplier},
                   {"OutputVMultiplier", &Record::outputVMultiplier}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
