/// A new checksum for a file that somebody changed by hand.
#pragma once

namespace td {

/// Recomputes and rewrites the checksum line of the file at `path`, under the lock of its category and after a store
/// that was cut short was ended. Whether that could be done. Any thread.
bool repairChecksum(const char* path);

} // namespace td
