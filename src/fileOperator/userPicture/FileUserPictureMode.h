/// PICTURE_MODE: the user's picture mode values per source, picture mode and dynamic range.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureMode
    : public CategoryOperator<FileUserPictureMode, _UsrPicMode_t, UserPictureModeEvent, 3> {
public:
    FileUserPictureMode();
    static const CategoryLayout& layout();
};

} // namespace td
