/// SOUND_AMP: register data per amplifier and register.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileFactorySoundAMP
    : public CategoryOperator<FileFactorySoundAMP, _FactorySoundAMP_t, FactorySoundAMPEvent, 2> {
public:
    FileFactorySoundAMP();
    static const CategoryLayout& layout();
};

} // namespace td
