/// PICTURE_USER_CCT_WB: the white-balance compensation per colour-temperature level.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureCCTWB
    : public CategoryOperator<FileUserPictureCCTWB, _UserCCTWB_t, UserPictureCCTWBEvent, 1> {
public:
    FileUserPictureCCTWB();
    static const CategoryLayout& layout();
};

} // namespace td
