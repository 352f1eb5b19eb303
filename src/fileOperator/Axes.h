/// Dimensions that several categories share. Each takes the comment line that heads its value list, which differs from
/// file to file and need not agree with the range.
#pragma once

#include "fileOperator/CategoryLayout.h"

namespace td::axis {

/// 16 sources.
Dimension source(const char* heading);
/// 12 picture modes.
Dimension pictureMode(const char* heading);
/// The user's 8 dynamic ranges with resolution.
Dimension userDynamicRange(const char* heading);

/// 4 dynamic ranges without resolution.
Dimension dynamicRange(const char* heading);

/// 7 tuned colours.
Dimension tunedColour(const char* heading);
/// Calibration points, at most 20, named LEVEL0 and on; written as one character each.
Dimension level(int count, const char* heading);
/// At most 16 levels, written as one hexadecimal digit each; `listed` are named LEVEL0 and on, which need not be as
/// many as are accepted.
Dimension hexadecimalLevel(int count, int listed, const char* heading);
/// 8 levels of the light sensor.
Dimension lightSensorLevel(const char* heading);

} // namespace td::axis
