/// The records of the factory picture categories: one integer per field, in record order. Values are what the key lines
/// hold: -999 to 9999; wider ones are kept in memory but never written.
#pragma once

namespace td {

/// PICTURE_FACTORY_WB: the two-point white balance of one panel bin, source, dynamic range, signal and colour
/// temperature.
struct _factory_pic_wb {
    int rGain;
    int gGain;
    int bGain;
    int rOffset;
    int gOffset;
    int bOffset;
};

/// PICTURE_FACTORY_WB_SHIFT: what is added to the white balance of the same indices.
struct _factory_pic_wb_shift {
    int rGainShift;
    int gGainShift;
    int bGainShift;
    int rOffsetShift;
    int gOffsetShift;
    int bOffsetShift;
};

/// PICTURE_FACTORY_WB_20_POINT: the corrections of one calibration point of a source and picture mode.
struct _Fac_Pic_Wb_20_Point {
    int red;
    int green;
    int blue;
};

/// PICTURE_FACTORY_WB_20_POINT_IDX: how the points of a source and picture mode are used.
struct _Fac_Pic_Wb_20_Point_Index {
    int enable; ///< whether the points apply
    int level;  ///< a calibration point, 0 to 19
};

/// PICTURE_FACTORY_WB_20_GAIN: the gain of one calibration point of a source and picture mode.
struct _Fac_Pic_Wb_20_Gain {
    int gainValue;
};

/// PICTURE_FACTORY_WB_20_GAIN_IDX: which gain of a source and picture mode is selected.
struct _Fac_Pic_Wb_20_Gain_Index {
    int gainLevel; ///< a point of the gain table
};

/// PICTURE_FACTORY_ASPECT: the scaler's windows for one aspect conversion. Starts and active sizes are horizontal and
/// vertical; the input window is cropped from the source, the output window is on the panel.
struct _FactoryPicAspect_t {
    int inputHStart;
    int inputVStart;
    int inputHActive;
    int inputVActive;
    int outputHStart;
    int outputVStart;
    int outputHActive;
    int outputVActive;
    int sdScaling;
    int hdScalingTv;
    int hdScalingPc;
};

/// PICTURE_FACTORY_SCALING: the scaler's windows for one scaling conversion; see _FactoryPicAspect_t.
struct _FactoryPicScaling_t {
    int inputHStart;
    int inputVStart;
    int inputHActive;
    int inputVActive;
    int outputHStart;
    int outputVStart;
    int outputHActive;
    int outputVActive;
    int overScan;
};

/// PICTURE_FACTORY_SCALING_PIP: the multipliers of one size of the picture-in-picture window.
struct _FactoryPicScalingPIP_t {
    int outputHMultiplier;
    int outputVMultiplier;
};

/// PICTURE_FACTORY_SCALING_PIP_POS: the multipliers of one position of the picture-in-picture window.
struct _FactoryPicScalingPIPPos_t {
    int outputHMultiplier;
    int outputVMultiplier;
};

/// PICTURE_FACTORY_OVERSCAN: the scaler's windows for one overscan case; see _FactoryPicAspect_t.
struct _FactoryPicOverscan_t {
    int inputHStart;
    int inputVStart;
    int inputHActive;
    int inputVActive;
    int outputHStart;
    int outputVStart;
    int outputHActive;
    int outputVActive;
};

/// PICTURE_FACTORY_CURVE and PICTURE_FACTORY_BACKLIGHT_CURVE: five points of the curve from a setting of the user to
/// the value of the picture pipeline.
struct _Factory_Pic_Curve {
    int curv0;
    int curv1;
    int curv2;
    int curv3;
    int curv4;
};

/// PICTURE_FACTORY_COLOR_TUNER: the offsets of one colour axis of a source, picture mode and dynamic range.
struct _factory_Pic_Color_Tuner {
    int brightness;
    int hue;
    int saturation;
};

} // namespace td
