/// Dimensions that several factory picture categories share; see Axes.h.
#pragma once

#include <dataModule/fileOperator/CategoryLayout.h>

namespace td::axis {

/// The panel's 6 calibration bins.
DATAMODULE_API Dimension bin(const char* heading);
/// The factory's 10 dynamic ranges with resolution.
DATAMODULE_API Dimension factoryDynamicRange(const char* heading);
/// 2D and 3D signals.
DATAMODULE_API Dimension signal(const char* heading);
/// 6 colour temperatures.
DATAMODULE_API Dimension colourTemperature(const char* heading);

} // namespace td::axis
