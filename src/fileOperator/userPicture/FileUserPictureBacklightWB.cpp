#include <dataModule/fileOperator/FileUserPictureBacklightWB.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureBacklightWB::FileUserPictureBacklightWB() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureBacklightWB::layout() {
    using Record = _UserBacklightWB_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_USER_BACKLIGHT_WB,
        .file = "velmora_color_temperature_compensation.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the backlight white balance for user",
        .dimensions = {axis::hexadecimalLevel(11, 11, "level        scope:0~10")},
        .fields = {{"BL_WBRedGain", &Record::rGain},
                   {"BL_WBGreenGain", &Record::gGain},
                   {"BL_WBBlueGain", &Record::bGain},
                   {"BL_WBRedOffset", &Record::rOffset},
                   {"BL_WBGreenOffset", &Record::gOffset},
                   {"BL_WBBlueOffset", &Record::bOffset}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
