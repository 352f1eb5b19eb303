#include <dataModule/fileOperator/FileUserSoundDelay.h>

#include "fileOperator/Axes.h"

namespace td {

namespace {

constexpr const char* TIMINGS[] = {"TIMING_480P", "TIMING_480I",  "TIMING_576P",  "TIMING_576I", "TIMING_720P",
                                   "TIMING_720I", "TIMING_1080P", "TIMING_1080I", "TIMING_4K2K"};

} // namespace

FileUserSoundDelay::FileUserSoundDelay() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserSoundDelay::layout() {
    using Record = _UsrSoundDelay_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_DELAY,
        .file = "sound_delay_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the sound delay data for user sound",
        .dimensions = {axis::source("source       scope:0~16"),
                       {.name = "timing",
                        .heading = "timing       scope:0~8",
                        .count = 9,
                        .valueNames = TIMINGS,
                        .digits = DigitForm::Character}},
        .fields = {{"LipSync", &Record::lipSync},
                   {"SpdifDelay", &Record::spdifDelay},
                   {"LipSyncOffset", &Record::lipSyncOffset},
                   {"SpdifDelayOffset", &Record::spdifDelayOffset}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
    };
    return layout;
}

} // namespace td
