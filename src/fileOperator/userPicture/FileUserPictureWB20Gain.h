/// PICTURE_WB_20_GAIN: the gain of 20 points per source and picture mode.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureWB20Gain
    : public CategoryOperator<FileUserPictureWB20Gain, _Usr_Pic_Wb_20_Gain, UserPictureWB20GainEvent, 3> {
public:
    FileUserPictureWB20Gain();
    static const CategoryLayout& layout();
};

} // namespace td
