#include <dataModule/fileOperator/FileUserPictureGammaCalibrationDarkDetail.h>

#include "fileOperator/Axes.h"

namespace td {

namespace {

constexpr const char* HDR_TYPES[] = {"SDR", "HDR10", "HLG", "DolbyVision", "HDR10+"};

Dimension hdrType() {
    return {.name = "hdr_type", .heading = "hdr_type     scope:0~4", .count = 5, .valueNames = HDR_TYPES};
}

} // namespace

FileUserPictureGammaCalibrationDarkDetail::FileUserPictureGammaCalibrationDarkDetail() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureGammaCalibrationDarkDetail::layout() {
    using Record = _Usr_Pic_DarkDetail_20_Gain;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_GAMMA_CALIBRATION_DARK_DETAIL,
        .file = "pic_gamma_calibration_dark_detail.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the dark detail data for user picture",
        .dimensions = {hdrType(), axis::level(20, "level        scope:0~19")},
        .fields = {{"DDgain", &Record::ddGain}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
