// A platform without configuration, flash fields or log.
#include <chrono>
#include <thread>

#include <dataModule/platform/ConfigReader.h>
#include <dataModule/platform/DebugOutput.h>
#include <dataModule/platform/FlashFieldStore.h>
#include <dataModule/platform/OsalThreads.h>

namespace td {

bool ConfigReader::readString(const char*, const char*, const char*, char*, int) {
    return false;
}
bool ConfigReader::readInt(const char*, const char*, const char*, int&) {
    return false;
}

void DebugOutput::setLevel(Level) {}
void DebugOutput::setSink(std::function<void(Level, const char*)>) {}
bool DebugOutput::isEnabled(Level) {
    return false;
}
void DebugOutput::write(Level, const char*) {}

bool FlashFieldStore::readField(const char*, char*, int) {
    return false;
}

bool OsalThreads::create(const char*, Entry entry, void* argument, Handle& handle) {
    handle = reinterpret_cast<Handle>(new std::thread(entry, argument));
    return true;
}
bool OsalThreads::join(Handle handle) {
    if (handle == INVALID_HANDLE)
        return false;
    auto* thread = reinterpret_cast<std::thread*>(handle);
    thread->join();
    delete thread;
    return true;
}
bool OsalThreads::detach(Handle handle) {
    if (handle == INVALID_HANDLE)
        return false;
    auto* thread = reinterpret_cast<std::thread*>(handle);
    thread->detach();
    delete thread;
    return true;
}
double OsalThreads::uptime() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace td
