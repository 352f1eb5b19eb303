/// PICTURE_FACTORY_WB_20_GAIN: the factory's gain of the 20 white balance points per source and picture mode.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureWB20Gain
    : public CategoryOperator<FileFactoryPictureWB20Gain, _Fac_Pic_Wb_20_Gain, FactoryPictureWB20GainEvent, 3> {
public:
    FileFactoryPictureWB20Gain();
    static const CategoryLayout& layout();
};

} // namespace td
