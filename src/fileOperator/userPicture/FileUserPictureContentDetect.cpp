#include <dataModule/fileOperator/FileUserPictureContentDetect.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureContentDetect::FileUserPictureContentDetect() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureContentDetect::layout() {
    using Record = _Usr_Pic_Content_Detect_;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_CONTENT_DETECT,
        .file = "pic_content_detect_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the content detect data for user",
        .dimensions = {axis::source("source       scope:0~16")},
        .fields = {{"Filmmaker_Switch", &Record::filmmakerSwitch},
                   {"ALLM", &Record::allm},
                   {"Freesync_enable", &Record::freesyncEnable},
                   {"windowshift", &Record::windowShift}},
        .storeMessages = {.asked = "The dimension info, source = %d.\n",
                          .refused = "The dimension value is invalid, source = %d.\n",
                          .updated = "The dimension value info: source = %d.\n"},
    };
    return layout;
}

} // namespace td
