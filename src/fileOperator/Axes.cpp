#include "fileOperator/Axes.h"

namespace td::axis {

namespace {

constexpr const char* SOURCES[] = {"ATV", "DTV", "AV",    "COMPONENT", "HDMI1",   "HDMI2",   "HDMI3", "HDMI4",
                                   "DMP", "VGA", "SCART", "NETWORK",   "NETFLIX", "YOUTUBE", "VUDU",  "AMAZON"};

constexpr const char* PICTURE_MODES[] = {
    "VIVID",          "STANDARD",           "ENERGY SAVING",      "MOVIE",           "GAME",
    "SPORT",          "CALIBRATED",         "FILMMAKER_GRAPHICS", "FILMMAKER_PHOTO", "FILMMAKER_CINEMA",
    "FILMMAKER_GAME", "FILMMAKER_RESERVEDA"};

constexpr const char* USER_DYNAMIC_RANGES[] = {
    "SDR_FHD",         "SDR_UHD",        "HDR_OTHER_FHD", "HDR_OTHER_UHD", "HDR_DolbyVision_FHD", "HDR_DolbyVision_UHD",
    "HDR_10_PLUS_FHD", "HDR_10_PLUS_UHD"};

constexpr const char* DYNAMIC_RANGES[] = {"SDR", "HDR_OTHER", "Dolby Vision", "HDR_10PLUS"};

constexpr const char* TUNED_COLOURS[] = {"MAGENTA", "RED", "YELLOW", "GREEN", "CYAN", "BLUE", "FLESH TON"};

constexpr const char* LEVELS[] = {"LEVEL0",  "LEVEL1",  "LEVEL2",  "LEVEL3",  "LEVEL4",  "LEVEL5",  "LEVEL6",
                                  "LEVEL7",  "LEVEL8",  "LEVEL9",  "LEVEL10", "LEVEL11", "LEVEL12", "LEVEL13",
                                  "LEVEL14", "LEVEL15", "LEVEL16", "LEVEL17", "LEVEL18", "LEVEL19"};

constexpr const char* LIGHT_SENSOR_LEVELS[] = {"LS_lEVEL1", "LS_lEVEL2", "LS_lEVEL3", "LS_lEVEL4",
                                               "LS_lEVEL5", "LS_lEVEL6", "LS_lEVEL7", "LS_lEVEL8"};

} // namespace

Dimension source(const char* heading) {
    return {.name = "source", .heading = heading, .count = 16, .valueNames = SOURCES};
}

Dimension pictureMode(const char* heading) {
    return {.name = "picturemode", .heading = heading, .count = 12, .valueNames = PICTURE_MODES};
}

Dimension userDynamicRange(const char* heading) {
    return {.name = "dr", .heading = heading, .count = 8, .valueNames = USER_DYNAMIC_RANGES};
}

Dimension dynamicRange(const char* heading) {
    return {.name = "dr", .heading = heading, .count = 4, .valueNames = DYNAMIC_RANGES};
}

Dimension tunedColour(const char* heading) {
    return {.name = "colortune_mode", .heading = heading, .count = 7, .valueNames = TUNED_COLOURS};
}

Dimension level(int count, const char* heading) {
    Dimension dimension{.name = "level", .heading = heading, .count = count, .digits = DigitForm::Character};
    dimension.valueNames.texts = LEVELS;
    dimension.valueNames.count = count;
    return dimension;
}

Dimension hexadecimalLevel(int count, int listed, const char* heading) {
    Dimension dimension = level(listed, heading);
    dimension.count = count;
    dimension.digits = DigitForm::Hexadecimal;
    return dimension;
}

Dimension lightSensorLevel(const char* heading) {
    return {.name = "lightsensor", .heading = heading, .count = 8, .valueNames = LIGHT_SENSOR_LEVELS};
}

} // namespace td::axis
