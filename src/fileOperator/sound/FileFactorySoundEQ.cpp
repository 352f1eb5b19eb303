#include <dataModule/fileOperator/FileFactorySoundEQ.h>

#include "fileOperator/Axes.h"
#include "fileOperator/sound/SoundAxes.h"

namespace td {

FileFactorySoundEQ::FileFactorySoundEQ() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactorySoundEQ::layout() {
    using Record = _FactorySoundEQ_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_EQ_WALLMOUNT,
        .file = "sound_eq_wallmount.ini",
        .version = "v0.3",
        .purpose = "The file is used to define the sound EQ data for wall mount",
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
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
