/// PICTURE_USER_LIGHT_SENSOR_LEVEL: how the picture follows the ambient light, per light-sensor level.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureLightSensorShift
    : public CategoryOperator<FileUserPictureLightSensorShift, _UserLightSensorShift_t,
                              UserPictureLightSensorShiftEvent, 1> {
public:
    FileUserPictureLightSensorShift();
    static const CategoryLayout& layout();
};

} // namespace td
