#include <dataModule/fileOperator/FileFactorySoundCurve.h>

#include "fileOperator/Axes.h"

namespace td {

FileFactorySoundCurve::FileFactorySoundCurve() : CategoryOperator(layout()) {}

const CategoryLayout& FileFactorySoundCurve::layout() {
    using Record = _FactorySoundCurve_t;
    static const CategoryLayout& layout = *new const CategoryLayout{
        .category = SOUND_CURVE,
        .file = "sound_curve_factory.ini",
        .version = "v0.2",
        .purpose = "The file is used to define the sound curve data for factory sound",
        .dimensions = {axis::source("source       scope:0~16")},
        .fields = {{"Curv0", &Record::curv0},
                   {"Curv1", &Record::curv1},
                   {"Curv2", &Record::curv2},
                   {"Curv3", &Record::curv3},
                   {"Curv4", &Record::curv4},
                   {"SpeakerPrescale", &Record::speakerPrescale},
                   {"HpPrescale", &Record::hpPrescale}},
        .restoreForAllSources = {.kind = BulkRestore::Kind::PostEach, .axes = axisBit(0)},
        .restoresFromCurrent = false,
    };
    return layout;
}

} // namespace td
