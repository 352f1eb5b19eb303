/// PICTURE_WB_10_POINT_IDX: whether PICTURE_WB_10_POINT is in effect, and the point being edited, per source and
/// picture mode.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureWB10PointIndex
    : public CategoryOperator<FileUserPictureWB10PointIndex, _Usr_Pic_Wb_10_Point_Index, UserPictureWB10PointIndexEvent,
                              2> {
public:
    FileUserPictureWB10PointIndex();
    static const CategoryLayout& layout();
};

} // namespace td
