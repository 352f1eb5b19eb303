/// The records of the user picture categories: one integer per field, in record order. Values are what the key lines
/// hold: -999 to 9999 where nothing else is said; wider ones are kept in memory but never written.
#pragma once

namespace td {

/// PICTURE_MODE: one picture mode of one source and dynamic range. Levels are 0 to 100 and switches 0 or 1 unless the
/// picture pipeline defines otherwise; the store does not limit them.
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
    int sensorEnable; ///< the light sensor steers the picture
    int minBacklight;
    int gamma;
    int sensorCctEnable; ///< the light sensor steers the colour temperature
    int hdrDtm;          ///< dynamic tone mapping
    int dolbyDd;         ///< Dolby dark detail
    int dolbyPd;         ///< Dolby precision detail
    int gradient;
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
