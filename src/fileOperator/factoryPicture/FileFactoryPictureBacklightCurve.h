/// PICTURE_FACTORY_BACKLIGHT_CURVE: the curves that map the user's backlight setting, per source, dynamic range and
/// signal.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureBacklightCurve
    : public CategoryOperator<FileFactoryPictureBacklightCurve, _Factory_Pic_Curve, FactoryPictureBacklightCurveEvent,
                              4> {
public:
    FileFactoryPictureBacklightCurve();
    static const CategoryLayout& layout();
};

} // namespace td
