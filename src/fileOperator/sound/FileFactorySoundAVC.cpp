#include <dataModule/fileOperator/FileFactorySoundAVC.h>

#include "fileOperator/Axes.h"
#include "fileOperator/sound/SoundAxes.h"
#include "fileOperator/sound/SoundGlobalFlag.h"

namespace td {

FileFactorySoundAVC::FileFactorySoundAVC() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactorySoundAVC::layout() {
    using Record = _FactorySoundAVC_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_AVC,
        .file = "sound_avc_factory.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the sound AVC data for user sound",
        .dimensions = {axis::source("source       scope:0~16"), axis::soundMode("soundmode    scope:0~7")},
        .fields = {{"AvcEnable", &Record::avcEnable},
                   {"AvcMode", &Record::avcMode},
                   {"AvcLevel", &Record::avcLevel},
                   {"AttackTime", &Record::attackTime},
                   {"ReleaseTime", &Record::releaseTime}},
        .applyToAllSources = {.axes = axisBit(0)},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
        .restoresFromCurrent = false,
    };
    return layout;
}

bool FileFactorySoundAVC::loadFlagFromGlobalFile() {
    return applyModeToSource(parent());
}

} // namespace td
