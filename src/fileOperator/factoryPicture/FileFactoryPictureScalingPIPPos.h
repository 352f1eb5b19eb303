/// PICTURE_FACTORY_SCALING_PIP_POS: the position multipliers of the picture-in-picture window.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureScalingPIPPos
    : public CategoryOperator<FileFactoryPictureScalingPIPPos, _FactoryPicScalingPIPPos_t,
                              FactoryPictureScalingPIPPosEvent, 1> {
public:
    FileFactoryPictureScalingPIPPos();
    static const CategoryLayout& layout();
};

} // namespace td
