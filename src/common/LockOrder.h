/// The places of the locks in the lock order (Mutex.h), and its check at run time: in builds with
/// DATAMODULE_CHECK_LOCKS, as those for the tests; elsewhere the functions do nothing.
#pragma once

namespace td {

/// Outermost first.
enum class LockRank { Loading, Life, Statistics, Category, EnteredTable, Files, Table, Queue, Checksum, Leaf };

namespace lockOrder {

#ifdef DATAMODULE_CHECK_LOCKS

/// Ends the program, with what it holds on standard error, when the calling thread holds a lock of this place or a
/// later one.
void willWait(LockRank rank);
/// The calling thread holds the lock from now on.
void wasTaken(const void* lock, LockRank rank);
/// Ends the program when the calling thread does not hold the lock.
void willBeReleased(const void* lock);
void shouldHold(const void* lock);
/// Ends the program when the calling thread holds a table's lock, but for that of an entered critical section: whatever
/// stands between the library and the system calls it before each call.
void willCallSystem();

#else

inline void willWait(LockRank /*rank*/) {}
inline void wasTaken(const void* /*lock*/, LockRank /*rank*/) {}
inline void willBeReleased(const void* /*lock*/) {}
inline void shouldHold(const void* /*lock*/) {}
inline void willCallSystem() {}

#endif

} // namespace lockOrder
} // namespace td
