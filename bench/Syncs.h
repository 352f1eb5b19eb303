/// Counts the syncs of the whole process, whoever asks for them.
#pragma once

#include <chrono>

namespace bench {

/// Calls of fsync and fdatasync so far, from any thread.
long syncCount();
/// When the last of them returned.
std::chrono::steady_clock::time_point lastSyncEnd();

} // namespace bench
