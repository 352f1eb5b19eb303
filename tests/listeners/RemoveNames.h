#pragma once

#include <semaphore.h>
#include <sys/shm.h>

#include "common/ListenerNames.h"

namespace td::test {

/// Leaves no name of the listeners behind, whoever made it.
inline void removeNames() {
    for (const char* name : {names::RELEASE_SEMAPHORE, names::RELOAD_SEMAPHORE, names::LOG_SEMAPHORE})
        sem_unlink(name);
    const int id = shmget(names::DETAIL_LOG_KEY, 0, 0);
    if (id >= 0)
        shmctl(id, IPC_RMID, nullptr);
}

} // namespace td::test
