/// SOUND_CURVE: the volume curve and prescales per source.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileFactorySoundCurve
    : public CategoryOperator<FileFactorySoundCurve, _FactorySoundCurve_t, FactorySoundCurveEvent, 1> {
public:
    FileFactorySoundCurve();
    static const CategoryLayout& layout();
};

} // namespace td
