#include <dataModule/common/EventIdGenerator.h>

namespace td {

EventIdGenerator* EventIdGenerator::instance() {
    static auto* const generator = new EventIdGenerator;
    return generator;
}

int EventIdGenerator::createNextEventId() {
    const MutexLock lock(m_mutex);
    return static_cast<int>(m_counter++);
}

int EventIdGenerator::peekNextEventId() {
    const MutexLock lock(m_mutex);
    return static_cast<int>(m_counter);
}

} // namespace td
