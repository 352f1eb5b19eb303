/// Dimensions that several sound categories share; see Axes.h.
#pragma once

#include <dataModule/fileOperator/CategoryLayout.h>

namespace td::axis {

/// 8 sound modes.
DATAMODULE_API Dimension soundMode(const char* heading);

} // namespace td::axis
