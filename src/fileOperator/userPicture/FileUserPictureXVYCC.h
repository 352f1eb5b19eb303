/// PICTURE_XVYCC: the points of each xvYCC colour-space matrix.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureXVYCC
    : public CategoryOperator<FileUserPictureXVYCC, _Usr_Pic_XVYCC, UserPictureXVYCCEvent, 1> {
public:
    FileUserPictureXVYCC();
    static const CategoryLayout& layout();
};

} // namespace td
