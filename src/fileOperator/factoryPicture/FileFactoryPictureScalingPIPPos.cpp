#include <dataModule/fileOperator/FileFactoryPictureScalingPIPPos.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* POSITIONS[] = {"SCALING_PIP_POSITION_UPPER_LEFT", "SCALING_PIP_POSITION_UPPER_RIGHT",
                                     "SCALING_PIP_POSITION_BOTTOM_LEFT", "SCALING_PIP_POSITION_BOTTOM_RIGHT",
                                     "SCALING_PIP_POSITION_SPLIT_SCREEN"};

/// The files have a row before the positions that is none of them.
constexpr const char* COMMENT_ROWS[] = {"0--NO_OVERSCAN",
                                        "0--SCALING_PIP_POSITION_UPPER_LEFT",
                                        "1--SCALING_PIP_POSITION_UPPER_RIGHT",
                                        "2--SCALING_PIP_POSITION_BOTTOM_LEFT",
                                        "3--SCALING_PIP_POSITION_BOTTOM_RIGHT",
                                        "4--SCALING_PIP_POSITION_SPLIT_SCREEN"};

} // namespace

FileFactoryPictureScalingPIPPos::FileFactoryPictureScalingPIPPos() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureScalingPIPPos::layout() {
    using Record = _FactoryPicScalingPIPPos_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_SCALING_PIP_POS,
        .file = "pic_scaling_pip_pos_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the PIP position for factory picture",
        .dimensions = {{.name = "pip_position",
                        .heading = "overscan conversion index      scope:0~5",
                        .count = 5,
                        .valueNames = POSITIONS,
                        .commentRows = COMMENT_ROWS}},
        .fields = {{"OutputHMultiplier", &Record::outputHMultiplier},
                   {"OutputVMultiplier", &Record::outputVMultiplier}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
