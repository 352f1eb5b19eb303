/// PICTURE_FACTORY_CURVE: the curves that map the user's settings, per source, dynamic range and signal.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureCurve
    : public CategoryOperator<FileFactoryPictureCurve, _Factory_Pic_Curve, FactoryPictureCurveEvent, 4> {
public:
    FileFactoryPictureCurve();
    static const CategoryLayout& layout();
};

} // namespace td
