/// Threads and uptime of the platform. Stateless; every operation may be called from any thread.
#pragma once

#include <cstdint>

#include <dataModule/Export.h>

namespace td {

class DATAMODULE_API OsalThreads {
public:
    using Entry = void* (*)(void*);
    using Handle = std::intptr_t;
    static constexpr Handle INVALID_HANDLE = -1;

    /// Starts a joinable thread that runs `entry(argument)`. `name` is for debuggers and may be shortened by the
    /// platform. False (and `handle` untouched) when no thread can be had. The caller joins or detaches it once.
    static bool create(const char* name, Entry entry, void* argument, Handle& handle);
    /// Waits for the thread's end. False for an invalid handle.
    static bool join(Handle handle);
    /// Lets the thread end on its own. False for an invalid handle.
    static bool detach(Handle handle);
    /// Seconds since the system started, monotonic, with the finest fraction the platform has.
    static double uptime();
};

} // namespace td
