/// PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN: the white-balance gain of 20 points per light-sensor level.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureLightSensorWB20Gain
    : public CategoryOperator<FileUserPictureLightSensorWB20Gain, _Usr_Pic_Light_Sensor_Wb_20_Gain,
                              UserPictureLightSensorWB20GainEvent, 2> {
public:
    FileUserPictureLightSensorWB20Gain();
    static const CategoryLayout& layout();
};

} // namespace td
