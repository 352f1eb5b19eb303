/// What becomes of the library in a child made by fork(): the child has the memory of its parent and one of its
/// threads, the one that called. So it closes the descriptors that hold the parent's locks between processes, which it
/// would keep from everybody else, and gets the mutexes of the process's single objects anew, which nobody would ever
/// release. What a manager holds stays as it is; the manager asks the generation. Any thread.
///
/// What a child needs is made when the library is loaded: a thread that makes it at the time of a fork would leave it
/// half made.
#pragma once

#include <atomic>

#include <sys/types.h>

namespace td {

class Fork {
public:
    /// How many forks lie between this process and the first one that had the library.
    static unsigned int generation() { return s_generation.load(std::memory_order_relaxed); }

    /// open(2) and close(2) for what a child is to close, since it holds a lock, or will.
    static int openLockFile(const char* path, int flags, mode_t mode = 0);
    static void closeLockFile(int descriptor);

private:
    static bool watch();
    static void prepare();
    static void inParent();
    static void inChild();

    static std::atomic<unsigned int> s_generation;
    static const bool s_watching;
};

} // namespace td
