// The layout of what a client hands over and of the records, checked wherever the library is compiled: middleware that
// was built apart from it, by another compiler or years ago, reads the same bytes. A failed check is a break with every
// client; a new field of a record belongs at its end and into the count here.
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <dataModule/common/Thread.h>
#include <dataModule/DataTypes.h>
#include <dataModule/FactoryPictureRecords.h>
#include <dataModule/SoundRecords.h>
#include <dataModule/UserPictureRecords.h>

namespace td {
namespace {

/// Whether the type is that many signed 32-bit integers, one behind the other, that may be copied as bytes.
template <class Record>
constexpr bool isRowOf(std::size_t fields) {
    return std::is_trivially_copyable_v<Record> && std::is_standard_layout_v<Record> &&
           sizeof(Record) == fields * sizeof(std::int32_t) && alignof(Record) == alignof(std::int32_t);
}

static_assert(std::is_same_v<int, std::int32_t>, "a field of a record is a signed 32-bit integer");

// An argument: a pointer, then a signed 32-bit integer.
static_assert(std::is_trivially_copyable_v<_Argument_t> && std::is_standard_layout_v<_Argument_t>);
static_assert(std::is_same_v<decltype(_Argument_t::name), const char*>);
static_assert(std::is_same_v<decltype(_Argument_t::value), std::int32_t>);
static_assert(offsetof(_Argument_t, name) == 0 && offsetof(_Argument_t, value) == sizeof(void*));
static_assert(sizeof(_Argument_t) == 2 * sizeof(void*) && alignof(_Argument_t) == alignof(void*));
#if UINTPTR_MAX == UINT32_MAX
// The set itself.
static_assert(sizeof(_Argument_t) == 8 && offsetof(_Argument_t, value) == 4 && alignof(_Argument_t) == 4);
#endif

// What travels beside the arguments.
static_assert(sizeof(_DataCategory_t) == 4 && sizeof(_DS_Type_t) == 4 && sizeof(_DS_Scope_t) == 4);
static_assert(isRowOf<GroupArray>(std::size_t{16} * 6 * 6) &&
              isRowOf<SelfDefinedGroupArray>(std::size_t{16} * 10 * 6 * 6));
static_assert(sizeof(_ThreadStaticInfo_t) == 16 && offsetof(_ThreadStaticInfo_t, succeeded) == 4 &&
              offsetof(_ThreadStaticInfo_t, failed) == 8 && offsetof(_ThreadStaticInfo_t, queued) == 12);

// The user's picture.
static_assert(PIC_GLOBAL_FIELD_COUNT == 28);
static_assert(isRowOf<_UsrPicMode_t>(24));
static_assert(isRowOf<_UsrPicModeEx_t>(11));
static_assert(isRowOf<_UsrPicModeSelf_t>(1));
static_assert(isRowOf<_Usr_Pic_Source_Only_>(2));
static_assert(isRowOf<_Usr_Pic_Wb_2_Point>(7));
static_assert(isRowOf<_Usr_Pic_Wb_10_Point>(3) && isRowOf<_Usr_Pic_Wb_10_Point_Index>(2));
static_assert(isRowOf<_Usr_Pic_Wb_20_Point>(3) && isRowOf<_Usr_Pic_Wb_20_Point_Index>(2));
static_assert(isRowOf<_Usr_Pic_Wb_20_Gain>(1) && isRowOf<_Usr_Pic_Wb_20_Gain_Index>(1));
static_assert(isRowOf<_UserCCTWB_t>(6) && isRowOf<_UserBacklightWB_t>(6));
static_assert(isRowOf<_Usr_Pic_Color_Tuner>(3));
static_assert(isRowOf<_Usr_Pic_XVYCC>(9));
static_assert(isRowOf<_Usr_Pic_YRange_>(3));
static_assert(isRowOf<_Usr_Pic_Low_Blue_Light>(3));
static_assert(isRowOf<_Usr_Pic_DarkDetail_20_Gain>(1));
static_assert(isRowOf<_UsrPicEnhancedViewingAngle_t>(3));
static_assert(isRowOf<_Usr_Pic_Content_Detect_>(4));
static_assert(isRowOf<_UserPicDolbyIQ_t>(4) && isRowOf<_UserPicDolbyIQIntentedWhitePoint_t>(6));
static_assert(isRowOf<_UserLightSensorShift_t>(25));
static_assert(isRowOf<_Usr_Pic_Light_Sensor_Wb_20_Gain>(1));
static_assert(isRowOf<_UserLightSensorPlc_t>(8));

// The factory's picture.
static_assert(isRowOf<_factory_pic_wb>(6) && isRowOf<_factory_pic_wb_shift>(6));
static_assert(isRowOf<_Fac_Pic_Wb_20_Point>(3) && isRowOf<_Fac_Pic_Wb_20_Point_Index>(2));
static_assert(isRowOf<_Fac_Pic_Wb_20_Gain>(1) && isRowOf<_Fac_Pic_Wb_20_Gain_Index>(1));
static_assert(isRowOf<_FactoryPicAspect_t>(11));
static_assert(isRowOf<_FactoryPicScaling_t>(9));
static_assert(isRowOf<_FactoryPicScalingPIP_t>(2) && isRowOf<_FactoryPicScalingPIPPos_t>(2));
static_assert(isRowOf<_FactoryPicOverscan_t>(8));
static_assert(isRowOf<_Factory_Pic_Curve>(5));
static_assert(isRowOf<_factory_Pic_Color_Tuner>(3));

// Sound.
static_assert(SND_GLOBAL_FIELD_COUNT == 23 && SND_FACTORY_GLOBAL_FIELD_COUNT == 8);
static_assert(isRowOf<_UsrSoundMode_t>(1));
static_assert(isRowOf<_UsrSoundEQ_t>(7) && isRowOf<_FactorySoundEQ_t>(7));
static_assert(isRowOf<_UsrSoundDelay_t>(4));
static_assert(isRowOf<_UsrSoundDbx_t>(3));
static_assert(isRowOf<_UsrSoundDTS_t>(4));
static_assert(isRowOf<_FactorySoundAVC_t>(5));
static_assert(isRowOf<_FactorySoundAMP_t>(6));
static_assert(isRowOf<_FactorySoundPEQ_t>(3));
static_assert(isRowOf<_FactorySoundCurve_t>(7));

} // namespace
} // namespace td
