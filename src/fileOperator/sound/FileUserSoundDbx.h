/// SOUND_DBX: the user's DBX settings per source and sound mode.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileUserSoundDbx
    : public CategoryOperator<FileUserSoundDbx, _UsrSoundDbx_t, UserSoundDbxEvent, 2> {
public:
    FileUserSoundDbx();
    static const CategoryLayout& layout();
    /// Whether a change of one source's sound mode settings is for all sources; see applyModeToSource().
    bool loadFlagFromGlobalFile();
};

} // namespace td
