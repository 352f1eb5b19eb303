/// SOUND_EQ: the user's equaliser per source and sound mode.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileUserSoundEQ : public CategoryOperator<FileUserSoundEQ, _UsrSoundEQ_t, UserSoundEQEvent, 2> {
public:
    FileUserSoundEQ();
    static const CategoryLayout& layout();
    /// Whether a change of one source's sound mode settings is for all sources; see applyModeToSource().
    bool loadFlagFromGlobalFile();
};

} // namespace td
