#include <dataModule/fileOperator/FileUserPictureDolbyIQIntentedWhitePoint.h>

#include "fileOperator/Axes.h"

namespace td {

FileUserPictureDolbyIQIntentedWhitePoint::FileUserPictureDolbyIQIntentedWhitePoint() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureDolbyIQIntentedWhitePoint::layout() {
    using Record = _UserPicDolbyIQIntentedWhitePoint_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT,
        .file = "pic_dolbyiq_intented_wp_usr.ini",
        .version = "v0.1",
        .purpose = "The file is used to define the dolby iq white point for user",
        .dimensions = {axis::level(16, "level        scope:0~15")},
        .fields = {{"DolbyIQ_rgain", &Record::rGain},
                   {"DolbyIQ_ggain", &Record::gGain},
                   {"DolbyIQ_bgain", &Record::bGain},
                   {"DolbyIQ_roffset", &Record::rOffset},
                   {"DolbyIQ_goffset", &Record::gOffset},
                   {"DolbyIQ_boffset", &Record::bOffset}},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
