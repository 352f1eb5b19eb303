/// PICTURE_ENHANCED_VIEWING_ANGLE: the switches of the enhanced viewing angle per picture mode and dynamic range.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureEnhancedViewingAngle
    : public CategoryOperator<FileUserPictureEnhancedViewingAngle, _UsrPicEnhancedViewingAngle_t,
                              UserPictureEnhancedViewingAngleEvent, 2> {
public:
    FileUserPictureEnhancedViewingAngle();
    static const CategoryLayout& layout();
};

} // namespace td
