#include <dataModule/fileOperator/FileUserSoundGlobal.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

FileUserSoundGlobal::FileUserSoundGlobal() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserSoundGlobal::layout() {
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_GLOBAL,
        .file = "sound_global_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the global data for user sound",
        // The file's order; the headphone mode comes later in it than in the record.
        .fields = {{"Volume", SND_GLOBAL_VOLUME},
                   {"Balance", SND_GLOBAL_BALANCE},
                   {"Spdif", SND_GLOBAL_SPDIF},
                   {"Speaker", SND_GLOBAL_SPEAKER},
                   {"HeadPhoneVolume", SND_GLOBAL_HEADPHONE_VOLUME},
                   {"AudioOut", SND_GLOBAL_AUDIO_OUT},
                   {"AudioDescriptionEnable", SND_GLOBAL_AUDIO_DESCRIPTION_ENABLE},
                   {"AudioDescriptionOutDev", SND_GLOBAL_AUDIO_DESCRIPTION_OUT_DEV},
                   {"AudioDescriptionVolume", SND_GLOBAL_AUDIO_DESCRIPTION_VOLUME},
                   {"HeadPhoneMode", SND_GLOBAL_HEADPHONE_MODE},
                   {"WallMount", SND_GLOBAL_WALL_MOUNT},
                   {"BT_Volume", SND_GLOBAL_BT_VOLUME},
                   {"ApplyModeToSource", SND_GLOBAL_APPLY_MODE_TO_SOURCE},
                   {"DolbyAtmosEnable", SND_GLOBAL_DOLBY_ATMOS_ENABLE},
                   {"BT_HeadphoneVolume", SND_GLOBAL_BT_HEADPHONE_VOLUME},
                   {"EArcSwitchValue", SND_GLOBAL_EARC_SWITCH_VALUE},
                   {"SelectSoundEffect", SND_GLOBAL_SELECT_SOUND_EFFECT},
                   {"BassVolume", SND_GLOBAL_BASS_VOLUME},
                   {"BTWithSpeaker", SND_GLOBAL_BT_WITH_SPEAKER},
                   {"WavesSwitch", SND_GLOBAL_WAVES_SWITCH},
                   {"SoundDevice", SND_GLOBAL_SOUND_DEVICE},
                   {"TopVolume", SND_GLOBAL_TOP_VOLUME},
                   {"CenterVolume", SND_GLOBAL_CENTER_VOLUME}},
    };
    return layout;
}

} // namespace td
