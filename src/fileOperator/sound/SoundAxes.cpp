#include "fileOperator/sound/SoundAxes.h"

namespace td::axis {

namespace {

constexpr const char* SOUND_MODES[] = {"STANDARD", "SPEECH", "LATE NIGHT",   "MUSIC",
                                       "THREATER", "SPORTS", "CONCERT HALL", "USER"};

} // namespace

Dimension soundMode(const char* heading) {
    return {.name = "soundmode", .heading = heading, .count = 8, .valueNames = SOUND_MODES};
}

} // namespace td::axis
