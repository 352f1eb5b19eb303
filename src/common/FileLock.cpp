#include "common/FileLock.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <dataModule/common/FileUtil.h>

#include "common/Deadline.h"
#include "common/Fork.h"
#include "common/LockOrder.h"

namespace td {

namespace {

constexpr mode_t FILE_MODE = 0666;

/// The lock file, open for reading only: that is enough to lock, for processes of other users too. -1 on failure.
int openLockFile(const std::string& path) {
    constexpr int FLAGS = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const int existing = Fork::openLockFile(path.c_str(), FLAGS);
    if (existing >= 0 || errno != ENOENT)
        return existing;
    const std::string directory = path.substr(0, path.find_last_of('/'));
    if (!FileUtil::checkPath(directory.c_str(), true))
        return -1;
    const int made = Fork::openLockFile(path.c_str(), FLAGS | O_CREAT | O_EXCL, FILE_MODE);
    if (made < 0)
        return errno == EEXIST ? Fork::openLockFile(path.c_str(), FLAGS) : -1;
    // Whatever the umask of its maker, which a suspend cycle changes.
    fchmod(made, FILE_MODE);
    return made;
}

/// Whoever waited for a lock may hold one on a file that was removed meanwhile.
bool isAt(const std::string& path, int descriptor) {
    struct stat open {};
    struct stat named {};
    return fstat(descriptor, &open) == 0 && lstat(path.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

bool hasEnded(const FileLock::Patience& patience) {
    return (patience.abandoned != nullptr && *patience.abandoned) ||
           (patience.deadline.has_value() && hasPassed(*patience.deadline));
}

/// Asks again and again, first after a little while: a lock is mostly held for no longer than a write takes.
int lockWithPatience(int descriptor, int operation, const FileLock::Patience& patience) {
    constexpr long FIRST_PAUSE = 50000; // nanoseconds
    constexpr long LONGEST_PAUSE = 5000000;
    timespec pause{0, FIRST_PAUSE};
    int result = flock(descriptor, operation | LOCK_NB);
    while (result != 0 && errno == EWOULDBLOCK && !hasEnded(patience)) {
        nanosleep(&pause, nullptr);
        pause.tv_nsec = std::min(pause.tv_nsec + pause.tv_nsec / 4, LONGEST_PAUSE);
        result = flock(descriptor, operation | LOCK_NB);
    }
    return result;
}

int waitForLock(int descriptor, int operation) {
    int result = flock(descriptor, operation);
    while (result != 0 && errno == EINTR)
        result = flock(descriptor, operation);
    return result;
}

bool isForNow(int error) {
    return error == EMFILE || error == ENFILE || error == ENOMEM || error == ENOLCK || error == EIO;
}

} // namespace

FileLock::~FileLock() {
    unlock();
}

bool FileLock::isHeld() const {
    return m_descriptor >= 0 && m_generation == Fork::generation();
}

bool FileLock::lock(const std::string& path, Kind kind) {
    return take(path, kind, true, nullptr) == Attempt::Locked;
}

FileLock::Attempt FileLock::lock(const std::string& path, Kind kind, const Patience& patience) {
    return take(path, kind, true, &patience);
}

FileLock::Attempt FileLock::tryLock(const std::string& path, Kind kind) {
    return take(path, kind, false, nullptr);
}

FileLock::Attempt FileLock::take(const std::string& path, Kind kind, bool wait, const Patience* patience) {
    constexpr int ATTEMPTS = 100;
    unlock();
    m_failedForNow = false;
    if (wait)
        lockOrder::willWait(LockRank::Files);
    const int operation = kind == Kind::Exclusive ? LOCK_EX : LOCK_SH;
    for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
        const int descriptor = openLockFile(path);
        if (descriptor < 0) {
            m_failedForNow = isForNow(errno);
            return Attempt::NotAvailable;
        }
        const int result = !wait                 ? flock(descriptor, operation | LOCK_NB)
                           : patience != nullptr ? lockWithPatience(descriptor, operation, *patience)
                                                 : waitForLock(descriptor, operation);
        const bool busy = result != 0 && errno == EWOULDBLOCK;
        m_failedForNow = result != 0 && isForNow(errno);
        if (result == 0 && isAt(path, descriptor)) {
            m_descriptor = descriptor;
            m_kind = kind;
            m_generation = Fork::generation();
            return Attempt::Locked;
        }
        Fork::closeLockFile(descriptor);
        if (result != 0)
            return busy ? Attempt::Busy : Attempt::NotAvailable;
    }
    return Attempt::NotAvailable;
}

void FileLock::unlock() {
    // What was locked before a fork was closed in the child; the number may be another file's by now.
    const int descriptor = isHeld() ? m_descriptor : -1;
    m_descriptor = -1;
    if (descriptor < 0)
        return;
    // Closing alone would leave the lock to a child that got the descriptor past the handler of fork().
    flock(descriptor, LOCK_UN);
    Fork::closeLockFile(descriptor);
}

} // namespace td
