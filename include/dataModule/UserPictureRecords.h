/// The records of the user picture categories: one integer per field, in record order. Values are what the key lines
/// hold: -999 to 9999 where nothing else is said; wider ones are kept in memory but never written.
#pragma once

namespace td {

/// PICTURE_MODE: one picture mode of one source and dynamic range. What a level or switch means is the picture
/// pipeline's; the store does not limit them.
struct _UsrPicMode_t {
    int contrast;
    int brightness;
    int color;
    int hue;
    int sharpness;
    int autoBacklight;
    int backlightLevel;
    int dynamicContrast;
    int colorTemp;
    int memc;   ///< motion estimation and compensation level
    int judder; ///< judder reduction level
    int blur;   ///< blur reduction level
    int noiseReduction;
    int mpegNr; ///< MPEG noise reduction level
    int colorSpace;
    int colorTuner;
    int sensorEnable;
    int minBacklight;
    int gamma;
    int sensorCctEnable;
    int hdrDtm;
    int dolbyDd;
    int dolbyPd;
    int gradient;
};

/// PICTURE_SOURCE_ONLY: the picture geometry of one source and signal type.
struct _Usr_Pic_Source_Only_ {
    int aspectRatio;    ///< number of the aspect mode
    int overScanEnable; ///< 1: overscan is on
};

/// PICTURE_MODE_SELF: the picture mode of one source and dynamic range.
struct _UsrPicModeSelf_t {
    int pictureMode; ///< last chosen, 0 to 11
};

/// PICTURE_MODE_EX: switches of one source, picture mode and dynamic range, 0 or 1, and room for more.
struct _UsrPicModeEx_t {
    int gameModeSwitch; ///< game mode
    int allmModeSwitch; ///< auto low-latency mode
    int reserve2;       ///< no meaning yet
    int reserve3;
    int reserve4;
    int reserve5;
    int reserve6;
    int reserve7;
    int reserve8;
    int reserve9;
    int reserve10;
};

/// PICTURE_COLOR_TUNER: the adjustment of one tuned colour.
struct _Usr_Pic_Color_Tuner {
    int brightness; ///< of this colour, as the other two
    int hue;
    int saturation;
};

/// PICTURE_WB_2_POINT: the two-point white balance of one source and picture mode.
struct _Usr_Pic_Wb_2_Point {
    int enable; ///< 1: the table is in effect
    int rGain;  ///< gain of red, and so on
    int gGain;
    int bGain;
    int rOffset; ///< offset of red, and so on
    int gOffset;
    int bOffset;
};

/// PICTURE_WB_10_POINT_IDX: the state of the 10-point white balance of one source and picture mode.
struct _Usr_Pic_Wb_10_Point_Index {
    int enable; ///< 1: the points are in effect
    int level;  ///< point last selected, 0 to 9
};

/// PICTURE_WB_10_POINT: the corrections of one of 10 calibration points.
struct _Usr_Pic_Wb_10_Point {
    int red;
    int green;
    int blue;
};

/// PICTURE_YRANGE: the luminance range of one source, picture mode and dynamic-range type.
struct _Usr_Pic_YRange_ {
    int blackLevel;
    int whiteLevel;
    int blackStretch;
};

/// PICTURE_WB_20_POINT: the corrections of one of 20 calibration points.
struct _Usr_Pic_Wb_20_Point {
    int red;
    int green;
    int blue;
};

/// PICTURE_WB_20_POINT_IDX: the state of the 20-point white balance of one source and picture mode.
struct _Usr_Pic_Wb_20_Point_Index {
    int enable; ///< 1: the points are in effect
    int level;  ///< point last selected, 0 to 19
};

/// PICTURE_WB_20_GAIN: one of 20 points.
struct _Usr_Pic_Wb_20_Gain {
    int gainValue; ///< gain at this point
};

/// PICTURE_WB_20_GAIN_IDX: the state of the gain table of one source and picture mode.
struct _Usr_Pic_Wb_20_Gain_Index {
    int gainLevel; ///< point last selected, 0 to 19
};

/// PICTURE_LOW_BLUE_LIGHT: the gains of one colour temperature and filter level.
struct _Usr_Pic_Low_Blue_Light {
    int rGain; ///< of red, and so on
    int gGain;
    int bGain;
};

/// PICTURE_CONTENT_DETECT: the switches of one source, 0 or 1.
struct _Usr_Pic_Content_Detect_ {
    int filmmakerSwitch; ///< filmmaker mode
    int allm;            ///< auto low-latency mode
    int freesyncEnable;  ///< variable refresh rate
    int windowShift;
};

/// PICTURE_ENHANCED_VIEWING_ANGLE: the switches of one picture mode and dynamic range, 0 or 1.
struct _UsrPicEnhancedViewingAngle_t {
    int evaSwitch;        ///< enhanced viewing angle
    int judderFreeSwitch; ///< judder-free
    int evaReserved1;     ///< no meaning yet
};

/// PICTURE_USER_DOLBY_IQ_MODE: the levels of one content type.
struct _UserPicDolbyIQ_t {
    int memc; ///< motion estimation and compensation
    int noiseReduction;
    int sharpness;
    int mpegNoiseCleaning;
};

/// PICTURE_USER_DOLBY_IQ_INTENTED_WHITE_POINT: the white balance of one intended white point.
struct _UserPicDolbyIQIntentedWhitePoint_t {
    int rGain; ///< gain of red, and so on
    int gGain;
    int bGain;
    int rOffset; ///< offset of red, and so on
    int gOffset;
    int bOffset;
};

/// PICTURE_USER_LIGHT_SENSOR_LEVEL: the picture at one light-sensor level.
struct _UserLightSensorShift_t {
    int gammaCalibrationLevel; ///< gamma calibration in use
    int pwm;                   ///< of the backlight
    int brightness;
    int contrast;
    int saturation;
    int wbGainValue0; ///< white-balance gain at each of 20 points
    int wbGainValue1;
    int wbGainValue2;
    int wbGainValue3;
    int wbGainValue4;
    int wbGainValue5;
    int wbGainValue6;
    int wbGainValue7;
    int wbGainValue8;
    int wbGainValue9;
    int wbGainValue10;
    int wbGainValue11;
    int wbGainValue12;
    int wbGainValue13;
    int wbGainValue14;
    int wbGainValue15;
    int wbGainValue16;
    int wbGainValue17;
    int wbGainValue18;
    int wbGainValue19;
};

/// PICTURE_USER_LIGHT_SENSOR_WB_20_GAIN: one of 20 points.
struct _Usr_Pic_Light_Sensor_Wb_20_Gain {
    int wbGainValue; ///< gain at this point
};

/// PICTURE_USER_LIGHT_SENSOR_PLC_POINT: the PLC curve at one light-sensor level.
struct _UserLightSensorPlc_t {
    int plc0; ///< value at each of 8 points
    int plc1;
    int plc2;
    int plc3;
    int plc4;
    int plc5;
    int plc6;
    int plc7;
};

/// PICTURE_XVYCC: the nine points of one matrix, of which 0 to 0xfffff can be written.
struct _Usr_Pic_XVYCC {
    int xvycc0;
    int xvycc1;
    int xvycc2;
    int xvycc3;
    int xvycc4;
    int xvycc5;
    int xvycc6;
    int xvycc7;
    int xvycc8;
};

/// PICTURE_USER_BACKLIGHT_WB: the compensation of one backlight level.
struct _UserBacklightWB_t {
    int rGain; ///< gain of red, and so on
    int gGain;
    int bGain;
    int rOffset; ///< offset of red, and so on
    int gOffset;
    int bOffset;
};

/// PICTURE_USER_CCT_WB: the compensation of one colour-temperature level.
struct _UserCCTWB_t {
    int rGain; ///< gain of red, and so on
    int gGain;
    int bGain;
    int rOffset; ///< offset of red, and so on
    int gOffset;
    int bOffset;
};

/// PICTURE_GAMMA_CALIBRATION_DARK_DETAIL: one of 20 points of one HDR type.
struct _Usr_Pic_DarkDetail_20_Gain {
    int ddGain; ///< dark-detail gain at this point
};

/// PICTURE_GLOBAL: what is not tied to a picture mode, as an array by field number. Fields whose names begin with Apply
/// are flags: 1 is set, anything else is not.
enum _UsrPicGlobalField_t {
    PIC_GLOBAL_RGB_ONLY = 0,
    PIC_GLOBAL_HDMI1_DR, ///< dynamic-range setting of an HDMI input
    PIC_GLOBAL_HDMI2_DR,
    PIC_GLOBAL_HDMI3_DR,
    PIC_GLOBAL_HDMI4_DR,
    PIC_GLOBAL_HDMI1_SIG_FMT, ///< signal format of an HDMI input
    PIC_GLOBAL_HDMI2_SIG_FMT,
    PIC_GLOBAL_HDMI3_SIG_FMT,
    PIC_GLOBAL_HDMI4_SIG_FMT,
    PIC_GLOBAL_APPLY_MODE_TO_SOURCE, ///< a change of PICTURE_MODE goes to all sources
    PIC_GLOBAL_APPLY_COLOR_TUNER,
    PIC_GLOBAL_APPLY_WB_2_POINT,
    PIC_GLOBAL_APPLY_WB_10_POINT,
    PIC_GLOBAL_WB_10_POINT_FLAG,
    PIC_GLOBAL_APPLY_WB_20_POINT,
    PIC_GLOBAL_APPLY_WB_20_GAIN,
    PIC_GLOBAL_APPLY_MODE_EX_TO_SOURCE,
    PIC_GLOBAL_LOW_BLUE_LIGHT_LEVEL,
    PIC_GLOBAL_TPC_SWITCH,
    PIC_GLOBAL_PIXEL_SHIFT_TYPE,
    PIC_GLOBAL_PIXEL_SHIFT_SHAPE,
    PIC_GLOBAL_PIXEL_SHIFT_TIMER,
    PIC_GLOBAL_MOTION_CLEARNESS,
    PIC_GLOBAL_AIPQ_USER_SWITCH,
    PIC_GLOBAL_ALLM_USER_SWITCH, ///< auto low-latency mode
    PIC_GLOBAL_END_USER_CALIBRATION,
    PIC_GLOBAL_LASER_SCREEN_SIZE, ///< by name only, not part of a whole-record answer
    PIC_GLOBAL_FPS_SWITCH,        ///< by name only, not part of a whole-record answer
    PIC_GLOBAL_FIELD_COUNT,
};

} // namespace td
