#include <dataModule/fileOperator/FileUserSoundDTS.h>

#include "fileOperator/Axes.h"
#include "fileOperator/sound/SoundAxes.h"
#include "fileOperator/sound/SoundGlobalFlag.h"

namespace td {

FileUserSoundDTS::FileUserSoundDTS() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserSoundDTS::layout() {
    using Record = _UsrSoundDTS_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_DTS,
        .file = "sound_dts_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the sound DTS data for user sound",
        .dimensions = {axis::source("source       scope:0~16"), axis::soundMode("soundmode    scope:0~7")},
        .fields = {{"BassBoost", &Record::bassBoost},
                   {"SurroundSound", &Record::surroundSound},
                   {"DialogClarity", &Record::dialogClarity},
                   {"TruVolume", &Record::truVolume}},
        .applyToAllSources = {.axes = axisBit(0)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

bool FileUserSoundDTS::loadFlagFromGlobalFile() {
    return applyModeToSource(parent());
}

} // namespace td
