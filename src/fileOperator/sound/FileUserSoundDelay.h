/// SOUND_DELAY: lip-sync and digital output delays per source and video timing.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileUserSoundDelay
    : public CategoryOperator<FileUserSoundDelay, _UsrSoundDelay_t, UserSoundDelayEvent, 2> {
public:
    FileUserSoundDelay();
    static const CategoryLayout& layout();
};

} // namespace td
