/// PICTURE_FACTORY_WB_20_POINT: the factory's corrections of the 20 white balance points per source and picture mode.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureWB20Point
    : public CategoryOperator<FileFactoryPictureWB20Point, _Fac_Pic_Wb_20_Point, FactoryPictureWB20PointEvent, 3> {
public:
    FileFactoryPictureWB20Point();
    static const CategoryLayout& layout();
};

} // namespace td
