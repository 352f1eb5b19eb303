#include <dataModule/fileOperator/FileUserPictureModeEx.h>

#include <algorithm>

#include "fileOperator/Axes.h"

namespace td {

namespace {

/// Whether a record counts as equal to the given one. Lopsided on purpose: the other's Reserve9 has to equal both
/// Reserve9 and Reserve10 of the given record; the other's own Reserve10 is never looked at.
bool sameAsGiven(const int* other, const int* given) {
    constexpr int RESERVE_9 = 9;
    constexpr int RESERVE_10 = 10;
    return std::equal(other, other + RESERVE_9, given) && other[RESERVE_9] == given[RESERVE_9] &&
           other[RESERVE_9] == given[RESERVE_10];
}

} // namespace

FileUserPictureModeEx::FileUserPictureModeEx() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureModeEx::layout() {
    using Record = _UsrPicModeEx_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_MODE_EX,
        .file = "pic_mode_ex_usr.ini",
        .version = "v0.4",
        .purpose = "The file is used to define the picture mode ex data for user",
        .dimensions = {axis::source("source       scope:0~16"), axis::pictureMode("picturemode  scope:0~11"),
                       axis::userDynamicRange("usr_dr       scope:0~7")},
        .fields = {{"Gamemodeswitch", &Record::gameModeSwitch},
                   {"Allmmodeswitch", &Record::allmModeSwitch},
                   {"Reserve2", &Record::reserve2},
                   {"Reserve3", &Record::reserve3},
                   {"Reserve4", &Record::reserve4},
                   {"Reserve5", &Record::reserve5},
                   {"Reserve6", &Record::reserve6},
                   {"Reserve7", &Record::reserve7},
                   {"Reserve8", &Record::reserve8},
                   {"Reserve9", &Record::reserve9},
                   {"Reserve10", &Record::reserve10}},
        .applyToAllSources = {.axes = axisBit(0), .equal = sameAsGiven},
    };
    return layout;
}

} // namespace td
