#include <dataModule/platform/OsalThreads.h>

#include <cstring>
#include <ctime>

#include <pthread.h>

namespace td {
namespace {

/// What the kernel keeps of a thread's name, terminator included.
constexpr std::size_t KERNEL_NAME_SIZE = 16;

static_assert(sizeof(pthread_t) <= sizeof(OsalThreads::Handle), "a handle holds a pthread_t");

pthread_t toThread(OsalThreads::Handle handle) {
    return static_cast<pthread_t>(handle);
}

void setName(pthread_t thread, const char* name) {
    char shortened[KERNEL_NAME_SIZE] = {};
    std::strncpy(shortened, name, sizeof shortened - 1);
    pthread_setname_np(thread, shortened);
}

} // namespace

bool OsalThreads::create(const char* name, Entry entry, void* argument, Handle& handle) {
    if (entry == nullptr)
        return false;
    pthread_t thread;
    if (pthread_create(&thread, nullptr, entry, argument) != 0)
        return false;
    if (name != nullptr)
        setName(thread, name);
    handle = static_cast<Handle>(thread);
    return true;
}

bool OsalThreads::join(Handle handle) {
    return handle != INVALID_HANDLE && pthread_join(toThread(handle), nullptr) == 0;
}

bool OsalThreads::detach(Handle handle) {
    return handle != INVALID_HANDLE && pthread_detach(toThread(handle)) == 0;
}

double OsalThreads::uptime() {
    timespec now{};
    // The first of the two counts the time spent suspended as well; kernels before 2.6.39 have only the second.
    if (clock_gettime(CLOCK_BOOTTIME, &now) != 0)
        clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace td
