#include <dataModule/fileOperator/FileUserSoundEQ.h>

#include "fileOperator/Axes.h"
#include "fileOperator/sound/SoundAxes.h"
#include "fileOperator/sound/SoundGlobalFlag.h"

namespace td {

FileUserSoundEQ::FileUserSoundEQ() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserSoundEQ::layout() {
    using Record = _UsrSoundEQ_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_EQ,
        .file = "sound_eq_usr.ini",
        .version = "v0.3",
        .purpose = "The file is used to define the sound EQ data for user sound",
        .dimensions = {axis::source("source       scope:0~16"), axis::soundMode("soundmode    scope:0~7")},
        .fields = {{"100HZ", &Record::band100Hz},
                   {"250HZ", &Record::band250Hz},
                   {"600HZ", &Record::band600Hz},
                   {"1KHZ", &Record::band1kHz},
                   {"2500HZ", &Record::band2500Hz},
                   {"6KHZ", &Record::band6kHz},
                   {"10KHZ", &Record::band10kHz}},
        .applyToAllSources = {.axes = axisBit(0)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

bool FileUserSoundEQ::loadFlagFromGlobalFile() {
    return applyModeToSource(parent());
}

} // namespace td
