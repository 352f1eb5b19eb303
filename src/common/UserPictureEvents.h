/// One event class per user picture category: an event that carries the record as it was when it was stored.
#pragma once

#include <dataModule/common/RecordEvent.h>
#include <dataModule/UserPictureRecords.h>

namespace td {

class FileUserPictureBacklightWB;
class FileUserPictureCCTWB;
class FileUserPictureColorTuner;
class FileUserPictureContentDetect;
class FileUserPictureDolbyIQIntentedWhitePoint;
class FileUserPictureDolbyIQMode;
class FileUserPictureEnhancedViewingAngle;
class FileUserPictureGammaCalibrationDarkDetail;
class FileUserPictureGlobal;
class FileUserPictureLightSensorPLC;
class FileUserPictureLightSensorShift;
class FileUserPictureLightSensorWB20Gain;
class FileUserPictureLowBlueLight;
class FileUserPictureMode;
class FileUserPictureModeEx;
class FileUserPictureModeSelf;
class FileUserPictureSourceOnly;
class FileUserPictureWB10Point;
class FileUserPictureWB10PointIndex;
class FileUserPictureWB20Gain;
class FileUserPictureWB20GainIndex;
class FileUserPictureWB20Point;
class FileUserPictureWB20PointIndex;
class FileUserPictureWB2Point;
class FileUserPictureXVYCC;
class FileUserPictureYRange;

class DATAMODULE_API UserPictureGlobalEvent : public GlobalEvent<FileUserPictureGlobal, PIC_GLOBAL_FIELD_COUNT> {
    using GlobalEvent::GlobalEvent;
};
class DATAMODULE_API UserPictureModeEvent : public RecordEvent<FileUserPictureMode, _UsrPicMode_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureSourceOnlyEvent : public RecordEvent<FileUserPictureSourceOnly, _Usr_Pic_Source_Only_> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureModeSelfEvent : public RecordEvent<FileUserPictureModeSelf, _UsrPicModeSelf_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureModeExEvent : public RecordEvent<FileUserPictureModeEx, _UsrPicModeEx_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureColorTunerEvent : public RecordEvent<FileUserPictureColorTuner, _Usr_Pic_Color_Tuner> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureWB2PointEvent : public RecordEvent<FileUserPictureWB2Point, _Usr_Pic_Wb_2_Point> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureWB10PointIndexEvent
    : public RecordEvent<FileUserPictureWB10PointIndex, _Usr_Pic_Wb_10_Point_Index> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureWB10PointEvent : public RecordEvent<FileUserPictureWB10Point, _Usr_Pic_Wb_10_Point> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureYRangeEvent : public RecordEvent<FileUserPictureYRange, _Usr_Pic_YRange_> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureWB20PointEvent : public RecordEvent<FileUserPictureWB20Point, _Usr_Pic_Wb_20_Point> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureWB20PointIndexEvent
    : public RecordEvent<FileUserPictureWB20PointIndex, _Usr_Pic_Wb_20_Point_Index> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureWB20GainEvent : public RecordEvent<FileUserPictureWB20Gain, _Usr_Pic_Wb_20_Gain> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureWB20GainIndexEvent
    : public RecordEvent<FileUserPictureWB20GainIndex, _Usr_Pic_Wb_20_Gain_Index> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureLowBlueLightEvent
    : public RecordEvent<FileUserPictureLowBlueLight, _Usr_Pic_Low_Blue_Light> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureContentDetectEvent
    : public RecordEvent<FileUserPictureContentDetect, _Usr_Pic_Content_Detect_> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureEnhancedViewingAngleEvent
    : public RecordEvent<FileUserPictureEnhancedViewingAngle, _UsrPicEnhancedViewingAngle_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureDolbyIQModeEvent : public RecordEvent<FileUserPictureDolbyIQMode, _UserPicDolbyIQ_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureDolbyIQIntentedWhitePointEvent
    : public RecordEvent<FileUserPictureDolbyIQIntentedWhitePoint, _UserPicDolbyIQIntentedWhitePoint_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureLightSensorShiftEvent
    : public RecordEvent<FileUserPictureLightSensorShift, _UserLightSensorShift_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureLightSensorWB20GainEvent
    : public RecordEvent<FileUserPictureLightSensorWB20Gain, _Usr_Pic_Light_Sensor_Wb_20_Gain> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureLightSensorPLCEvent
    : public RecordEvent<FileUserPictureLightSensorPLC, _UserLightSensorPlc_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureXVYCCEvent : public RecordEvent<FileUserPictureXVYCC, _Usr_Pic_XVYCC> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureBacklightWBEvent : public RecordEvent<FileUserPictureBacklightWB, _UserBacklightWB_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureCCTWBEvent : public RecordEvent<FileUserPictureCCTWB, _UserCCTWB_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API UserPictureGammaCalibrationDarkDetailEvent
    : public RecordEvent<FileUserPictureGammaCalibrationDarkDetail, _Usr_Pic_DarkDetail_20_Gain> {
    using RecordEvent::RecordEvent;
};

} // namespace td
