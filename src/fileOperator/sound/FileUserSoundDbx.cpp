#include <dataModule/fileOperator/FileUserSoundDbx.h>

#include "fileOperator/Axes.h"
#include "fileOperator/sound/SoundAxes.h"
#include "fileOperator/sound/SoundGlobalFlag.h"

namespace td {

FileUserSoundDbx::FileUserSoundDbx() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserSoundDbx::layout() {
    using Record = _UsrSoundDbx_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_DBX,
        .file = "sound_dbx_usr.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the sound DBX data for user sound",
        .dimensions = {axis::source("source       scope:0~16"), axis::soundMode("soundmode    scope:0~7")},
        .fields = {{"Sonic", &Record::sonic}, {"Surroud", &Record::surround}, {"Volume", &Record::volume}},
        .applyToAllSources = {.axes = axisBit(0)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

bool FileUserSoundDbx::loadFlagFromGlobalFile() {
    return applyModeToSource(parent());
}

} // namespace td
