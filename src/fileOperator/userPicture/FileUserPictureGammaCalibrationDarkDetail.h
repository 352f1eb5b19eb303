/// PICTURE_GAMMA_CALIBRATION_DARK_DETAIL: the gains of the dark part of the gamma curve per HDR type.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureGammaCalibrationDarkDetail
    : public CategoryOperator<FileUserPictureGammaCalibrationDarkDetail, _Usr_Pic_DarkDetail_20_Gain,
                              UserPictureGammaCalibrationDarkDetailEvent, 2> {
public:
    FileUserPictureGammaCalibrationDarkDetail();
    static const CategoryLayout& layout();
};

} // namespace td
