#include <dataModule/fileOperator/FileUserPictureLowBlueLight.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* COLOUR_TEMPERATURES[] = {"COOL", "NORMAL", "WARM1", "WARM2"};
constexpr const char* FILTER_LEVELS[] = {"OFF", "LOW", "NORMAL", "STRONG", "VERY STRONG"};

Dimension colourTemperature() {
    return {.name = "colortemp", .heading = "colortemp    scope:0~3", .count = 4, .valueNames = COLOUR_TEMPERATURES};
}

Dimension filterLevel() {
    return {.name = "level", .heading = "level        scope:0~4", .count = 5, .valueNames = FILTER_LEVELS};
}

} // namespace

FileUserPictureLowBlueLight::FileUserPictureLowBlueLight() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureLowBlueLight::layout() {
    using Record = _Usr_Pic_Low_Blue_Light;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_LOW_BLUE_LIGHT,
        .file = "pic_low_blue_light_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the low blue light data for user",
        .dimensions = {colourTemperature(), filterLevel()},
        .fields = {{"RGain", &Record::rGain, 0, nullptr, "Lowbluelightrgain"},
                   {"GGain", &Record::gGain, 0, nullptr, "Lowbluelightggain"},
                   {"BGain", &Record::bGain, 0, nullptr, "Lowbluelightbgain"}},
        .mergeNames = MergeNames::Arguments,
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
