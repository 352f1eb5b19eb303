#include "common/LockOrder.h"

#ifdef DATAMODULE_CHECK_LOCKS

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace td::lockOrder {

namespace {

constexpr const char* NAMES[] = {"a load of all files",
                                 "a worker's life",
                                 "a worker's statistics",
                                 "a category's files",
                                 "an entered section's table",
                                 "lock files",
                                 "a table",
                                 "a worker's event queue",
                                 "checksums",
                                 "a leaf"};

struct HeldLock {
    const void* lock;
    LockRank rank;
};

/// What the thread holds, in the order of taking.
struct HeldLocks {
    static constexpr std::size_t MOST = 16;
    HeldLock locks[MOST];
    std::size_t count = 0;

    HeldLock* begin() { return locks; }
    HeldLock* end() { return locks + count; }
};

thread_local HeldLocks t_held;

HeldLock* find(const void* lock) {
    return std::find_if(t_held.begin(), t_held.end(), [lock](const HeldLock& held) { return held.lock == lock; });
}

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "lock order: %s; held, in the order of taking:\n", what);
    for (const HeldLock& held : t_held)
        std::fprintf(stderr, "  %s (%p)\n", NAMES[static_cast<std::size_t>(held.rank)], held.lock);
    std::abort();
}

} // namespace

void willWait(LockRank rank) {
    for (const HeldLock& held : t_held) {
        if (held.rank >= rank) {
            std::fprintf(stderr, "lock order: waiting for %s\n", NAMES[static_cast<std::size_t>(rank)]);
            fail("that has to come before one that is held");
        }
    }
}

void wasTaken(const void* lock, LockRank rank) {
    if (t_held.count == HeldLocks::MOST)
        fail("too many locks at once");
    t_held.locks[t_held.count++] = {lock, rank};
}

void willBeReleased(const void* lock) {
    HeldLock* const found = find(lock);
    if (found == t_held.end())
        fail("released by a thread that does not hold it");
    std::copy(found + 1, t_held.end(), found);
    --t_held.count;
}

void shouldHold(const void* lock) {
    if (find(lock) == t_held.end())
        fail("needed by a thread that does not hold it");
}

void willCallSystem() {
    for (const HeldLock& held : t_held) {
        if (held.rank == LockRank::Table)
            fail("a call of the system under a lock that readers wait for");
    }
}

} // namespace td::lockOrder

#endif
