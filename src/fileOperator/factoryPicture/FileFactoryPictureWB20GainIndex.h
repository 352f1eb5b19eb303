/// PICTURE_FACTORY_WB_20_GAIN_IDX: which of the factory's white balance gains is selected per source and picture mode.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureWB20GainIndex
    : public CategoryOperator<FileFactoryPictureWB20GainIndex, _Fac_Pic_Wb_20_Gain_Index,
                              FactoryPictureWB20GainIndexEvent, 2> {
public:
    FileFactoryPictureWB20GainIndex();
    static const CategoryLayout& layout();
};

} // namespace td
