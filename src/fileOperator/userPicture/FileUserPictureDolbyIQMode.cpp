#include <dataModule/fileOperator/FileUserPictureDolbyIQMode.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

namespace {

constexpr const char* CONTENT_TYPES[] = {
    "CONTENT_TYPE_DEFAULT", "CONTENT_TYPE_MOVIE",    "CONTENT_TYPE_GAME",     "CONTENT_TYPE_SPORT",
    "CONTENT_TYPE_UGC",     "CONTENT_TYPE_EPISODIC", "CONTENT_TYPE_GRAPHICS", "CONTENT_TYPE1",
    "CONTENT_TYPE2",        "CONTENT_TYPE3",         "CONTENT_TYPE4",         "CONTENT_TYPE5",
    "CONTENT_TYPE6",        "CONTENT_TYPE7",         "CONTENT_TYPE8",         "CONTENT_TYPE9"};

Dimension contentType() {
    return {.name = "contenttype",
            .heading = "contenttype  scope:0~15",
            .count = 16,
            .valueNames = CONTENT_TYPES,
            .digits = DigitForm::Character};
}

} // namespace

FileUserPictureDolbyIQMode::FileUserPictureDolbyIQMode() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureDolbyIQMode::layout() {
    using Record = _UserPicDolbyIQ_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_USER_DOLBY_IQ_MODE,
        .file = "pic_dolbyiq_mode_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the dolby iq mode data for user picture",
        .dimensions = {contentType()},
        .fields = {{"DolbyIQ_memc", &Record::memc},
                   {"DolbyIQ_nr", &Record::noiseReduction},
                   {"DolbyIQ_sharpness", &Record::sharpness},
                   {"DolbyIQ_mpegnc", &Record::mpegNoiseCleaning}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
