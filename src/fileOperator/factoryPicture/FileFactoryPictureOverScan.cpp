#include <dataModule/fileOperator/FileFactoryPictureOverScan.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

/// The last of the 28 slots has no name.
constexpr const char* CASES[] = {"NO_OVERSCAN",
                                 "SD_OVERSCAN",
                                 "HD_OVERSCAN",
                                 "TTX_SPLIT_4x3_OVERSCAN",
                                 "TTX_SPLIT_16x9_OVERSCAN",
                                 "HDMI_480I_OVERSCAN",
                                 "HDMI_576I_OVERSCAN",
                                 "HDMI_480P_OVERSCAN",
                                 "HDMI_576P_OVERSCAN",
                                 "HDMI_720P_OVERSCAN",
                                 "HDMI_1080I_OVERSCAN",
                                 "HDMI_1080P_OVERSCAN",
                                 "YPBPR_480I_OVERSCAN",
                                 "YPBPR_576I_OVERSCAN",
                                 "YPBPR_480P_OVERSCAN",
                                 "YPBPR_576P_OVERSCAN",
                                 "YPBPR_720P_OVERSCAN",
                                 "YPBPR_1080I_OVERSCAN",
                                 "YPBPR_1080P_OVERSCAN",
                                 "AV_PAL_OVERSCAN",
                                 "AV_NTSC_OVERSCAN",
                                 "AV_SECAM_OVERSCAN",
                                 "AV_PAL60_OVERSCAN",
                                 "ATV_PAL_OVERSCAN",
                                 "ATV_NTSC_OVERSCAN",
                                 "SCART_RGB_OVERSCAN",
                                 "SCART_CVBS_OVERSCAN"};

} // namespace

FileFactoryPictureOverScan::FileFactoryPictureOverScan() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactoryPictureOverScan::layout() {
    using Record = _FactoryPicOverscan_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_FACTORY_OVERSCAN,
        .file = "pic_overscan_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the overscan data for factory picture",
        .dimensions = {{.name = "overscan",
                        .heading = "overscan conversion index      scope:0~26",
                        .count = 28,
                        .valueNames = CASES,
                        .digits = DigitForm::Character}},
        .fields = {{"InputHStart", &Record::inputHStart},
                   {"InputVStart", &Record::inputVStart},
                   {"InputHActive", &Record::inputHActive},
                   {"InputVActive", &Record::inputVActive},
                   {"OutputHStart", &Record::outputHStart},
                   {"OutputVStart", &Record::outputVStart},
                   {"OutputHActive", &Record::outputHActive},
                   {"OutputVActive", &Record::outputVActive}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
