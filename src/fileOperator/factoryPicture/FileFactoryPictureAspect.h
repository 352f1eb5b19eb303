/// PICTURE_FACTORY_ASPECT: the scaler's windows per aspect conversion.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureAspect
    : public CategoryOperator<FileFactoryPictureAspect, _FactoryPicAspect_t, FactoryPictureAspectEvent, 1> {
public:
    FileFactoryPictureAspect();
    static const CategoryLayout& layout();
};

} // namespace td
