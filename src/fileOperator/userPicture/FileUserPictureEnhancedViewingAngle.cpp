#include <dataModule/fileOperator/FileUserPictureEnhancedViewingAngle.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureEnhancedViewingAngle::FileUserPictureEnhancedViewingAngle() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureEnhancedViewingAngle::layout() {
    using Record = _UsrPicEnhancedViewingAngle_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_ENHANCED_VIEWING_ANGLE,
        .file = "pic_enhanced_viewing_angle_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the enhanced viewing angle for user",
        .dimensions = {axis::pictureMode("picturemode  scope:0~11"), axis::dynamicRange("dr           scope:0~3")},
        .fields = {{"EvaSwitch", &Record::evaSwitch},
                   {"Judfreeswitch", &Record::judderFreeSwitch},
                   {"EvaReserved1", &Record::evaReserved1}},
        // There is no source here; the operation of that name goes over the picture modes.
        .applyToAllSources = {.axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
