/// SOUND_GLOBAL_FACTORY: the factory's filters and dynamic range control; one record.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileFactorySoundGlobal
    : public CategoryOperator<FileFactorySoundGlobal, int[SND_FACTORY_GLOBAL_FIELD_COUNT], FactorySoundGlobalEvent, 0> {
public:
    FileFactorySoundGlobal();
    static const CategoryLayout& layout();
};

} // namespace td
