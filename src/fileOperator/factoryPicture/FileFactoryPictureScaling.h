/// PICTURE_FACTORY_SCALING: the scaler's windows per scaling (zoom) conversion.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureScaling
    : public CategoryOperator<FileFactoryPictureScaling, _FactoryPicScaling_t, FactoryPictureScalingEvent, 1> {
public:
    FileFactoryPictureScaling();
    static const CategoryLayout& layout();
};

} // namespace td
