#include "dataSeparate/LiveManagers.h"

#include <ctime>

namespace td {

namespace {

timespec inAnHour() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += 3600;
    return time;
}

} // namespace

/// Never destroyed: a listener may still run while the process exits.
LiveManagers& LiveManagers::instance() {
    static LiveManagers& managers = *new LiveManagers();
    return managers;
}

void LiveManagers::add(IDataSeparateManager* manager) {
    const MutexLock lock(m_mutex);
    m_live.insert(manager);
    m_gone.erase(manager);
}

void LiveManagers::remove(IDataSeparateManager* manager) {
    const MutexLock lock(m_mutex);
    if (m_live.erase(manager) > 0)
        m_gone.insert(manager);
    while (m_used.count(manager) > 0)
        m_unused.waitUntil(m_mutex, inAnHour());
}

bool LiveManagers::has(IDataSeparateManager* manager) {
    const MutexLock lock(m_mutex);
    return m_live.count(manager) > 0;
}

bool LiveManagers::knows(IDataSeparateManager* manager) {
    const MutexLock lock(m_mutex);
    return m_live.count(manager) > 0 || m_gone.count(manager) > 0;
}

bool LiveManagers::startUsing(IDataSeparateManager* manager) {
    const MutexLock lock(m_mutex);
    if (m_live.count(manager) == 0)
        return false;
    m_used.insert(manager);
    return true;
}

void LiveManagers::stopUsing(IDataSeparateManager* manager) {
    const MutexLock lock(m_mutex);
    const auto use = m_used.find(manager);
    if (use != m_used.end())
        m_used.erase(use);
    m_unused.broadcast();
}

} // namespace td
