/// SOUND_AVC: automatic volume control per source and sound mode.
#pragma once

#include <dataModule/common/SoundEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/SoundRecords.h>

namespace td {

class DATAMODULE_API FileFactorySoundAVC
    : public CategoryOperator<FileFactorySoundAVC, _FactorySoundAVC_t, FactorySoundAVCEvent, 2> {
public:
    FileFactorySoundAVC();
    static const CategoryLayout& layout();
    /// Whether a change of one source's sound mode settings is for all sources; see applyModeToSource().
    bool loadFlagFromGlobalFile();
};

} // namespace td
