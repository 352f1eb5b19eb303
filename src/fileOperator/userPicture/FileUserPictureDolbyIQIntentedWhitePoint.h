/// PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT: the white balance per intended white point that Dolby IQ metadata
/// states.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureDolbyIQIntentedWhitePoint
    : public CategoryOperator<FileUserPictureDolbyIQIntentedWhitePoint, _UserPicDolbyIQIntentedWhitePoint_t,
                              UserPictureDolbyIQIntentedWhitePointEvent, 1> {
public:
    FileUserPictureDolbyIQIntentedWhitePoint();
    static const CategoryLayout& layout();
};

} // namespace td
