/// Counts the syncs of the whole process, whoever asks for them.
#pragma once

namespace bench {

/// Calls of fsync and fdatasync so far, from any thread.
long syncCount();

} // namespace bench
