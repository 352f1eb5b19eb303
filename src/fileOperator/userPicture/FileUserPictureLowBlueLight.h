/// PICTURE_LOW_BLUE_LIGHT: the gains of the low-blue-light filter per colour temperature and filter level.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureLowBlueLight
    : public CategoryOperator<FileUserPictureLowBlueLight, _Usr_Pic_Low_Blue_Light, UserPictureLowBlueLightEvent, 2> {
public:
    FileUserPictureLowBlueLight();
    static const CategoryLayout& layout();
};

} // namespace td
