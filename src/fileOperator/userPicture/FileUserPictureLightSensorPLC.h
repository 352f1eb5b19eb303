/// PICTURE_USER_LIGHT_SENSOR_PLC_POINT: the PLC curve per light-sensor level.
#pragma once

#include <dataModule/common/UserPictureEvents.h>
#include <dataModule/fileOperator/CategoryOperator.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class DATAMODULE_API FileUserPictureLightSensorPLC
    : public CategoryOperator<FileUserPictureLightSensorPLC, _UserLightSensorPlc_t, UserPictureLightSensorPLCEvent, 1> {
public:
    FileUserPictureLightSensorPLC();
    static const CategoryLayout& layout();
};

} // namespace td
