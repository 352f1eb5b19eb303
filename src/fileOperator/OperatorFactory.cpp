#include "fileOperator/OperatorFactory.h"

#include <iterator>

#include <dataModule/fileOperator/FileFactoryPictureAspect.h>
#include <dataModule/fileOperator/FileFactoryPictureBacklightCurve.h>
#include <dataModule/fileOperator/FileFactoryPictureColorTuner.h>
#include <dataModule/fileOperator/FileFactoryPictureCurve.h>
#include <dataModule/fileOperator/FileFactoryPictureOverScan.h>
#include <dataModule/fileOperator/FileFactoryPictureScaling.h>
#include <dataModule/fileOperator/FileFactoryPictureScalingPIP.h>
#include <dataModule/fileOperator/FileFactoryPictureScalingPIPPos.h>
#include <dataModule/fileOperator/FileFactoryPictureWB.h>
#include <dataModule/fileOperator/FileFactoryPictureWB20Gain.h>
#include <dataModule/fileOperator/FileFactoryPictureWB20GainIndex.h>
#include <dataModule/fileOperator/FileFactoryPictureWB20Point.h>
#include <dataModule/fileOperator/FileFactoryPictureWB20PointIndex.h>
#include <dataModule/fileOperator/FileFactoryPictureWBShift.h>
#include <dataModule/fileOperator/FileFactorySoundAMP.h>
#include <dataModule/fileOperator/FileFactorySoundAVC.h>
#include <dataModule/fileOperator/FileFactorySoundCurve.h>
#include <dataModule/fileOperator/FileFactorySoundEQ.h>
#include <dataModule/fileOperator/FileFactorySoundGlobal.h>
#include <dataModule/fileOperator/FileFactorySoundPEQ.h>
#include <dataModule/fileOperator/FileUserPictureBacklightWB.h>
#include <dataModule/fileOperator/FileUserPictureCCTWB.h>
#include <dataModule/fileOperator/FileUserPictureColorTuner.h>
#include <dataModule/fileOperator/FileUserPictureContentDetect.h>
#include <dataModule/fileOperator/FileUserPictureDolbyIQIntentedWhitePoint.h>
#include <dataModule/fileOperator/FileUserPictureDolbyIQMode.h>
#include <dataModule/fileOperator/FileUserPictureEnhancedViewingAngle.h>
#include <dataModule/fileOperator/FileUserPictureGammaCalibrationDarkDetail.h>
#include <dataModule/fileOperator/FileUserPictureGlobal.h>
#include <dataModule/fileOperator/FileUserPictureLightSensorPLC.h>
#include <dataModule/fileOperator/FileUserPictureLightSensorShift.h>
#include <dataModule/fileOperator/FileUserPictureLightSensorWB20Gain.h>
#include <dataModule/fileOperator/FileUserPictureLowBlueLight.h>
#include <dataModule/fileOperator/FileUserPictureMode.h>
#include <dataModule/fileOperator/FileUserPictureModeEx.h>
#include <dataModule/fileOperator/FileUserPictureModeSelf.h>
#include <dataModule/fileOperator/FileUserPictureSourceOnly.h>
#include <dataModule/fileOperator/FileUserPictureWB10Point.h>
#include <dataModule/fileOperator/FileUserPictureWB10PointIndex.h>
#include <dataModule/fileOperator/FileUserPictureWB20Gain.h>
#include <dataModule/fileOperator/FileUserPictureWB20GainIndex.h>
#include <dataModule/fileOperator/FileUserPictureWB20Point.h>
#include <dataModule/fileOperator/FileUserPictureWB20PointIndex.h>
#include <dataModule/fileOperator/FileUserPictureWB2Point.h>
#include <dataModule/fileOperator/FileUserPictureXVYCC.h>
#include <dataModule/fileOperator/FileUserPictureYRange.h>
#include <dataModule/fileOperator/FileUserSoundDbx.h>
#include <dataModule/fileOperator/FileUserSoundDelay.h>
#include <dataModule/fileOperator/FileUserSoundDTS.h>
#include <dataModule/fileOperator/FileUserSoundEQ.h>
#include <dataModule/fileOperator/FileUserSoundGlobal.h>
#include <dataModule/fileOperator/FileUserSoundMode.h>

namespace td {

namespace {

struct Served {
    const CategoryLayout& (*layout)();
    AbstractFileOperator* (*create)();
};

template <class Operator>
Served served() {
    return {&Operator::layout, []() -> AbstractFileOperator* { return new Operator; }};
}

/// By category value.
const Served SERVED[] = {
#define DATAMODULE_SERVED(value, name, operatorClass) served<operatorClass>(),
    DATAMODULE_CATEGORY_LIST(DATAMODULE_SERVED)
#undef DATAMODULE_SERVED
};
static_assert(std::size(SERVED) == CATEGORY_COUNT, "one operator per category");

const Served* servedAs(_DataCategory_t category) {
    return category >= 0 && category < CATEGORY_COUNT ? &SERVED[category] : nullptr;
}

} // namespace

AbstractFileOperator* createOperator(_DataCategory_t category) {
    const Served* entry = servedAs(category);
    return entry != nullptr ? entry->create() : nullptr;
}

const CategoryLayout* layoutOf(_DataCategory_t category) {
    const Served* entry = servedAs(category);
    return entry != nullptr ? &entry->layout() : nullptr;
}

std::vector<const CategoryLayout*> allLayouts() {
    std::vector<const CategoryLayout*> layouts;
    for (const Served& entry : SERVED)
        layouts.push_back(&entry.layout());
    return layouts;
}

} // namespace td
