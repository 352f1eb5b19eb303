/// PICTURE_FACTORY_SCALING_PIP: the size multipliers of the picture-in-picture window.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureScalingPIP
    : public CategoryOperator<FileFactoryPictureScalingPIP, _FactoryPicScalingPIP_t, FactoryPictureScalingPIPEvent, 1> {
public:
    FileFactoryPictureScalingPIP();
    static const CategoryLayout& layout();
};

} // namespace td
