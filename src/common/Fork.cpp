#include "common/Fork.h"

#include <cerrno>
#include <new>
#include <set>

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <dataModule/common/CRC32Util.h>
#include <dataModule/common/EventIdGenerator.h>
#include <dataModule/common/TimeUtil.h>

#include "common/Mutex.h"

namespace td {

namespace {

/// Held while a descriptor is opened or closed, and across a fork: no child has one that is not listed.
struct LockFiles {
    Mutex mutex;
    std::set<int> descriptors TD_GUARDED_BY(mutex);
};

/// Never destroyed: a thread may still give a lock back while the process exits.
LockFiles& lockFiles() {
    static auto* const files = new LockFiles;
    return *files;
}

} // namespace

std::atomic<unsigned int> Fork::s_generation{0};

const bool Fork::s_watching = Fork::watch();

bool Fork::watch() {
    lockFiles();
    EventIdGenerator::instance();
    CRC32Util::instance();
    TimeUtil::instance();
    return pthread_atfork(prepare, inParent, inChild) == 0;
}

int Fork::openLockFile(const char* path, int flags, mode_t mode) {
    LockFiles& files = lockFiles();
    const MutexLock lock(files.mutex);
    const int descriptor = open(path, flags, mode);
    if (descriptor < 0)
        return descriptor;
    try {
        files.descriptors.insert(descriptor);
    } catch (const std::bad_alloc&) {
        close(descriptor);
        errno = ENOMEM;
        return -1;
    }
    return descriptor;
}

void Fork::closeLockFile(int descriptor) {
    LockFiles& files = lockFiles();
    const MutexLock lock(files.mutex);
    files.descriptors.erase(descriptor);
    close(descriptor);
}

void Fork::prepare() TD_NO_THREAD_SAFETY_ANALYSIS {
    lockFiles().mutex.lock();
}

void Fork::inParent() TD_NO_THREAD_SAFETY_ANALYSIS {
    lockFiles().mutex.unlock();
}

void Fork::inChild() TD_NO_THREAD_SAFETY_ANALYSIS {
    LockFiles& files = lockFiles();
    // Closed only: to unlock them would take the locks from the parent.
    for (const int descriptor : files.descriptors)
        close(descriptor);
    files.descriptors.clear();
    files.mutex.unlock();
    s_generation.fetch_add(1, std::memory_order_relaxed);
    // It guards nothing that a thread could have left half done.
    CRC32Util::instance()->m_fileMutex->renew();
}

} // namespace td
