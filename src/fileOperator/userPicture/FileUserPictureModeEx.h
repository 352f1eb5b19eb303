/// PICTURE_MODE_EX: what was added to PICTURE_MODE later, for the same sources, modes and ranges.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureModeEx
    : public CategoryOperator<FileUserPictureModeEx, _UsrPicModeEx_t, UserPictureModeExEvent, 3> {
public:
    FileUserPictureModeEx();
    static const CategoryLayout& layout();
};

} // namespace td
