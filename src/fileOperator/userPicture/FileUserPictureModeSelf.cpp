#include <dataModule/fileOperator/FileUserPictureModeSelf.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureModeSelf::FileUserPictureModeSelf() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureModeSelf::layout() {
    using Record = _UsrPicModeSelf_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_MODE_SELF,
        .file = "pic_modeself_usr.ini",
        .version = "v0.3",
        .purpose = "The file is used to define the picture mode self data for user",
        .dimensions = {axis::source("source       scope:0~16"), axis::dynamicRange("dr           scope:0~3")},
        .fields = {{"PictureMode", &Record::pictureMode}},
    };
    return layout;
}

} // namespace td
