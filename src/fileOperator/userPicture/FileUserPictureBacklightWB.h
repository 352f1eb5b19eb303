/// PICTURE_USER_BACKLIGHT_WB: the white-balance compensation per backlight level.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureBacklightWB
    : public CategoryOperator<FileUserPictureBacklightWB, _UserBacklightWB_t, UserPictureBacklightWBEvent, 1> {
public:
    FileUserPictureBacklightWB();
    static const CategoryLayout& layout();
};

} // namespace td
