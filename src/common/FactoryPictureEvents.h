/// One event class per factory picture category, in category order; see RecordEvent.h.
#pragma once

#include <dataModule/common/RecordEvent.h>
#include <dataModule/FactoryPictureRecords.h>

namespace td {

class FileFactoryPictureAspect;
class FileFactoryPictureBacklightCurve;
class FileFactoryPictureColorTuner;
class FileFactoryPictureCurve;
class FileFactoryPictureOverScan;
class FileFactoryPictureScaling;
class FileFactoryPictureScalingPIP;
class FileFactoryPictureScalingPIPPos;
class FileFactoryPictureWB;
class FileFactoryPictureWB20Gain;
class FileFactoryPictureWB20GainIndex;
class FileFactoryPictureWB20Point;
class FileFactoryPictureWB20PointIndex;
class FileFactoryPictureWBShift;

class DATAMODULE_API FactoryPictureWBEvent : public RecordEvent<FileFactoryPictureWB, _factory_pic_wb> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureCurveEvent : public RecordEvent<FileFactoryPictureCurve, _Factory_Pic_Curve> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureOverScanEvent
    : public RecordEvent<FileFactoryPictureOverScan, _FactoryPicOverscan_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureAspectEvent : public RecordEvent<FileFactoryPictureAspect, _FactoryPicAspect_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureScalingEvent : public RecordEvent<FileFactoryPictureScaling, _FactoryPicScaling_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureScalingPIPEvent
    : public RecordEvent<FileFactoryPictureScalingPIP, _FactoryPicScalingPIP_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureScalingPIPPosEvent
    : public RecordEvent<FileFactoryPictureScalingPIPPos, _FactoryPicScalingPIPPos_t> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureBacklightCurveEvent
    : public RecordEvent<FileFactoryPictureBacklightCurve, _Factory_Pic_Curve> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureColorTunerEvent
    : public RecordEvent<FileFactoryPictureColorTuner, _factory_Pic_Color_Tuner> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureWBShiftEvent : public RecordEvent<FileFactoryPictureWBShift, _factory_pic_wb_shift> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureWB20GainEvent : public RecordEvent<FileFactoryPictureWB20Gain, _Fac_Pic_Wb_20_Gain> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureWB20GainIndexEvent
    : public RecordEvent<FileFactoryPictureWB20GainIndex, _Fac_Pic_Wb_20_Gain_Index> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureWB20PointEvent
    : public RecordEvent<FileFactoryPictureWB20Point, _Fac_Pic_Wb_20_Point> {
    using RecordEvent::RecordEvent;
};
class DATAMODULE_API FactoryPictureWB20PointIndexEvent
    : public RecordEvent<FileFactoryPictureWB20PointIndex, _Fac_Pic_Wb_20_Point_Index> {
    using RecordEvent::RecordEvent;
};

} // namespace td
