/// PICTURE_USER_DOLBY_IQ_MODE: the picture processing levels per content type that Dolby IQ metadata states.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureDolbyIQMode
    : public CategoryOperator<FileUserPictureDolbyIQMode, _UserPicDolbyIQ_t, UserPictureDolbyIQModeEvent, 1> {
public:
    FileUserPictureDolbyIQMode();
    static const CategoryLayout& layout();
};

} // namespace td
