/// PICTURE_COLOR_TUNER: the adjustment of each tuned colour per source, picture mode and dynamic range.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureColorTuner
    : public CategoryOperator<FileUserPictureColorTuner, _Usr_Pic_Color_Tuner, UserPictureColorTunerEvent, 4> {
public:
    FileUserPictureColorTuner();
    static const CategoryLayout& layout();
};

} // namespace td
