/// PICTURE_WB_20_GAIN_IDX: the point of PICTURE_WB_20_GAIN being edited, per source and picture mode.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureWB20GainIndex
    : public CategoryOperator<FileUserPictureWB20GainIndex, _Usr_Pic_Wb_20_Gain_Index, UserPictureWB20GainIndexEvent,
                              2> {
public:
    FileUserPictureWB20GainIndex();
    static const CategoryLayout& layout();
};

} // namespace td
