/// The shared-memory word of the detail-log switch, as a fork meets it.
#pragma once

namespace td {

/// Detaches the word, so that a child made by fork() does not count as one that listens. For the child's one thread.
void leaveDetailLogSwitch();

} // namespace td
