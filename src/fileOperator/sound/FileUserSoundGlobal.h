/// SOUND_GLOBAL: the user's sound settings that are not tied to a source; one record.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileUserSoundGlobal
    : public CategoryOperator<FileUserSoundGlobal, int[SND_GLOBAL_FIELD_COUNT], UserSoundGlobalEvent, 0> {
public:
    FileUserSoundGlobal();
    static const CategoryLayout& layout();
};

} // namespace td
