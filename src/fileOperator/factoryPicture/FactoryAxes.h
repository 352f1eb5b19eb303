/// Dimensions that several factory picture categories share; see Axes.h.
#pragma once

#include "fileOperator/CategoryLayout.h"

namespace td::axis {

/// The panel's 6 calibration bins.
Dimension bin(const char* heading);
/// The factory's 10 dynamic ranges with resolution.
Dimension factoryDynamicRange(const char* heading);
/// 2D and 3D signals.
Dimension signal(const char* heading);
/// 6 colour temperatures.
Dimension colourTemperature(const char* heading);

} // namespace td::axis
