#include <dataModule/fileOperator/FileUserPictureGlobal.h>

#include "fileOperator/CategoryLayout.h"

namespace td {

FileUserPictureGlobal::FileUserPictureGlobal() : CategoryOperator(layout()) {}

const CategoryLayout& FileUserPictureGlobal::layout() {
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = PICTURE_GLOBAL,
        .file = "pic_global_usr.ini",
        .version = "v0.4",
        .purpose = "The file is used to define the global data for user picture",
        .fields = {{"RGBOnly", PIC_GLOBAL_RGB_ONLY},
                   {"HDMI1_DR", PIC_GLOBAL_HDMI1_DR},
                   {"HDMI2_DR", PIC_GLOBAL_HDMI2_DR},
                   {"HDMI3_DR", PIC_GLOBAL_HDMI3_DR},
                   {"HDMI4_DR", PIC_GLOBAL_HDMI4_DR},
                   {"HDMI1_SIG_FMT", PIC_GLOBAL_HDMI1_SIG_FMT},
                   {"HDMI2_SIG_FMT", PIC_GLOBAL_HDMI2_SIG_FMT},
                   {"HDMI3_SIG_FMT", PIC_GLOBAL_HDMI3_SIG_FMT},
                   {"HDMI4_SIG_FMT", PIC_GLOBAL_HDMI4_SIG_FMT},
                   {"ApplyModeToSource", PIC_GLOBAL_APPLY_MODE_TO_SOURCE},
                   {"ApplyColorTuner", PIC_GLOBAL_APPLY_COLOR_TUNER},
                   {"ApplyWB2Point", PIC_GLOBAL_APPLY_WB_2_POINT},
                   // Clients of whole records have always found this entry without a name.
                   {"ApplyWB10Point", PIC_GLOBAL_APPLY_WB_10_POINT, Listing::Nameless},
                   {"WB10PointFlag", PIC_GLOBAL_WB_10_POINT_FLAG},
                   {"ApplyWB20Point", PIC_GLOBAL_APPLY_WB_20_POINT},
                   {"ApplyWB20Gain", PIC_GLOBAL_APPLY_WB_20_GAIN},
                   {"ApplyModeExToSource", PIC_GLOBAL_APPLY_MODE_EX_TO_SOURCE},
                   {"Lowbluelightlevel", PIC_GLOBAL_LOW_BLUE_LIGHT_LEVEL},
                   {"TpcSwitch", PIC_GLOBAL_TPC_SWITCH},
                   {"PixelShiftType", PIC_GLOBAL_PIXEL_SHIFT_TYPE},
                   {"PixelShiftShape", PIC_GLOBAL_PIXEL_SHIFT_SHAPE},
                   {"PixelShiftTimer", PIC_GLOBAL_PIXEL_SHIFT_TIMER},
                   {"MotionClearness", PIC_GLOBAL_MOTION_CLEARNESS},
                   {"AIPQUserSwitch", PIC_GLOBAL_AIPQ_USER_SWITCH},
                   {"ALLMUserSwitch", PIC_GLOBAL_ALLM_USER_SWITCH},
                   {"EndUserCalbration", PIC_GLOBAL_END_USER_CALIBRATION},
                   // Whole records end here; the last two are answered by name only.
                   {"LaserScreenSize", PIC_GLOBAL_LASER_SCREEN_SIZE, Listing::Hidden},
                   {"FpsSwitch", PIC_GLOBAL_FPS_SWITCH, Listing::Hidden}},
    };
    return layout;
}

} // namespace td
