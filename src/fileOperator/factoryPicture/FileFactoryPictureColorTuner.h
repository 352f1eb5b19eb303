/// PICTURE_FACTORY_COLOR_TUNER: the factory's offsets of the colour axes per source, picture mode and dynamic range.
#pragma once

#include <dataModule/common/FactoryPictureEvents.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/fileOperator/CategoryOperator.h>

namespace td {

class DATAMODULE_API FileFactoryPictureColorTuner
    : public CategoryOperator<FileFactoryPictureColorTuner, _factory_Pic_Color_Tuner, FactoryPictureColorTunerEvent,
                              4> {
public:
    FileFactoryPictureColorTuner();
    static const CategoryLayout& layout();
};

} // namespace td
