#include "Syncs.h"

#include <atomic>
#include <cerrno>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<long> g_syncs{0};
std::atomic<std::chrono::steady_clock::time_point> g_lastEnd{};

int counted(long call, int descriptor) {
    ++g_syncs;
    const int result = static_cast<int>(syscall(call, descriptor));
    const int error = errno;
    g_lastEnd = std::chrono::steady_clock::now();
    errno = error;
    return result;
}

} // namespace

// In place of the C library's: the program's own definitions come first when libraries are bound to it.
extern "C" __attribute__((visibility("default"))) int fsync(int descriptor) {
    return counted(SYS_fsync, descriptor);
}

extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor) {
    return counted(SYS_fdatasync, descriptor);
}

namespace bench {

long syncCount() {
    return g_syncs;
}

std::chrono::steady_clock::time_point lastSyncEnd() {
    return g_lastEnd;
}

} // namespace bench
