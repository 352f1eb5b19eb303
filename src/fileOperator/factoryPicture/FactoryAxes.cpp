#include "fileOperator/factoryPicture/FactoryAxes.h"

namespace td::axis {

namespace {

constexpr const char* BINS[] = {"BIN1", "BIN2", "BIN3", "BIN4", "BIN5", "BIN6"};

constexpr const char* FACTORY_DYNAMIC_RANGES[] = {
    "SDR_FHD",        "SDR_UHD",       "HDR_10_FHD",          "HDR_10_UHD",
    "HDR_HLG_FHD",    "HDR_HLG_UHD",   "HDR_DolbyVision_FHD", "HDR_DolbyVision_UHD",
    "HDR_10PLUS_FHD", "HDR_10PLUS_UHD"};

constexpr const char* SIGNALS[] = {"2D", "3D"};

constexpr const char* COLOUR_TEMPERATURES[] = {"COOL", "NORMAL", "WARM1", "WARM2", "STANDARD_709", "WARM1_P3"};

} // namespace

Dimension bin(const char* heading) {
    return {.name = "bin", .heading = heading, .count = 6, .valueNames = BINS};
}

Dimension factoryDynamicRange(const char* heading) {
    return {.name = "dr", .heading = heading, .count = 10, .valueNames = FACTORY_DYNAMIC_RANGES};
}

Dimension signal(const char* heading) {
    return {.name = "sig", .heading = heading, .count = 2, .valueNames = SIGNALS};
}

Dimension colourTemperature(const char* heading) {
    return {.name = "colortemperature", .heading = heading, .count = 6, .valueNames = COLOUR_TEMPERATURES};
}

} // namespace td::axis
