/// Whether a change of one source's sound mode settings is for all sources, as SOUND_GLOBAL says. The categories that
/// can be copied to all sources share this query; the library itself does not ask.
#pragma once

namespace td {

class IDataSeparateManagerInner;

/// True when "ApplyModeToSource" of SOUND_GLOBAL is loaded and not 0. Of a manager without the client's interface only
/// a value of 1 is known to be set. False without a manager. It waits for SOUND_GLOBAL's critical section: hold no
/// other.
bool applyModeToSource(IDataSeparateManagerInner* manager);

} // namespace td
