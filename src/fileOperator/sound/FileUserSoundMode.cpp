#include <dataModule/fileOperator/FileUserSoundMode.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserSoundMode::FileUserSoundMode() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserSoundMode::layout() {
    using Record = _UsrSoundMode_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_MODE,
        .file = "sound_mode_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the sound mode data for user sound",
        .dimensions = {axis::source("source       scope:0~16")},
        .fields = {{"SoundMode", &Record::soundMode}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
