/// PICTURE_WB_20_POINT: the 20-point white balance per source and picture mode.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureWB20Point
    : public CategoryOperator<FileUserPictureWB20Point, _Usr_Pic_Wb_20_Point, UserPictureWB20PointEvent, 3> {
public:
    FileUserPictureWB20Point();
    static const CategoryLayout& layout();
};

} // namespace td
