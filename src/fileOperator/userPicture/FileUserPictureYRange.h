/// PICTURE_YRANGE: the luminance range per source, picture mode and dynamic-range type.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureYRange
    : public CategoryOperator<FileUserPictureYRange, _Usr_Pic_YRange_, UserPictureYRangeEvent, 3> {
public:
    FileUserPictureYRange();
    static const CategoryLayout& layout();
};

} // namespace td
