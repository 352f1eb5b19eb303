/// PICTURE_WB_10_POINT: the 10-point white balance per source and picture mode.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureWB10Point
    : public CategoryOperator<FileUserPictureWB10Point, _Usr_Pic_Wb_10_Point, UserPictureWB10PointEvent, 3> {
public:
    FileUserPictureWB10Point();
    static const CategoryLayout& layout();
};

} // namespace td
