#include "Syncs.h"

#include <atomic>

#include <sys/syscall.h>
#include <unistd.h>

namespace {
std::atomic<long> g_syncs{0};
} // namespace

// In place of the C library's: the program's own definitions come first when libraries are bound to it.
extern "C" __attribute__((visibility("default"))) int fsync(int descriptor) {
    ++g_syncs;
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor) {
    ++g_syncs;
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

namespace bench {

long syncCount() {
    return g_syncs;
}

} // namespace bench
