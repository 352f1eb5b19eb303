/// PICTURE_WB_2_POINT: the two-point white balance per source and picture mode.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureWB2Point
    : public CategoryOperator<FileUserPictureWB2Point, _Usr_Pic_Wb_2_Point, UserPictureWB2PointEvent, 2> {
public:
    FileUserPictureWB2Point();
    static const CategoryLayout& layout();
};

} // namespace td
