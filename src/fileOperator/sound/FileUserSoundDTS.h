/// SOUND_DTS: the user's DTS settings per source and sound mode.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileUserSoundDTS
    : public CategoryOperator<FileUserSoundDTS, _UsrSoundDTS_t, UserSoundDTSEvent, 2> {
public:
    FileUserSoundDTS();
    static const CategoryLayout& layout();
    /// Whether a change of one source's sound mode settings is for all sources; see applyModeToSource().
    bool loadFlagFromGlobalFile();
};

} // namespace td
