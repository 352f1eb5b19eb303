/// SOUND_MODE: the sound mode chosen per source.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileUserSoundMode
    : public CategoryOperator<FileUserSoundMode, _UsrSoundMode_t, UserSoundModeEvent, 1> {
public:
    FileUserSoundMode();
    static const CategoryLayout& layout();
};

} // namespace td
