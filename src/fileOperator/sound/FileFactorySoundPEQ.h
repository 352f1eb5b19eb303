/// SOUND_PEQ: the sixteen bands of the parametric equaliser.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileFactorySoundPEQ
    : public CategoryOperator<FileFactorySoundPEQ, _FactorySoundPEQ_t, FactorySoundPEQEvent, 1> {
public:
    FileFactorySoundPEQ();
    static const CategoryLayout& layout();
};

} // namespace td
