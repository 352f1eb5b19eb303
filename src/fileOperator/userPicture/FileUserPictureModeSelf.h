/// PICTURE_MODE_SELF: the picture mode last chosen for each source and dynamic range.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureModeSelf
    : public CategoryOperator<FileUserPictureModeSelf, _UsrPicModeSelf_t, UserPictureModeSelfEvent, 2> {
public:
    FileUserPictureModeSelf();
    static const CategoryLayout& layout();
};

} // namespace td
