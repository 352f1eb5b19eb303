#include <dataModule/fileOperator/FileFactoryPictureAspect.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

/// Source aspect, what of it must stay visible, and panel aspect. The files hold the first name as it stands.
constexpr const char* ASPECTS[] = {
    "AR_4x3_4x3 = 0",      "AR_16x9_4x3",        "AR_14x9_4x3", "AR_4x3_SP14x9_4x3", "AR_16x9_SP14x9_4x3",
    "AR_16x9_SP4x3_4x3",   "AR_16x9_16x9",       "AR_4x3_16x9", "AR_14x9_16x9",      "AR_4x3_SP14x9_16x9",
    "AR_16x9_SP14x9_16x9", "AR_16x9_SP4x3_16x9", "AR_CCO_16x9", "AR_LB_16x9",        "AR_16x9_235x100"};

} // namespace

FileFactoryPictureAspect::FileFactoryPictureAspect() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureAspect::layout() {
    using Record = _FactoryPicAspect_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_ASPECT,
        .file = "pic_aspect_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the aspect data for factory picture",
        .dimensions = {{.name = "aspect",
                        .heading = "aspect conversion index      scope:0~15",
                        .count = 15,
                        .valueNames = ASPECTS}},
        .fields = {{"InputHStart", &Record::inputHStart},
                   {"InputVStart", &Record::inputVStart},
                   {"InputHActive", &Record::inputHActive},
                   {"InputVActive", &Record::inputVActive},
                   {"OutputHStart", &Record::outputHStart},
                   {"OutputVStart", &Record::outputVStart},
                   {"OutputHActive", &Record::outputHActive},
                   {"OutputVActive", &Record::outputVActive},
                   {"SDScaling", &Record::sdScaling},
                   {"HDScalingTv", &Record::hdScalingTv},
                   {"HDScalingPc", &Record::hdScalingPc}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
