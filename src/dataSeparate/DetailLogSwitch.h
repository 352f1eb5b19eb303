/// The detail-log switch, as a manager's beginning and a fork meet it.
#pragma once

namespace td {

class FileDataSeparateManager;

/// Starts the listener of the switch, unless it runs or is not to (setListening()). The thread needs no manager and
/// outlives this one; a later one finds it running.
void startDetailLogListener(FileDataSeparateManager* manager);

/// Forgets the listener and detaches the word, so that a child made by fork() does not count as one that listens. For
/// the child's one thread.
void leaveDetailLogSwitch();

} // namespace td
