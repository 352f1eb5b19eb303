#include <dataModule/fileOperator/FileUserPictureYRange.h>

#include "fileOperator/Axes.h"

namespace td {

namespace {

constexpr const char* RANGE_TYPES[] = {"SDR", "HDR_10", "HDR_HLG", "HDR_DObyVison", "HDR_10Plus", "HDR_ToSDR"};

Dimension rangeType() {
    return {.name = "dr_type", .heading = "dr_type      scope:0~4", .count = 6, .valueNames = RANGE_TYPES};
}

} // namespace

FileUserPictureYRange::FileUserPictureYRange() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureYRange::layout() {
    using Record = _Usr_Pic_YRange_;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_YRANGE,
        .file = "pic_yrange_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the Y range data for user picture",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       rangeType()},
        .fields = {{"BlackLevel", &Record::blackLevel},
                   {"WhiteLevel", &Record::whiteLevel},
                   {"BlackStretch", &Record::blackStretch}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
