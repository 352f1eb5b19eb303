#include <dataModule/fileOperator/FileUserPictureCCTWB.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureCCTWB::FileUserPictureCCTWB() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureCCTWB::layout() {
    using Record = _UserCCTWB_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_USER_CCT_WB,
        .file = "pic_cct_wb_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the cct white balance data for user",
        // The files list more levels than there are.
        .dimensions = {axis::hexadecimalLevel(5, 11, "level        scope:0~10")},
        .fields = {{"CCT_WBRedGain", &Record::rGain},
                   {"CCT_WBGreenGain", &Record::gGain},
                   {"CCT_WBBlueGain", &Record::bGain},
                   {"CCT_WBRedOffset", &Record::rOffset},
                   {"CCT_WBGreenOffset", &Record::gOffset},
                   {"CCT_WBBlueOffset", &Record::bOffset}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
