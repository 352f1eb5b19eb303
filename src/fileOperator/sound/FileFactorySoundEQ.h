/// SOUND_EQ_WALLMOUNT: the equaliser while the set hangs on a wall, per source and sound mode.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileFactorySoundEQ
    : public CategoryOperator<FileFactorySoundEQ, _FactorySoundEQ_t, FactorySoundEQEvent, 2> {
public:
    FileFactorySoundEQ();
    static const CategoryLayout& layout();
};

} // namespace td
