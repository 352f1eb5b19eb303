#include <dataModule/common/EventIdGenerator.h>

namespace td {

EventIdGenerator* EventIdGenerator::instance() {
    static auto* const generator = new EventIdGenerator;
    return generator;
}

int EventIdGenerator::createNextEventId() {
    return static_cast<int>(m_counter++);
}

int EventIdGenerator::peekNextEventId() {
    return static_cast<int>(m_counter.load());
}

} // namespace td
