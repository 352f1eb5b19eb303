/// PICTURE_FACTORY_WB_20_POINT_IDX: which of the factory's white balance points is selected per source and picture
/// mode.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureWB20PointIndex
    : public CategoryOperator<FileFactoryPictureWB20PointIndex, _Fac_Pic_Wb_20_Point_Index,
                              FactoryPictureWB20PointIndexEvent, 2> {
public:
    FileFactoryPictureWB20PointIndex();
    static const CategoryLayout& layout();
};

} // namespace td
