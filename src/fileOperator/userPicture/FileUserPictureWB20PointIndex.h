/// PICTURE_WB_20_POINT_IDX: whether PICTURE_WB_20_POINT is in effect, and the point being edited, per source and
/// picture mode.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureWB20PointIndex
    : public CategoryOperator<FileUserPictureWB20PointIndex, _Usr_Pic_Wb_20_Point_Index, UserPictureWB20PointIndexEvent,
                              2> {
public:
    FileUserPictureWB20PointIndex();
    static const CategoryLayout& layout();
};

} // namespace td
