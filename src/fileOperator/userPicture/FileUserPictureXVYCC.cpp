#include <dataModule/fileOperator/FileUserPictureXVYCC.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* MATRICES[] = {"Native_BT709_P3", "Auto_P3_P3/BT2020_Native", "Auto_BT709_BT709"};
constexpr const char* MATRIX_ROWS[] = {"0--Native_BT709_P3",  "1--Auto_P3_P3/BT2020_Native",
                                       "2--Auto_BT709_BT709", "3--reserved",
                                       "4--reserved",         "5--reserved"};

Dimension matrix() {
    return {.name = "matrix",
            .heading = "matrix       scope:0~5",
            .count = 6,
            .valueNames = MATRICES,
            .commentRows = MATRIX_ROWS};
}

} // namespace

FileUserPictureXVYCC::FileUserPictureXVYCC() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureXVYCC::layout() {
    using Record = _Usr_Pic_XVYCC;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_XVYCC,
        .file = "pic_xvycc_factory.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the xvYCC data for user picture",
        .dimensions = {matrix()},
        .fields = {{"XVYCC_0", &Record::xvycc0},
                   {"XVYCC_1", &Record::xvycc1},
                   {"XVYCC_2", &Record::xvycc2},
                   {"XVYCC_3", &Record::xvycc3},
                   {"XVYCC_4", &Record::xvycc4},
                   {"XVYCC_5", &Record::xvycc5},
                   {"XVYCC_6", &Record::xvycc6},
                   {"XVYCC_7", &Record::xvycc7},
                   {"XVYCC_8", &Record::xvycc8}},
        .keyLine = KeyLineForm::Hexadecimal5,
        .restoreFromCurrentFailed = "Load data from file [%s] failed when restore setting from current\n",
    };
    return layout;
}

} // namespace td
