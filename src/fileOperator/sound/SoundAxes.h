/// Dimensions that several sound categories share; see Axes.h.
#pragma once

#include "fileOperator/CategoryLayout.h"

namespace td::axis {

/// 8 sound modes.
Dimension soundMode(const char* heading);

} // namespace td::axis
